/**
 * @file interrupt.h
 * Ctrl-C and termination. The handler only raises a flag and wakes a watcher thread; the watcher
 * calls what was registered, which stops running fits. A second signal ends the program at once.
 */
#ifndef ZAREL_APP_INTERRUPT_H
#define ZAREL_APP_INTERRUPT_H

#include <functional>
#include <string>

namespace app::interrupt {

/**
 * Handles SIGINT and SIGTERM from now on, and ignores SIGPIPE and SIGXFSZ, so that a closed pipe
 * or a full file shows as a failed write. Call once, before any thread is started.
 */
void install();

/** True once a signal came. Safe in any thread. */
bool requested() noexcept;

/** Throws the `interrupted` failure with this hint if a signal came. */
void check(const std::string& howToGoOn);

/**
 * While this lives, a signal calls `stop` once, from the watcher thread. If a signal came before,
 * it is called in the constructor. The destructor waits for a running call.
 */
class OnStop {
public:
  explicit OnStop(std::function<void()> stop);
  OnStop(const OnStop&) = delete;
  OnStop& operator=(const OnStop&) = delete;
  ~OnStop();

private:
  std::function<void()> stop_;
};

} // namespace app::interrupt

#endif
