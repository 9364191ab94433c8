#include "option_values.h"

#include "number.h"
#include "suggest.h"

namespace app {

namespace {

std::string inQuotes(const std::string& text) {
  return "\"" + text + "\"";
}

[[noreturn]] void refuse(const std::string& option, const std::string& what) {
  throw CLI::ValidationError(option, what);
}

std::string rangeText(const Range& range) {
  const std::string equal = range.strict ? "" : " or equal to";
  std::string out;
  if (range.lowest > -std::numeric_limits<double>::infinity())
    out += "greater than" + equal + " " + numberText(range.lowest);
  if (range.highest < std::numeric_limits<double>::infinity())
    out += (out.empty() ? "" : " and ") + ("less than" + equal + " " + numberText(range.highest));
  return out;
}

bool inside(double value, const Range& range) {
  return range.strict ? value > range.lowest && value < range.highest
                      : value >= range.lowest && value <= range.highest;
}

int readNamed(const std::string& option, std::string_view text,
              const std::vector<NamedValue>& values) {
  std::vector<std::string> names;
  for (const auto& value : values) {
    if (text == value.name) return value.value;
    names.emplace_back(value.name);
  }
  const std::string hint = didYouMean(text, names);
  refuse(option, inQuotes(std::string(text)) + " is not known" +
                     (hint.empty() ? ". It" : "; " + hint + " It") + " is one of " + listed(names));
}

CLI::Option* addText(CLI::App& command, const std::string& names, const std::string& help,
                     const std::function<void(const std::string&)>& read) {
  return command
      .add_option_function<std::string>(
          names, [read](const std::string& text) { read(text); }, help)
      ->take_last();
}

/** The help of an option with a line for each name. */
std::string helpOf(std::string help, const std::vector<NamedValue>& values) {
  for (const auto& value : values)
    help += std::string("\n  ") + value.name + ": " + value.help;
  return help;
}

/** The long name among "-o,--output". */
std::string longName(const std::string& names) {
  return names.substr(names.rfind(',') + 1);
}

} // namespace

double readReal(const std::string& option, const std::string& text, const Range& range) {
  double value = 0;
  const auto status = parseNumber(text, value);
  if (status == NumberStatus::outOfRange)
    refuse(option, inQuotes(text) + " is beyond double precision");
  if (status == NumberStatus::notFinite) refuse(option, inQuotes(text) + " is not finite");
  if (status != NumberStatus::ok) refuse(option, inQuotes(text) + " is not a number");
  if (!inside(value, range)) refuse(option, inQuotes(text) + " must be " + rangeText(range));
  return value;
}

long long readInteger(const std::string& option, const std::string& text, long long lowest,
                      long long highest) {
  long long value = 0;
  const auto status = parseInteger(text, value);
  if (status == NumberStatus::notANumber) refuse(option, inQuotes(text) + " is no whole number");
  if (status != NumberStatus::ok || value < lowest || value > highest)
    refuse(option, inQuotes(text) + " must lie between " + std::to_string(lowest) + " and " +
                       std::to_string(highest));
  return value;
}

CLI::Option* addReal(CLI::App& command, const std::string& names, double& target,
                     const std::string& help, Range range) {
  const auto option = longName(names);
  return addText(command, names, help,
                 [&target, option, range](const std::string& text) {
                   target = readReal(option, text, range);
                 })
      ->type_name("NUMBER")
      ->default_str(numberText(target));
}

CLI::Option* addInteger(CLI::App& command, const std::string& names, long long& target,
                        const std::string& help, long long lowest, long long highest) {
  const auto option = longName(names);
  return addText(command, names, help,
                 [&target, option, lowest, highest](const std::string& text) {
                   target = readInteger(option, text, lowest, highest);
                 })
      ->type_name("N")
      ->default_str(std::to_string(target));
}

CLI::Option* addReals(CLI::App& command, const std::string& names, std::vector<double>& target,
                      const std::string& help, Range range) {
  const auto option = longName(names);
  return addText(command, names, help,
                 [&target, option, range](const std::string& text) {
                   target.clear();
                   forEachPart(text, ',', [&](std::string_view part) {
                     target.push_back(readReal(option, std::string(part), range));
                   });
                 })
      ->type_name("NUMBER,...");
}

CLI::Option* addNamed(CLI::App& command, const std::string& names, std::vector<int>& target,
                      const std::vector<NamedValue>& values, const std::string& help) {
  const auto option = longName(names);
  return addText(command, names, helpOf(help, values),
                 [&target, option, &values](const std::string& given) {
                   target.clear();
                   forEachPart(given, ',', [&](std::string_view part) {
                     target.push_back(readNamed(option, part, values));
                   });
                 })
      ->type_name("NAME")
      ->default_str(nameOf(values, target.front()));
}

CLI::Option* addChoice(CLI::App& command, const std::string& names,
                       const std::vector<NamedValue>& values, const std::string& help,
                       const std::function<void(int)>& take) {
  const auto option = longName(names);
  return addText(command, names, helpOf(help, values),
                 [option, &values, take](const std::string& text) {
                   take(readNamed(option, text, values));
                 })
      ->type_name("NAME");
}

} // namespace app
