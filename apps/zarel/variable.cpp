#include "variable.h"

#include "failure.h"
#include "number.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>
#include <set>

namespace app {

namespace {

/// Ends the reading of one text: with what is wrong.
using Refuse = std::function<void(const std::string&)>;

const char* const form = "it reads NAME=LOW:HIGH, such as width=0.5:2";

/// The longest line of a bounds file that is read: far more than a name and two numbers take.
constexpr std::size_t longestLine = 1 << 16;

double boundOf(const std::string& bound, const Refuse& refuse) {
  double value = 0;
  if (parseNumber(bound, value) != NumberStatus::ok)
    refuse("\"" + bound + "\" is not a finite number");
  return value;
}

Variable readVariable(const std::string& text, const Refuse& refuse) {
  const auto equals = text.find('=');
  const auto colon = text.find(':', equals == std::string::npos ? 0 : equals);
  if (equals == std::string::npos) refuse("it has no =");
  if (colon == std::string::npos) refuse("it has no :");
  Variable variable;
  variable.name = std::string(trimmed(std::string_view(text).substr(0, equals)));
  if (variable.name.empty()) refuse("it has no name");
  variable.low = boundOf(text.substr(equals + 1, colon - equals - 1), refuse);
  variable.high = boundOf(text.substr(colon + 1), refuse);
  if (!(variable.low < variable.high)) refuse("the lower bound is not below the upper one");
  return variable;
}

[[noreturn]] void refuseOption(const std::string& text, const std::string& why) {
  throw Failure(ExitCode::usage, "--input \"" + text + "\": " + why, form);
}

/// Variables one after the other, whose names stand once.
class Collector {
public:
  void add(const std::string& text, const Refuse& refuse) {
    variables_.push_back(readVariable(text, refuse));
    if (!names_.insert(variables_.back().name).second) refuse("the name stands twice");
  }
  std::vector<Variable> take() { return std::move(variables_); }

private:
  std::vector<Variable> variables_;
  std::set<std::string> names_;
};

/// What a line of a file says, without its comment.
std::string content(const std::string& line) {
  return std::string(trimmed(std::string_view(line).substr(0, line.find_first_of("#\r"))));
}

} // namespace

Variable parseVariable(const std::string& text) {
  return readVariable(text, [&text](const std::string& why) { refuseOption(text, why); });
}

std::vector<Variable> parseVariables(const std::vector<std::string>& inputs) {
  if (inputs.empty())
    throw Failure(ExitCode::usage, "--input is missing",
                  "name each input with its bounds: --input width=0.5:2");
  Collector collector;
  for (const std::string& text : inputs)
    collector.add(text, [&text](const std::string& why) { refuseOption(text, why); });
  return collector.take();
}

std::vector<Variable> readBounds(const std::string& path) {
  errno = 0;
  std::ifstream file(path);
  if (!file) failIo("cannot open " + path, errno);
  Collector collector;
  long long number = 0;
  for (std::string line; std::getline(file, line);) {
    const std::string text = content(line);
    ++number;
    const auto refuse = [&](const std::string& why) {
      throw Failure(ExitCode::badInput, "\"" + text.substr(0, 60) + "\": " + why, form,
                    Place{path, number, 0, 0, ""});
    };
    if (line.size() > longestLine) refuse("the line is too long");
    if (!text.empty()) collector.add(text, refuse);
  }
  if (file.bad()) failIo("cannot read " + path, errno);
  std::vector<Variable> variables = collector.take();
  if (variables.empty())
    throw Failure(ExitCode::badInput, "no variables", "a line each: NAME=LOW:HIGH",
                  Place{path, 0, 0, 0, ""});
  return variables;
}

std::vector<Variable> codedVariables(int count) {
  std::vector<Variable> variables;
  for (int k = 1; k <= count; ++k)
    variables.push_back({"x" + std::to_string(k), -1, 1});
  return variables;
}

double physicalValue(const Variable& variable, double coded) {
  const double share = 0.5 + 0.5 * coded;
  const double value = (1 - share) * variable.low + share * variable.high;
  return coded >= -1 && coded <= 1 ? std::clamp(value, variable.low, variable.high) : value;
}

double codedValue(const Variable& variable, double physical) {
  const double half = 0.5 * variable.high - 0.5 * variable.low; // does not overflow
  return (physical - variable.low) / half - 1;
}

} // namespace app
