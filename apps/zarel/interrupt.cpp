#include "interrupt.h"

#include "failure.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <thread>
#include <unistd.h>
#include <vector>

namespace app::interrupt {

namespace {

std::atomic<bool> raised{false};
static_assert(std::atomic<bool>::is_always_lock_free, "the flag is set by a signal handler");
int wakeUp[2] = {-1, -1};

struct Registry {
  std::mutex mutex;
  std::vector<std::function<void()>*> entries;
};

Registry& registry() {
  static Registry* instance = new Registry; // outlives the watcher, which is never joined
  return *instance;
}

extern "C" void onSignal(int) {
  if (raised.exchange(true)) _exit(static_cast<int>(ExitCode::interrupted));
  const int kept = errno;
  const char byte = 1;
  [[maybe_unused]] const auto written = write(wakeUp[1], &byte, 1);
  errno = kept;
}

void watch() {
  char byte = 0;
  while (read(wakeUp[0], &byte, 1) != 1) {
    if (errno != EINTR) return;
  }
  const std::lock_guard<std::mutex> lock(registry().mutex);
  for (auto* stop : registry().entries)
    (*stop)();
}

void startWatcher() {
  // The watcher blocks all signals, so that they interrupt the main thread's system calls.
  sigset_t all;
  sigset_t former;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &former);
  std::thread(watch).detach();
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

void handle(int number, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  sigaction(number, &action, nullptr);
}

} // namespace

void install() {
  handle(SIGPIPE, SIG_IGN);
  handle(SIGXFSZ, SIG_IGN);
  if (pipe2(wakeUp, O_CLOEXEC) != 0) failIo("cannot create a pipe", errno);
  registry();
  startWatcher();
  handle(SIGINT, onSignal);
  handle(SIGTERM, onSignal);
}

bool requested() noexcept {
  return raised.load(std::memory_order_relaxed);
}

void check(const std::string& howToGoOn) {
  if (requested()) throw Failure(ExitCode::interrupted, "interrupted", howToGoOn);
}

OnStop::OnStop(std::function<void()> stop) : stop_(std::move(stop)) {
  const std::lock_guard<std::mutex> lock(registry().mutex);
  if (requested()) stop_();
  registry().entries.push_back(&stop_);
}

OnStop::~OnStop() {
  const std::lock_guard<std::mutex> lock(registry().mutex);
  auto& entries = registry().entries;
  entries.erase(std::remove(entries.begin(), entries.end(), &stop_), entries.end());
}

} // namespace app::interrupt
