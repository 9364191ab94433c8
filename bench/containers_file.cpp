// What reading a vector on a file value by value costs over reading the same windows with pread and
// taking the values from there: the same bytes, from the same file in the page cache. Taking them
// is part of the bound, as it costs more than the pread does and no call that gives a value can be
// without it.
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <vector>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <zarel/C_PtrOnFile.h>

namespace {

constexpr int kLength = 1 << 20;
constexpr int kWindow = 4096;

struct Data {
  Data() : stream(std::tmpfile()) {
    std::vector<double> values(kLength);
    std::iota(values.begin(), values.end(), 0.0);
    const std::size_t bytes = kLength * sizeof(double);
    if (pwrite(fileno(stream), values.data(), bytes, 0) != static_cast<ssize_t>(bytes))
      std::abort();
    x.Attach(kLength, stream, kWindow);
  }
  ~Data() { std::fclose(stream); }
  Data(const Data&) = delete;
  Data& operator=(const Data&) = delete;

  FILE* stream;
  C_VecPi<double, int, C_PtrOnFile<double, int>> x;
  std::vector<double> window = std::vector<double>(kWindow);
} d;

/** Has the value in a register and does nothing with it. */
void use(double value) {
  asm volatile("" : : "x"(value));
}

void values(benchmark::State& state) {
  for (auto _ : state) {
    for (int i = 0; i < kLength; ++i)
      use(d.x.GetVal(i));
  }
}
void windows(benchmark::State& state) {
  const std::size_t bytes = kWindow * sizeof(double);
  for (auto _ : state) {
    for (int first = 0; first < kLength; first += kWindow) {
      const auto offset = static_cast<off_t>(first) * static_cast<off_t>(sizeof(double));
      if (pread(fileno(d.stream), d.window.data(), bytes, offset) != static_cast<ssize_t>(bytes))
        std::abort();
      for (double value : d.window)
        use(value);
    }
  }
}
BENCHMARK(values)->Name("GetVal on a file 1048576/measured");
BENCHMARK(windows)->Name("GetVal on a file 1048576/bound");

} // namespace
