// How the operations of a set walk over its vectors.
#ifndef ZAREL_VECTORSET_WALK_H
#define ZAREL_VECTORSET_WALK_H

#include <algorithm>
#include <climits>

#include <zarel/C_vstruct.h>

#include "vectorset/steps.h"

namespace Zarel {

/** Bytes of vectors that a walk over a mapped set brings into memory at a time. */
constexpr unsigned __int64 rangeBytes = 64ULL << 20;

/** Calls work() while vector `j` can be used. */
template <class T>
template <class Work>
void C_VSTRUCT<T>::withVector(int j, Work work) {
  const auto index = static_cast<unsigned int>(j);
  const unsigned int id = MapBlock(index, index);
  work();
  UnmapBlock(id, nullptr);
}

/**
 * Calls visit(data, lead, j, count) for ranges of vectors, each a matrix by columns that starts
 * with vector `j`, in order. A range that the caller has mapped stays if it holds all of them.
 */
template <class T>
template <class Visit>
void C_VSTRUCT<T>::forEachRange(int first, int last, Visit visit) {
  if (first > last || this->rows_ == 0) return;
  const bool stays = isMapped(static_cast<unsigned int>(first), static_cast<unsigned int>(last));
  const unsigned __int64 stride = strideBytes();
  const bool regular =
      !fileResident() && aligned() && stride % sizeof(T) == 0 && stride / sizeof(T) <= INT_MAX;
  const int lead = regular ? static_cast<int>(stride / sizeof(T)) : this->rows_;
  unsigned __int64 most = 1;
  if (regular) most = stays ? INT_MAX : std::max(rangeBytes / stride, 1ULL);
  for (int j = first; j <= last;) {
    const int count = static_cast<int>(std::min<unsigned __int64>(most, last - j + 1));
    if (!stays) {
      MapBlock(static_cast<unsigned int>(j), static_cast<unsigned int>(j + count - 1));
      readMapped();
    }
    visit((*this)[j]->Adr(0), lead, j, count);
    j += count;
  }
  if (!stays) UnmapAllBlocks(nullptr);
}

} // namespace Zarel

#endif
