#include "number.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace app {

namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

/** from_chars takes no plus sign; "+-1" stays wrong. */
std::string_view withoutPlus(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  return text;
}

template <class T>
NumberStatus parseWhole(std::string_view text, T& value) {
  text = withoutPlus(trimmed(text));
  T parsed{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
  if (error == std::errc::invalid_argument || end != text.data() + text.size())
    return NumberStatus::notANumber;
  if (error == std::errc::result_out_of_range) return NumberStatus::outOfRange;
  value = parsed;
  return NumberStatus::ok;
}

} // namespace

std::string_view trimmed(std::string_view text) noexcept {
  while (!text.empty() && isBlank(text.front()))
    text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back()))
    text.remove_suffix(1);
  return text;
}

NumberStatus parseNumber(std::string_view text, double& value) noexcept {
  const auto status = parseWhole(text, value);
  return status == NumberStatus::ok && !std::isfinite(value) ? NumberStatus::notFinite : status;
}

NumberStatus parseInteger(std::string_view text, long long& value) noexcept {
  return parseWhole(text, value);
}

void appendNumber(std::string& out, double value) {
  // A NaN has no sign worth writing.
  if (std::isnan(value)) {
    out += "nan";
    return;
  }
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, value);
  out.append(text, result.ptr);
}

std::string numberText(double value) {
  std::string out;
  appendNumber(out, value);
  return out;
}

std::string roundedText(double value, int digits) {
  char text[40];
  const auto result =
      std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits);
  return std::string(text, result.ptr);
}

std::string sizeText(double bytes) {
  constexpr const char* units[] = {" bytes", " KiB", " MiB", " GiB", " TiB"};
  int unit = 0;
  for (; bytes >= 1024 && unit < 4; ++unit)
    bytes /= 1024;
  return roundedText(bytes, bytes < 1000 ? 3 : 4) + units[unit];
}

} // namespace app
