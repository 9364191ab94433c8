/**
 * @file number.h
 * Numbers as text, the same in every locale.
 */
#ifndef ZAREL_APP_NUMBER_H
#define ZAREL_APP_NUMBER_H

#include <string>
#include <string_view>

namespace app {

enum class NumberStatus {
  ok,
  notANumber, ///< the text is no number, or something follows it
  outOfRange, ///< a number that a double cannot hold, such as 1e400
  notFinite,  ///< "nan", "inf" and their kin
};

/** Reads the whole text as one double; blanks around it and a leading plus sign are accepted. */
NumberStatus parseNumber(std::string_view text, double& value) noexcept;

/** Reads the whole text as a whole number. */
NumberStatus parseInteger(std::string_view text, long long& value) noexcept;

/** The shortest text that reads back as the same double; "nan", "inf" and "-inf" otherwise. */
void appendNumber(std::string& out, double value);
std::string numberText(double value);

/** For people: a few significant digits. */
std::string roundedText(double value, int digits = 4);

/** For people: bytes, as "4.58 MiB". */
std::string sizeText(double bytes);

/** The text without blanks (spaces and tabs) at its ends. */
std::string_view trimmed(std::string_view text) noexcept;

/** The parts of the text between separators, blanks trimmed. */
template <class Function>
void forEachPart(std::string_view text, char separator, Function function) {
  for (;;) {
    const auto end = text.find(separator);
    function(trimmed(text.substr(0, end)));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

} // namespace app

#endif
