// A host that runs on the BLAS before it loads the library:
//     blas_probe libzarel.so [forget-variable] [start-thread]
// Prints key=value lines of what the BLAS and the library say then.
#include <dlfcn.h>

#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

extern "C" {
void dgemm_(const char*, const char*, const int*, const int*, const int*, const double*,
            const double*, const int*, const double*, const int*, const double*, double*,
            const int*, std::size_t, std::size_t);
[[gnu::weak]] char* openblas_get_corename();
}

namespace {

/** Whether the BLAS multiplies matrices right: row sums of A B are A times the row sums of B. */
bool productIsRight(int n) {
  const auto size = static_cast<std::size_t>(n);
  std::vector<double> a(size * size), b(size * size), c(size * size);
  for (std::size_t i = 0; i < a.size(); ++i) {
    a[i] = static_cast<double>(i * 37 % 101) - 50;
    b[i] = static_cast<double>(i * 53 % 89) - 44;
  }
  const double one = 1, zero = 0;
  dgemm_("N", "N", &n, &n, &n, &one, a.data(), &n, b.data(), &n, &zero, c.data(), &n, 1, 1);
  for (std::size_t j = 0; j < size; ++j)
    for (std::size_t i = 0; i < size; ++i) {
      double sum = 0; // of integers, so exact
      for (std::size_t k = 0; k < size; ++k)
        sum += a[i + k * size] * b[k + j * size];
      if (c[i + j * size] != sum) return false;
    }
  return true;
}

/** A thread that waits until the program ends. */
class Waiter {
public:
  void start() {
    thread = std::thread([this] {
      std::unique_lock lock(mutex);
      end.wait(lock, [this] { return over; });
    });
  }
  ~Waiter() {
    {
      std::lock_guard lock(mutex);
      over = true;
    }
    end.notify_all();
    if (thread.joinable()) thread.join();
  }

private:
  std::mutex mutex;
  std::condition_variable end;
  bool over = false;
  std::thread thread;
};

void* library = nullptr;

const char* said(const char* function) {
  const auto ask = reinterpret_cast<const char* (*)()>(dlsym(library, function));
  return ask ? ask() : "missing";
}

int reselected() {
  const auto ask = reinterpret_cast<int (*)()>(dlsym(library, "zarel_blas_reselected"));
  return ask ? ask() : -1;
}

} // namespace

int main(int count, char** arguments) {
  if (count < 2 || !productIsRight(7)) return 2;
  Waiter waiter;
  for (int i = 2; i < count; ++i) {
    if (std::strcmp(arguments[i], "forget-variable") == 0) unsetenv("OPENBLAS_CORETYPE");
    if (std::strcmp(arguments[i], "start-thread") == 0) waiter.start();
  }
  library = dlopen(arguments[1], RTLD_NOW);
  if (!library) return 3;
  const char* variable = std::getenv("OPENBLAS_CORETYPE");
  std::printf("name=%s\nversion=%s\nconfig=%s\ncore=%s\ninitial=%s\nreselected=%d\n",
              said("zarel_blas_name"), said("zarel_blas_version"), said("zarel_blas_config"),
              said("zarel_blas_core"), said("zarel_blas_initial_core"), reselected());
  std::printf("host=%s\nenvironment=%s\n", openblas_get_corename ? openblas_get_corename() : "",
              variable ? variable : "unset");
  std::printf("product=%s\n", productIsRight(65) && productIsRight(200) ? "right" : "wrong");
  return 0;
}
