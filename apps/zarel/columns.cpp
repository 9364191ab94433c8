#include "columns.h"

#include "failure.h"
#include "number.h"
#include "suggest.h"

#include <algorithm>
#include <numeric>

namespace app {

namespace {

[[noreturn]] void refuse(const std::string& what, const std::string& hint,
                         const std::string& file) {
  Place place;
  place.file = file;
  throw Failure(ExitCode::badInput, what, hint, place);
}

std::string quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

std::string columnCount(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " column" : " columns");
}

/** What one item of a column list asks for. */
class Selector {
public:
  Selector(const std::vector<std::string>& names, const std::string& file)
      : names_(names), file_(file) {}

  void add(std::string_view item, Columns& chosen) const {
    if (std::count(names_.begin(), names_.end(), item) != 0)
      chosen.push_back(findColumn(item, names_, file_));
    else if (!addNumbers(item, chosen))
      findColumn(item, names_, file_); // tells what is wrong
  }

private:
  bool addNumbers(std::string_view item, Columns& chosen) const {
    const auto dash = item.find('-');
    long long first = 0;
    long long last = 0;
    if (dash == std::string_view::npos) {
      if (!readNumber(item, first)) return false;
      last = first;
    } else if (!readNumber(item.substr(0, dash), first) ||
               !readNumber(item.substr(dash + 1), last)) {
      return false;
    }
    if (first < 1 || last < first || last > static_cast<long long>(names_.size()))
      refuse("no column " + quoted(item), "the file has " + columnCount(names_.size()), file_);
    for (long long column = first; column <= last; ++column)
      chosen.push_back(static_cast<std::size_t>(column - 1));
    return true;
  }

  static bool readNumber(std::string_view text, long long& value) {
    text = trimmed(text);
    if (!text.empty() && text.front() == '#') text.remove_prefix(1);
    return parseInteger(text, value) == NumberStatus::ok;
  }

  const std::vector<std::string>& names_;
  const std::string& file_;
};

void refuseTwice(const Columns& chosen, const std::vector<std::string>& names,
                 const std::string& option, const std::string& file) {
  Columns sorted = chosen;
  std::sort(sorted.begin(), sorted.end());
  const auto twice = std::adjacent_find(sorted.begin(), sorted.end());
  if (twice != sorted.end())
    refuse(option + " names the column " + quoted(names[*twice]) + " twice", "", file);
}

} // namespace

Columns allColumns(std::size_t count) {
  Columns columns(count);
  std::iota(columns.begin(), columns.end(), std::size_t{0});
  return columns;
}

Columns otherColumns(std::size_t count, const Columns& taken) {
  Columns others;
  for (std::size_t column = 0; column < count; ++column)
    if (std::find(taken.begin(), taken.end(), column) == taken.end()) others.push_back(column);
  return others;
}

std::size_t findColumn(std::string_view name, const std::vector<std::string>& names,
                       const std::string& file) {
  const auto found = std::find(names.begin(), names.end(), name);
  if (found == names.end()) {
    const std::string suggestion = didYouMean(name, names);
    refuse("no column is called " + quoted(name),
           suggestion.empty() ? "the columns are " + listed(names) : suggestion, file);
  }
  if (std::find(found + 1, names.end(), name) != names.end())
    refuse("more than one column is called " + quoted(name),
           "give each column a name of its own, or choose by number", file);
  return static_cast<std::size_t>(found - names.begin());
}

Columns selectColumns(std::string_view text, const std::vector<std::string>& names,
                      const Columns& candidates, const std::string& option,
                      const std::string& file) {
  long long count = 0;
  const bool isName = std::count(names.begin(), names.end(), trimmed(text)) != 0;
  if (!isName && parseInteger(text, count) == NumberStatus::ok) {
    if (count < 1 || count > static_cast<long long>(candidates.size()))
      refuse(option + " " + std::string(text) + ", where there are " +
                 columnCount(candidates.size()) + " to take",
             "the columns are " + listed(names), file);
    return Columns(candidates.begin(), candidates.begin() + count);
  }
  Columns chosen;
  const Selector selector(names, file);
  forEachPart(text, ',', [&](std::string_view item) { selector.add(item, chosen); });
  refuseTwice(chosen, names, option, file);
  return chosen;
}

} // namespace app
