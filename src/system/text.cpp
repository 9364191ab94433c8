#include "system/text.h"

#include <algorithm>
#include <cstdint>

namespace Zarel {

namespace {

constexpr std::uint32_t largestCharacter = 0x10FFFF;
constexpr std::uint32_t replacement = 0xFFFD;

bool isHighSurrogate(std::uint32_t c) {
  return c >= 0xD800 && c <= 0xDBFF;
}
bool isLowSurrogate(std::uint32_t c) {
  return c >= 0xDC00 && c <= 0xDFFF;
}
bool isSurrogate(std::uint32_t c) {
  return c >= 0xD800 && c <= 0xDFFF;
}
// The mark of a byte that was no UTF-8.
bool isStrayByte(std::uint32_t c) {
  return c >= 0xDC80 && c <= 0xDCFF;
}

std::uint32_t join(std::uint32_t high, std::uint32_t low) {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// The number of bytes that follow a first byte; -1 if none can start a character like that.
int followers(unsigned char first) {
  if (first < 0x80) return 0;
  if (first >= 0xC2 && first <= 0xDF) return 1;
  if (first >= 0xE0 && first <= 0xEF) return 2;
  if (first >= 0xF0 && first <= 0xF4) return 3;
  return -1;
}

// Decodes the character at the head of `text` and tells its bytes; 0 bytes if there is none.
size_t decode(std::string_view text, std::uint32_t& character) {
  static constexpr std::uint32_t smallest[] = {0, 0x80, 0x800, 0x10000};
  static constexpr unsigned char headMask[] = {0x7F, 0x1F, 0x0F, 0x07};
  const auto first = static_cast<unsigned char>(text[0]);
  const int more = followers(first);
  if (more < 0 || text.size() <= static_cast<size_t>(more)) return 0;
  character = first & headMask[more];
  for (int k = 1; k <= more; ++k) {
    const auto next = static_cast<unsigned char>(text[static_cast<size_t>(k)]);
    if ((next & 0xC0) != 0x80) return 0;
    character = (character << 6) | (next & 0x3F);
  }
  const bool valid =
      character >= smallest[more] && character <= largestCharacter && !isSurrogate(character);
  return valid ? static_cast<size_t>(more) + 1 : 0;
}

void encode(std::uint32_t c, std::string& out) {
  const auto put = [&out](std::uint32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | c >> 6);
    put(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    put(0xE0 | c >> 12);
    put(0x80 | (c >> 6 & 0x3F));
    put(0x80 | (c & 0x3F));
  } else {
    put(0xF0 | (c >> 18 & 0x07));
    put(0x80 | (c >> 12 & 0x3F));
    put(0x80 | (c >> 6 & 0x3F));
    put(0x80 | (c & 0x3F));
  }
}

// The character at position `at`, with a surrogate pair joined; moves on behind it.
std::uint32_t take(std::wstring_view text, size_t& at) {
  const auto c = static_cast<std::uint32_t>(text[at++]);
  if (!isHighSurrogate(c) || at == text.size()) return c;
  const auto low = static_cast<std::uint32_t>(text[at]);
  if (!isLowSurrogate(low)) return c;
  ++at;
  return join(c, low);
}

} // namespace

std::wstring toWide(std::string_view text) {
  std::wstring wide;
  wide.reserve(text.size());
  while (!text.empty()) {
    std::uint32_t character = 0;
    size_t bytes = decode(text, character);
    if (bytes == 0) {
      character = 0xDC00 + static_cast<unsigned char>(text[0]);
      bytes = 1;
    }
    wide.push_back(static_cast<wchar_t>(character));
    text.remove_prefix(bytes);
  }
  return wide;
}

bool hasStrayBytes(std::wstring_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](wchar_t c) { return isStrayByte(static_cast<std::uint32_t>(c)); });
}

std::string toUtf8(std::wstring_view text) {
  std::string narrow;
  narrow.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    const std::uint32_t c = take(text, at);
    if (isStrayByte(c))
      narrow.push_back(static_cast<char>(c - 0xDC00));
    else
      encode(c <= largestCharacter ? c : replacement, narrow);
  }
  return narrow;
}

} // namespace Zarel
