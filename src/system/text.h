// Conversion of character codes. Narrow text is UTF-8, wide text is what wchar_t holds.
#ifndef ZAREL_SYSTEM_TEXT_H
#define ZAREL_SYSTEM_TEXT_H

#include <string>
#include <string_view>

namespace Zarel {

// Bytes that are no UTF-8 become the lone low surrogates U+DC80 to U+DCFF, and toUtf8 makes the
// same bytes of them: any file name survives the way there and back.
std::wstring toWide(std::string_view text);
// Whether a text of toWide came from bytes that are no UTF-8.
bool hasStrayBytes(std::wstring_view text);

// Surrogate pairs become the character that they stand for, values that are none U+FFFD.
std::string toUtf8(std::wstring_view text);

} // namespace Zarel

#endif
