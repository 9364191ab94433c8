#include "process.h"

#include "failure.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace app::refine {
namespace {

/// The child's environment: ours, with the additions in place of what has their names.
std::vector<std::string>
mergedEnvironment(const std::vector<std::pair<std::string, std::string>>& additions) {
  std::vector<std::string> merged;
  for (const auto& [name, value] : additions)
    merged.push_back(name + '=' + value);
  for (char** entry = environ; entry && *entry; ++entry) {
    const std::string text(*entry);
    const std::string name = text.substr(0, text.find('='));
    bool replaced = false;
    for (const auto& addition : additions)
      replaced = replaced || addition.first == name;
    if (!replaced) merged.push_back(text);
  }
  return merged;
}

std::vector<char*> pointers(const std::vector<std::string>& strings) {
  std::vector<char*> result;
  for (const std::string& s : strings)
    result.push_back(const_cast<char*>(s.c_str()));
  result.push_back(nullptr);
  return result;
}

/// Everything the child needs between fork and exec, made before the fork: afterwards only
/// async-signal-safe calls are allowed, since other threads may have held locks.
struct ChildPlan {
  const char* program;
  char* const* arguments;
  char* const* environment;
  const char* directory;
  const char* outputFile;
  const char* errorFile;
  pid_t parent;
  int errorPipe;
};

bool redirect(const char* path, int flags, int target) {
  const int fd = ::open(path, flags | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  if (fd == target) return ::fcntl(fd, F_SETFD, 0) == 0;
  return ::dup2(fd, target) >= 0;
}

void restoreSignals() {
  for (int signal : {SIGINT, SIGTERM, SIGPIPE, SIGXFSZ, SIGCHLD})
    ::signal(signal, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void runChild(const ChildPlan& plan) {
  ::setpgid(0, 0);
  restoreSignals();
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != plan.parent) ::_exit(127); // the parent died before the line above
  const int write = O_WRONLY | O_CREAT | O_TRUNC;
  if (redirect("/dev/null", O_RDONLY, 0) && redirect(plan.outputFile, write, 1) &&
      redirect(plan.errorFile, write, 2) && ::chdir(plan.directory) == 0)
    ::execve(plan.program, plan.arguments, plan.environment);
  const int error = errno;
  const ssize_t ignored = ::write(plan.errorPipe, &error, sizeof error);
  ::_exit(ignored == sizeof error ? 127 : 126);
}

[[noreturn]] void failStart(const std::string& program, int error) {
  throw Failure(ExitCode::failure,
                "cannot start the simulation " + program + ": " + std::strerror(error));
}

bool isExecutable(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

std::string searchPath(const std::string& name) {
  const char* variable = std::getenv("PATH");
  std::istringstream folders(variable ? variable : "/usr/local/bin:/usr/bin:/bin");
  std::string folder;
  while (std::getline(folders, folder, ':')) {
    std::string candidate = folder + '/' + name;
    if (!folder.empty() && folder[0] == '/' && isExecutable(candidate)) return candidate;
  }
  return {};
}

} // namespace

Process::Process(const ProcessStart& start) {
  const std::vector<std::string> variables = mergedEnvironment(start.environment);
  const std::vector<char*> arguments = pointers(start.arguments);
  const std::vector<char*> environment = pointers(variables);
  int pipe[2];
  if (::pipe2(pipe, O_CLOEXEC) != 0) failStart(start.program, errno);
  const ChildPlan plan{start.program.c_str(),
                       arguments.data(),
                       environment.data(),
                       start.directory.c_str(),
                       start.outputFile.c_str(),
                       start.errorFile.c_str(),
                       ::getpid(),
                       pipe[1]};
  pid_ = ::fork();
  const int forkError = errno;
  if (pid_ == 0) runChild(plan);
  ::close(pipe[1]);
  if (pid_ < 0) {
    ::close(pipe[0]);
    failStart(start.program, forkError);
  }
  ::setpgid(pid_, pid_); // both sides do it, so that a signal to the group never comes too early
  int error = 0;
  ssize_t got;
  do
    got = ::read(pipe[0], &error, sizeof error);
  while (got < 0 && errno == EINTR);
  ::close(pipe[0]);
  if (got == sizeof error) {
    ::waitpid(pid_, nullptr, 0);
    pid_ = -1;
    failStart(start.program, error);
  }
#ifdef SYS_pidfd_open
  pidfd_ = static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0));
#endif
}

Process::Process(Process&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      pidfd_(std::exchange(other.pidfd_, -1)),
      status_(other.status_),
      ended_(other.ended_) {}

Process::~Process() {
  if (pid_ > 0 && !ended_) {
    kill();
    while (::waitpid(pid_, &status_, 0) < 0 && errno == EINTR) {
    }
  }
  if (pidfd_ >= 0) ::close(pidfd_);
}

bool Process::ended() {
  if (ended_) return true;
  // First look without reaping: while the child is a zombie its number, and with it the group's,
  // cannot be given to anybody else, so the kill reaches only what belongs to it.
  siginfo_t info{};
  if (::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
      info.si_pid != pid_)
    return false;
  kill();
  while (::waitpid(pid_, &status_, 0) < 0 && errno == EINTR) {
  }
  ended_ = true;
  return true;
}

void Process::signalGroup(int signal) {
  if (pid_ > 0 && !ended_) ::kill(-pid_, signal);
}

void Process::terminate() {
  signalGroup(SIGTERM);
}

void Process::kill() {
  signalGroup(SIGKILL);
}

bool Process::succeeded() const {
  return WIFEXITED(status_) && WEXITSTATUS(status_) == 0;
}

std::string Process::ending() const {
  if (WIFEXITED(status_)) return "exit code " + std::to_string(WEXITSTATUS(status_));
  const int signal = WTERMSIG(status_);
  return "signal " + std::to_string(signal) + " (" + ::strsignal(signal) + ")";
}

std::string findProgram(const std::string& name, const std::string& directory) {
  std::string path = name;
  if (name.find('/') == std::string::npos)
    path = searchPath(name);
  else if (name[0] != '/')
    path = directory + '/' + name;
  if (path.empty() || !isExecutable(path))
    throw Failure(ExitCode::usage, "the simulation \"" + name + "\" is not an executable program",
                  "names with a slash count from " + directory + ", others are searched in PATH");
  return path;
}

} // namespace app::refine
