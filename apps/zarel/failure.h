/**
 * @file failure.h
 * How a command of the program fails: one exception that carries what went wrong, where, how to
 * mend it, and the exit code.
 */
#ifndef ZAREL_APP_FAILURE_H
#define ZAREL_APP_FAILURE_H

#include <stdexcept>
#include <string>

namespace app {

/** What the program tells its caller when it ends. */
enum class ExitCode {
  done = 0,
  failure = 1,       ///< anything that has no code of its own
  usage = 2,         ///< the command line or the configuration file is wrong
  badInput = 3,      ///< the data is wrong
  io = 4,            ///< reading or writing failed
  numerical = 5,     ///< a fit or a prediction failed
  simulations = 6,   ///< too many simulations failed
  interrupted = 130, ///< Ctrl-C or a termination signal
};

/** A place in an input file; numbers count from 1, and 0 means that they do not apply. */
struct Place {
  std::string file;
  long long line = 0;   ///< physical line, as an editor shows it
  long long row = 0;    ///< data row, the header and comments not counted
  long long column = 0; ///< field in the row
  std::string name;     ///< name of the column

  /** "file:line: row R, column C (name)", as much of it as is known. */
  std::string text() const;
};

/** Ends a command. `what()` says what is wrong, without the place. */
struct Failure : std::runtime_error {
  Failure(ExitCode exitCode, const std::string& what, std::string howToMend = {}, Place where = {})
      : std::runtime_error(what),
        code(exitCode),
        hint(std::move(howToMend)),
        place(std::move(where)) {}

  ExitCode code;
  std::string hint; ///< how to mend it; may be empty
  Place place;      ///< may be empty

  /** The place, a colon and `what()`. */
  std::string text() const;
};

/** A failure to read or write: `what: <text of errno>`, code `io`. */
[[noreturn]] void failIo(const std::string& what, int error);

} // namespace app

#endif
