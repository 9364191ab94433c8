// 64-bit counts, cut into pieces that an int can tell.
#ifndef ZAREL_BINARY_CHUNKS_H
#define ZAREL_BINARY_CHUNKS_H

#include <algorithm>

namespace Zarel {

struct Chunks {
  long long number; // of chunks, at least 1
  long long limit;  // elements of all chunks but the last
  long long last;   // elements of the last chunk

  int size(long long k) const { return static_cast<int>(k + 1 < number ? limit : last); }
};

constexpr int chunkLimit = 0x7FFFFFFF;

// A count that is not above the limit is one chunk; one below 0 stays a bad count.
inline Chunks F_Chunks(long long count, int limit = chunkLimit) {
  if (count <= limit) return {1, limit, std::max(count, -1LL)};
  const long long number = (count - 1) / limit + 1;
  return {number, limit, count - (number - 1) * limit};
}

} // namespace Zarel

#endif
