#include "cli.h"

#include "doe/doe.h"
#include "interrupt.h"
#include "library.h"
#include "option_values.h"
#include "refine/refine.h"
#include "report.h"
#include "suggest.h"
#include "svd/svd.h"
#include "toml_config.h"
#include "version.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <memory>
#include <new>

namespace app {

namespace {

void addGlobals(CLI::App& root, Globals& globals) {
  root.add_flag("-q,--quiet", globals.quiet, "No words on standard error but warnings and errors");
  root.add_flag("--json", globals.json, "One JSON document on standard output");
  root.add_flag("-f,--force", globals.force, "Overwrite files that exist");
  root.add_option_function<std::string>(
          "--seed",
          [&globals](const std::string& text) {
            globals.seed = static_cast<std::uint64_t>(
                readInteger("--seed", text, 0, std::numeric_limits<long long>::max()));
            globals.seedGiven = true;
          },
          "Seed of everything that is drawn at random")
      ->type_name("N")
      ->default_str("1");
  root.add_flag_callback(
      "-V,--version", [] { throw CLI::CallForVersion("", 0); },
      "Print the version and the BLAS in use");
  root.set_config("--config", "", "Options from a TOML file; a command's stand in its section")
      ->type_name("FILE");
  root.config_formatter(std::make_shared<TomlConfig>());
  root.allow_config_extras(CLI::config_extras_mode::error);
}

/** All names that a word on the command line could have been meant as. */
std::vector<std::string> knownWords(const CLI::App& root) {
  std::vector<std::string> words;
  const auto addOptions = [&words](const CLI::App& command) {
    for (const auto* option : command.get_options()) {
      for (const auto& name : option->get_lnames())
        words.push_back("--" + name);
    }
  };
  addOptions(root);
  const auto chosen = root.get_subcommands();
  for (const auto* command : chosen)
    addOptions(*command);
  if (chosen.empty())
    for (const auto* command : root.get_subcommands([](const CLI::App*) { return true; }))
      words.push_back(command->get_name());
  return words;
}

std::string usageHint(const CLI::App& root) {
  const auto chosen = root.get_subcommands();
  const std::string command = chosen.empty() ? "" : " " + chosen.front()->get_name();
  return "zarel" + command + " --help tells what there is";
}

/** The words that nothing took, and what they may have been meant as. */
Failure extrasFailure(const CLI::App& root) {
  const auto words = root.remaining(true);
  const std::string word = words.empty() ? "" : words.front().substr(0, words.front().find('='));
  const bool option = word.size() > 1 && word.front() == '-';
  const std::string kind = option                           ? "option"
                           : root.get_subcommands().empty() ? "command"
                                                            : "argument";
  const std::string suggestion = didYouMean(word, knownWords(root));
  return Failure(ExitCode::usage, "unknown " + kind + " \"" + word + "\"",
                 suggestion.empty() ? usageHint(root) : suggestion);
}

/** "--inputs: At Most 1 required but received 2" in words for people; other texts as they are. */
std::string mismatchText(const std::string& text) {
  const auto end = text.find(": At Most 1 required");
  return end == std::string::npos ? text : text.substr(0, end) + " is given more than once";
}

Failure usageFailure(const CLI::App& root, const CLI::ParseError& error) {
  // A misspelt command is also a missing command, which CLI11 finds first.
  if (dynamic_cast<const CLI::ExtrasError*>(&error) || !root.remaining(true).empty())
    return extrasFailure(root);
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error))
    return {ExitCode::usage, mismatchText(error.what()), usageHint(root)};
  if (dynamic_cast<const CLI::FileError*>(&error)) return {ExitCode::io, error.what()};
  return {ExitCode::usage, error.what(), usageHint(root)};
}

void printVersion(const Globals& globals) {
  if (!globals.json) {
    printData(versionText());
    return;
  }
  const BlasFacts blas = blasFacts();
  Json document = newReport("version");
  document["blas"] = {{"name", blas.name},
                      {"version", blas.version},
                      {"core", blas.core},
                      {"initial_core", blas.initialCore},
                      {"reselected", blas.reselected}};
  printReport(document);
}

/** Help and version, which CLI11 reports by exceptions, on standard output. */
bool printedInformation(const CLI::App& root, const Globals& globals,
                        const CLI::ParseError& error) {
  if (dynamic_cast<const CLI::CallForVersion*>(&error)) {
    printVersion(globals);
    return true;
  }
  if (error.get_exit_code() != 0) return false;
  const auto chosen = root.get_subcommands();
  printData(chosen.empty() ? root.help() : chosen.front()->help("zarel"));
  return true;
}

void parse(CLI::App& root, Globals& globals, int argc, char** argv) {
  try {
    root.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    globals.action = nullptr;
    if (!printedInformation(root, globals, error)) throw usageFailure(root, error);
  }
}

/** Everything an action may throw, as a Failure. */
Failure asFailure(const std::exception_ptr& thrown) {
  try {
    std::rethrow_exception(thrown);
  } catch (const Failure& failure) {
    return failure;
  } catch (const C_ZarelException& error) {
    return library::asFailure(error);
  } catch (const std::bad_alloc&) {
    return {ExitCode::failure, "out of memory", "fit fewer samples or fewer outputs at a time"};
  } catch (const std::exception& error) {
    return {ExitCode::failure, error.what()};
  } catch (...) {
    return {ExitCode::failure, "an unknown exception"};
  }
}

int report(Globals& globals, const Failure& failure) {
  globals.console.error(failure);
  if (!globals.json || globals.documentStarted) return static_cast<int>(failure.code);
  try {
    Json document = newReport("");
    document["error"] = errorReport(failure);
    printReport(document);
  } catch (const std::exception&) {
    // The error stands on standard error already.
  }
  return static_cast<int>(failure.code);
}

void parseAndRun(Globals& globals, int argc, char** argv) {
  CLI::App root("Kriging models of expensive simulations: design, fit, predict, refine; and the "
                "decomposition of what they give.",
                "zarel");
  root.require_subcommand(1);
  root.fallthrough();
  addGlobals(root, globals);
  addDoe(root, globals);
  addFit(root, globals);
  addPredict(root, globals);
  addInfo(root, globals);
  addRefine(root, globals);
  addSvd(root, globals);
  parse(root, globals, argc, argv);
  globals.console.setQuiet(globals.quiet);
  if (globals.action) globals.action();
}

} // namespace

int run(int argc, char** argv) {
  Globals globals;
  globals.arguments.assign(argv, argv + argc);
  // Usage errors are reported as JSON too, and may come before the flag was parsed.
  const auto& words = globals.arguments;
  globals.json = std::find(words.begin(), words.end(), "--json") != words.end();
  try {
    interrupt::install();
    library::install();
    parseAndRun(globals, argc, argv);
    return static_cast<int>(ExitCode::done);
  } catch (...) {
    return report(globals, asFailure(std::current_exception()));
  }
}

} // namespace app
