// Texts in binary files.
#include <zarel/bf.h>
#include <zarel/zarelmem.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>

#include "binary/exceptions.h"
#include "binary/order.h"
#include "runtime/fail.h"
#include "system/files.h"

using namespace Zarel;

namespace {

// What is asked for at a time when a file cannot tell how much it holds.
constexpr size_t growth = 65536;

struct Release {
  void operator()(void* block) const { zarelmem_free(block, __FILE__, __LINE__); }
};
using Block = std::unique_ptr<char, Release>;

Block zeroed(size_t bytes) {
  return Block(
      static_cast<char*>(zarelmem_calloc(bytes, 1, "BF_fread_str", 1, __FILE__, __LINE__)));
}

// Enlarges a block and clears what is new; on failure there is no block any more.
bool enlarge(Block& block, size_t from, size_t to) {
  void* larger = zarelmem_realloc(block.get(), to, "BF_fread_str", 1, __FILE__, __LINE__);
  if (!larger) return false;
  static_cast<void>(block.release());
  block.reset(static_cast<char*>(larger));
  std::memset(block.get() + from, 0, to - from);
  return true;
}

// Reads `bytes` bytes and as many zeros as `behind` tells behind them. Memory grows with what
// has arrived, unless the file is known to hold it all.
Block readBytes(FILE* file, size_t bytes, size_t behind) {
  const long long left = bytesLeft(fileno(file));
  const bool known = left >= 0;
  if (known && static_cast<long long>(bytes) > left) return nullptr;
  size_t have = known ? bytes : std::min(bytes, growth);
  Block block = zeroed(have + behind);
  for (size_t done = 0; block;) {
    if (CBF_fread64(block.get() + done, 1, have - done, file) != have - done) return nullptr;
    done = have;
    if (done == bytes) break;
    have = std::min(bytes, 2 * have);
    if (!enlarge(block, done + behind, have + behind)) return nullptr;
  }
  return block;
}

// The last character that UTF-16 knows.
constexpr std::uint32_t largestCharacter = 0x10FFFF;

bool isPaired(wchar_t c) {
  const auto code = static_cast<std::uint32_t>(c);
  return code > 0xFFFF && code <= largestCharacter;
}

// The units of a wide text, one after the other; of values beyond UTF-16 the low 16 bits.
class UnitsOf {
public:
  explicit UnitsOf(const wchar_t* text) : _at(text) {}

  // The next unit in `unit`; false at the end of the text.
  bool next(wchar_t& unit) {
    if (_low) {
      unit = _low;
      _low = 0;
      return true;
    }
    if (*_at == 0) return false;
    unit = *_at++;
    if (isPaired(unit)) {
      const std::uint32_t rest = static_cast<std::uint32_t>(unit) - 0x10000;
      unit = static_cast<wchar_t>(0xD800 + (rest >> 10));
      _low = static_cast<wchar_t>(0xDC00 + (rest & 0x3FF));
    }
    return true;
  }

private:
  const wchar_t* _at;
  wchar_t _low = 0;
};

size_t numberOfUnits(const wchar_t* text) {
  size_t number = 0;
  for (; *text; ++text)
    number += isPaired(*text) ? 2 : 1;
  return number;
}

// Joins the surrogate pairs of a text in place.
void joinPairs(wchar_t* text) {
  if (sizeof(wchar_t) < 4) return;
  wchar_t* to = text;
  for (; *text; ++text, ++to) {
    const auto high = static_cast<std::uint32_t>(text[0]) - 0xD800;
    const auto low = static_cast<std::uint32_t>(text[1]) - 0xDC00;
    const bool pair = high < 0x400 && low < 0x400;
    *to = pair ? static_cast<wchar_t>(0x10000 + (high << 10) + low) : *text;
    if (pair) ++text;
  }
  *to = 0;
}

// Spreads `count` 16-bit words, in the stream's order, into a text.
void spreadUnits(FILE* file, const char* words, size_t count, wchar_t* text) {
  const bool hostOrdered = isHostOrdered(file);
  for (size_t k = 0; k < count; ++k) {
    std::uint16_t unit;
    std::memcpy(&unit, words + 2 * k, 2);
    if (!hostOrdered) reverseBytes(&unit, 2);
    text[k] = unit;
  }
}

// Reads the length that stands before a text; -1 if there is none or it is below 0.
int readLength(FILE* file) {
  int length = -1;
  return BF_fread_int(file, &length, 1) == 0 && length >= 0 ? length : -1;
}

// Skips `bytes` bytes, or what there is of them.
void skip(FILE* file, size_t bytes) {
  char waste[4096];
  while (bytes > 0) {
    const size_t now = std::min(bytes, sizeof waste);
    if (CBF_fread64(waste, 1, now, file) != now) return;
    bytes -= now;
  }
}

constexpr size_t wideTextBytes = 1040;

// A text in units of more than 2 bytes: 260 characters of 4 bytes have room. What the room does
// not hold is passed over; the 16-bit units at the head of the room are the text.
void readWideUnits(FILE* file, size_t width, wchar_t* text, size_t length) {
  char room[wideTextBytes] = {};
  const size_t bytes = width * length;
  const size_t kept = std::min(bytes, wideTextBytes);
  if (CBF_fread64(room, 1, kept, file) == kept) skip(file, bytes - kept);
  bool ended = false;
  for (size_t k = 0; k < length; ++k) {
    std::uint16_t unit = 0;
    if (!ended && 2 * k < wideTextBytes) std::memcpy(&unit, room + 2 * k, 2);
    ended = ended || unit == 0;
    text[k] = unit;
  }
}

} // namespace

// What the disk does with the words is not looked at: callers test their fflush.
int BF_fwrite_str(FILE* file, const char* text) {
  if (!file || !text || std::strlen(text) > INT_MAX) return traced();
  const auto length = static_cast<int>(std::strlen(text));
  BF_fwrite_int(file, &length, 1);
  if (length > 0) BF_fwrite_char(file, text, length);
  return 0;
}

int BF_fwrite_tstr(FILE* file, const wchar_t* text) {
  if (!file || !text || numberOfUnits(text) > INT_MAX) return traced();
  const auto length = static_cast<int>(numberOfUnits(text));
  BF_fwrite_int(file, &length, 1);
  UnitsOf units(text);
  wchar_t stage[stageElements];
  for (int left = length; left > 0;) {
    int filled = 0;
    while (filled < static_cast<int>(stageElements) && units.next(stage[filled]))
      ++filled;
    BF_fwrite_tchar(file, stage, filled);
    left -= filled;
  }
  return 0;
}

int BF_fread_str(FILE* file, char** out) {
  if (!file || !out) return traced();
  *out = nullptr;
  const int length = readLength(file);
  if (length <= 0) return length;
  *out = readBytes(file, static_cast<size_t>(length), 1).release();
  return *out ? 0 : -1;
}

int BF_fread_tstr(FILE* file, wchar_t** out) {
  if (!file || !out) return traced();
  *out = nullptr;
  const int length = readLength(file);
  if (length <= 0) return length;
  const auto count = static_cast<size_t>(length);
  const Block words = readBytes(file, 2 * count, 0);
  if (!words) return -1;
  Block text = zeroed((count + 1) * sizeof(wchar_t));
  if (!text) return -1;
  const auto wide = reinterpret_cast<wchar_t*>(text.release());
  spreadUnits(file, words.get(), count, wide);
  joinPairs(wide);
  *out = wide;
  return 0;
}

int BF_fwrite_multiplatform_char(FILE* file, const wchar_t* text, int length) {
  if (!file || !text || length < 1) return traced();
  const int width = 2;
  if (BF_fwrite_int(file, &width, 1) != 0) return -1;
  return BF_fwrite_tchar(file, text, length);
}

int BF_fread_multiplatform_char(FILE* file, wchar_t* text, int length) {
  if (!file || !text || length < 1) return traced();
  int width = 0;
  if (BF_fread_int(file, &width, 1) != 0) return -1;
  if (width < 1) return 0;
  if (width <= 2) return BF_fread_tchar(file, text, length);
  readWideUnits(file, static_cast<size_t>(width), text, static_cast<size_t>(length));
  return 0;
}
