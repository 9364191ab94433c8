#include "suggest.h"

#include <algorithm>

namespace app {

namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool same(char a, char b) {
  return lower(a) == lower(b);
}

constexpr std::size_t longestName = 64; // longer texts are no slips of the hand

} // namespace

// Optimal string alignment: Damerau, "A technique for computer detection and correction of
// spelling errors", CACM 7 (1964), in the usual table form.
int editDistance(std::string_view a, std::string_view b) {
  const std::size_t columns = b.size() + 1;
  std::vector<int> table((a.size() + 1) * columns);
  const auto at = [&](std::size_t i, std::size_t j) -> int& { return table[i * columns + j]; };
  for (std::size_t i = 0; i <= a.size(); ++i)
    at(i, 0) = static_cast<int>(i);
  for (std::size_t j = 0; j <= b.size(); ++j)
    at(0, j) = static_cast<int>(j);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const int replace = at(i - 1, j - 1) + (same(a[i - 1], b[j - 1]) ? 0 : 1);
      at(i, j) = std::min({at(i - 1, j) + 1, at(i, j - 1) + 1, replace});
      if (i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1]))
        at(i, j) = std::min(at(i, j), at(i - 2, j - 2) + 1);
    }
  }
  return table.back();
}

std::string nearest(std::string_view given, const std::vector<std::string>& candidates) {
  if (given.empty() || given.size() > longestName) return "";
  int best = std::max(1, static_cast<int>(given.size()) / 3) + 1;
  std::string choice;
  for (const auto& candidate : candidates) {
    if (candidate.size() > longestName) continue;
    const int distance = editDistance(given, candidate);
    // What shares no letter is another name, however short.
    const auto longer = static_cast<int>(std::max(given.size(), candidate.size()));
    if (distance >= best || distance >= longer) continue;
    best = distance;
    choice = candidate;
  }
  return choice;
}

std::string didYouMean(std::string_view given, const std::vector<std::string>& candidates) {
  const std::string choice = nearest(given, candidates);
  return choice.empty() ? "" : "did you mean \"" + choice + "\"?";
}

std::string listed(const std::vector<std::string>& names, std::size_t limit) {
  std::string out;
  for (std::size_t i = 0; i < std::min(limit, names.size()); ++i)
    out += (i ? ", " : "") + names[i];
  if (names.size() > limit) out += ", ... (" + std::to_string(names.size()) + " in all)";
  return out;
}

} // namespace app
