/**
 * @file cli.h
 * The command line: global options, the commands, and the way from arguments to an exit code.
 */
#ifndef ZAREL_APP_CLI_H
#define ZAREL_APP_CLI_H

#include "console.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace app {

/** What the global options say, and what every command shares. */
struct Globals {
  bool quiet = false; ///< no words on standard error but warnings and errors
  bool json = false;  ///< one JSON document on standard output
  bool force = false; ///< files may be overwritten
  bool seedGiven = false;
  std::uint64_t seed = 1;
  /** The JSON document is being written by the command, which ends it also when it fails. */
  bool documentStarted = false;
  Console console;
  std::vector<std::string> arguments; ///< the command line as given, for hints on how to go on
  /** The chosen command. A command's CLI11 callback stores it; it runs after all is parsed. */
  std::function<void()> action;
};

/** Parses and runs. Never throws; returns the exit code. */
int run(int argc, char** argv);

/** Ends the help of each command. */
inline const char* globalsFooter() {
  return "--quiet, --json, --force, --config and the like: see zarel --help";
}

/** Each command adds its subcommand. */
void addFit(CLI::App& root, Globals& globals);
void addPredict(CLI::App& root, Globals& globals);
void addInfo(CLI::App& root, Globals& globals);

} // namespace app

#endif
