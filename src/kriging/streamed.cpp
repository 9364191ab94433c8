#include "kriging/streamed.h"

#include <algorithm>
#include <cstring>

namespace Zarel {

int writeText(FILE* stream, char const* text) {
  int const length = static_cast<int>(std::strlen(text));
  if (writeInt(stream, length) != 0) return -1;
  return length == 0 ? 0 : BF_fwrite_char(stream, text, length);
}

int skipText(FILE* stream) {
  int left = 0;
  if (readInt(stream, left) != 0 || left < 0) return -1;
  long long const held = bytesLeft(stream);
  if (held >= 0 && left > held) return -1;
  char piece[256];
  for (int count = 0; left > 0; left -= count) {
    count = std::min<int>(left, sizeof piece);
    if (BF_fread_char(stream, piece, count) != 0) return -1;
  }
  return 0;
}

int settle(FILE* stream) {
  return std::fflush(stream) == 0 && std::ferror(stream) == 0 ? 0 : -1;
}

long long bytesLeft(FILE* stream) {
  long long const here = CBF_ftell64(stream);
  if (here < 0 || CBF_fseek64(stream, 0, SEEK_END) != 0) return -1;
  long long const end = CBF_ftell64(stream);
  return CBF_fseek64(stream, here, SEEK_SET) != 0 ? -1 : std::max(end - here, 0LL);
}

} // namespace Zarel
