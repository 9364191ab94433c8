/**
 * @file process.h
 * One child process: started without a shell in a process group of its own, watched without
 * blocking, and ended with everything it started.
 */
#ifndef ZAREL_APP_REFINE_PROCESS_H
#define ZAREL_APP_REFINE_PROCESS_H

#include <string>
#include <utility>
#include <vector>

namespace app::refine {

/** What to start. */
struct ProcessStart {
  std::string program;                ///< absolute path of the executable
  std::vector<std::string> arguments; ///< argv, the name of the program first
  std::string directory;              ///< working directory of the child
  std::string outputFile;             ///< takes its standard output
  std::string errorFile;              ///< takes its standard error
  /** Set on top of the environment of this process. */
  std::vector<std::pair<std::string, std::string>> environment;
};

/**
 * A running child. Its standard input is empty, its signals are at their defaults, and the system
 * kills it when this process dies. Start from the main thread only: that last promise is bound to
 * the thread that starts the child.
 */
class Process {
public:
  /** Starts the child. Throws `Failure` (code `failure`) if the system refuses. */
  explicit Process(const ProcessStart& start);
  Process(Process&& other) noexcept;
  Process& operator=(Process&&) = delete;
  /** A child that still runs is killed with its group. */
  ~Process();

  /** True once the child has ended. What it left running in its group is then killed. */
  bool ended();
  /** A descriptor that polls readable when the child ends; -1 where the system has none. */
  int descriptor() const { return pidfd_; }
  /** Asks the group to end (SIGTERM). */
  void terminate();
  /** Ends the group (SIGKILL). */
  void kill();

  /** After `ended`: true if the child returned 0. */
  bool succeeded() const;
  /** After `ended`: "exit code 3" or "signal 11 (Segmentation fault)". */
  std::string ending() const;

private:
  void signalGroup(int signal);

  int pid_ = -1;
  int pidfd_ = -1;
  int status_ = 0;
  bool ended_ = false;
};

/**
 * The absolute path of a program: names with a slash count from `directory`, others are searched
 * in PATH. Throws the `usage` failure when there is no such executable.
 */
std::string findProgram(const std::string& name, const std::string& directory);

} // namespace app::refine

#endif
