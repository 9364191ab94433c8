/**
 * @file option_values.h
 * Values of options, read strictly: whole texts, finite numbers, near misses named.
 */
#ifndef ZAREL_APP_OPTION_VALUES_H
#define ZAREL_APP_OPTION_VALUES_H

#include "model_options.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace app {

/** Bounds of a number; `strict` leaves the bounds themselves out. */
struct Range {
  double lowest = -std::numeric_limits<double>::infinity();
  double highest = std::numeric_limits<double>::infinity();
  bool strict = false;
};

/** Reads one number; throws CLI::ValidationError, which becomes a usage failure. */
double readReal(const std::string& option, const std::string& text, const Range& range);
long long readInteger(const std::string& option, const std::string& text, long long lowest,
                      long long highest);

/** An option with one number. */
CLI::Option* addReal(CLI::App& command, const std::string& names, double& target,
                     const std::string& help, Range range = {});

/** An option with one whole number. */
CLI::Option* addInteger(CLI::App& command, const std::string& names, long long& target,
                        const std::string& help, long long lowest, long long highest);

/** An option with a list of numbers between commas. */
CLI::Option* addReals(CLI::App& command, const std::string& names, std::vector<double>& target,
                      const std::string& help, Range range = {});

/** An option with one or more of these names between commas. */
CLI::Option* addNamed(CLI::App& command, const std::string& names, std::vector<int>& target,
                      const std::vector<NamedValue>& values, const std::string& help);

/** An option with one of these names; `take` gets its value. */
CLI::Option* addChoice(CLI::App& command, const std::string& names,
                       const std::vector<NamedValue>& values, const std::string& help,
                       const std::function<void(int)>& take);

} // namespace app

#endif
