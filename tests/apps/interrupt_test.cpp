#include "interrupt.h"

#include "app_support.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

/** Runs `body` in a child, so that the flag of this process stays down; gives its exit code. */
template <class Body>
int inChild(Body body) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    app::interrupt::install();
    _exit(body());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void waitFor(const std::atomic<int>& value) {
  for (int i = 0; i < 1000 && value == 0; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

TEST(Interrupt, CallsWhatIsRegisteredOnce) {
  for (const int number : {SIGINT, SIGTERM})
    EXPECT_EQ(inChild([number] {
                std::atomic<int> calls{0};
                const app::interrupt::OnStop stop([&calls] { ++calls; });
                raise(number);
                waitFor(calls);
                return app::interrupt::requested() ? calls.load() : 50;
              }),
              1);
}

TEST(Interrupt, CallsAtOnceWhenTheSignalCameBefore) {
  EXPECT_EQ(inChild([] {
              raise(SIGINT);
              int calls = 0;
              const app::interrupt::OnStop stop([&calls] { ++calls; });
              return calls;
            }),
            1);
}

TEST(Interrupt, DoesNotCallWhatIsGone) {
  EXPECT_EQ(inChild([] {
              std::atomic<int> calls{0};
              {
                const app::interrupt::OnStop stop([&calls] { ++calls; });
              }
              raise(SIGINT);
              std::this_thread::sleep_for(std::chrono::milliseconds(100));
              return calls.load();
            }),
            0);
}

TEST(Interrupt, TheSecondSignalEndsTheProgram) {
  EXPECT_EQ(inChild([] {
              raise(SIGINT);
              raise(SIGINT);
              return 0;
            }),
            130);
}

TEST(Interrupt, CheckThrowsWithTheHint) {
  EXPECT_EQ(inChild([] {
              app::interrupt::check("unused");
              raise(SIGTERM);
              const auto failure = apptest::failureOf([] { app::interrupt::check("go on"); });
              return failure.code == app::ExitCode::interrupted && failure.hint == "go on" ? 7 : 8;
            }),
            7);
}

TEST(Interrupt, ClosedPipesAndFullFilesDoNotKill) {
  EXPECT_EQ(inChild([] {
              raise(SIGPIPE);
              raise(SIGXFSZ);
              return 9;
            }),
            9);
}

} // namespace
