// Byte order: the host's, and words that must be turned.
#ifndef ZAREL_BINARY_ORDER_H
#define ZAREL_BINARY_ORDER_H

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace Zarel {

inline bool hostIsBigEndian() {
  static const int probe = 0x01020304;
  return *reinterpret_cast<const char*>(&probe) == 1;
}

inline void reverseBytes(void* word, std::size_t bytes) {
  const auto first = static_cast<char*>(word);
  std::reverse(first, first + bytes);
}

// Reverses each of `count` words of `width` bytes in place.
inline void reverseWords(void* words, std::size_t width, std::size_t count) {
  const auto first = static_cast<char*>(words);
  for (std::size_t k = 0; k < count; ++k)
    reverseBytes(first + k * width, width);
}

constexpr std::size_t stageElements = 256;

// Writes words with their bytes reversed, through a stage of 256 elements, so that the caller's
// stay as they are. `write(bytes, count)` gives the elements it took; the first short write ends
// the transfer. Returns whether all went out.
template <std::size_t width, class Write>
bool writeReversed(const void* words, std::size_t count, Write write) {
  char stage[stageElements * width];
  const auto from = static_cast<const char*>(words);
  for (std::size_t done = 0; done < count;) {
    const std::size_t now = std::min(stageElements, count - done);
    std::memcpy(stage, from + done * width, now * width);
    reverseWords(stage, width, now);
    if (write(stage, now) != now) return false;
    done += now;
  }
  return true;
}

} // namespace Zarel

#endif
