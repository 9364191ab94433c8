// Vector sets: copies between sets, and of chosen rows.
#include <zarel/C_vstruct.h>

#include <algorithm>

#include <zarel/lm_bitvec.h>

#include "vectorset/instantiate.h"
#include "vectorset/steps.h"
#include "vectorset/walk.h"

namespace Zarel {

/** Copies one vector of any set. The one range of a set that is its own source holds either. */
template <class T>
void C_VSTRUCT<T>::copyVector(int to, C_VSTRUCT& source, int from) {
  if (&source == this) {
    Vector copy;
    withVector(from, [&] { copyTo(copy, *(*this)[from]); });
    withVector(to, [&] { store(to, copy.Adr(0)); });
    return;
  }
  const auto index = static_cast<unsigned int>(from);
  const unsigned int id = source.MapBlock(index, index);
  withVector(to, [&] { store(to, source[from]->Adr(0)); });
  source.UnmapBlock(id, nullptr);
}

template <class T>
void C_VSTRUCT<T>::copyAll(C_VSTRUCT& source, int at) {
  for (int j = 0; j < source.columns_; ++j)
    copyVector(at + j, source, j);
}

template <class T>
int C_VSTRUCT<T>::Initialize(C_VSTRUCT const& other) {
  ZAREL_STEP("Initialize");
  if (&other == this) return 0;
  other.requireValid();
  if (!valid_ || this->rows_ != other.rows_) {
    const int mode = coreMode_;
    Release(true);
    Allocate(mode, other.columns_, other.rows_, nullptr);
  }
  Resize(other.columns_, nullptr);
  copyAll(const_cast<C_VSTRUCT&>(other), 0);
  return 0;
}

template <class T>
int C_VSTRUCT<T>::Initialize(C_VSTRUCT const& other, int mode) {
  ZAREL_STEP("Initialize");
  if (&other == this) fail(OutOfRange);
  other.requireValid();
  Release(true);
  Allocate(mode, other.columns_, other.rows_, nullptr);
  copyAll(const_cast<C_VSTRUCT&>(other), 0);
  return 0;
}

template <class T>
int C_VSTRUCT<T>::Copy(C_VSTRUCT& source, int first, int last) {
  ZAREL_STEP("Copy");
  source.requireValid();
  if (last == -1) last = source.columns_;
  if (first < 0 || last < first || last > source.columns_) fail(OutOfRange);
  if (&source == this && first == 0 && last == this->columns_) return 0;
  if (&source == this) fail(OutOfRange);
  const int count = last - first;
  if (!valid_ || this->rows_ != source.rows_) {
    Release(true);
    Allocate(1, count, source.rows_, nullptr);
  }
  Resize(count, nullptr);
  if (coreMode_ == 1 && source.coreMode_ == 1) {
    // One flat copy from the start of the block; hosts rely on it for sets of vectors that touch.
    const std::ptrdiff_t values = static_cast<std::ptrdiff_t>(count) * this->rows_;
    if (values > 0) std::copy_n(source.base_, values, base_);
    return 0;
  }
  for (int j = 0; j < count; ++j)
    copyVector(j, source, first + j);
  return 0;
}

template <class T>
C_VSTRUCT<T>& C_VSTRUCT<T>::operator=(const C_VSTRUCT& source) {
  if (this != &source) Copy(const_cast<C_VSTRUCT&>(source), 0, -1);
  return *this;
}

template <class T>
void C_VSTRUCT<T>::Merge(C_VSTRUCT& other) {
  ZAREL_STEP("Merge");
  other.requireValid();
  const int old = this->columns_;
  const int added = other.columns_;
  if (this->rows_ != other.rows_ || added > INT_MAX - old) fail(OutOfRange);
  Resize(old + added, "unknown", __FILE__, __LINE__, nullptr);
  for (int j = 0; j < added; ++j)
    copyVector(old + j, other, j);
}

template <class T>
int C_VSTRUCT<T>::Extract(C_MatMGe<T>& M, BVEC* mask, int first, int last) {
  ZAREL_STEP("Extract");
  requireValid();
  if (last == -1) last = this->columns_;
  if (mask == nullptr || mask->dim > this->rows_) fail(OutOfRange);
  if (first < 0 || last < first || last > this->columns_) fail(OutOfRange);
  const int chosen = LM_bv_nb_on(mask);
  // The columns go where they stand in the set: those from `first` on need their place before.
  const auto places = [chosen](int columns) { return static_cast<__int64>(chosen) * columns; };
  const __int64 room = std::max<__int64>(M.NbVal(), places(last - first));
  const bool fits = places(last) <= room;
  if (first < last && !fits) fail(OutOfRange);
  resize(M, chosen, last - first);
  for (int j = first; j < last; ++j)
    withVector(j, [&] {
      T const* const values = (*this)[j]->Adr(0);
      T* out = M.Adr() + static_cast<std::ptrdiff_t>(j) * chosen;
      LM_bv_initialize(mask);
      for (int i = LM_bv_on_suivant(mask); i != -1; i = LM_bv_on_suivant(mask))
        *out++ = values[i];
    });
  UnmapAllBlocks(nullptr);
  return 0;
}

} // namespace Zarel

ZAREL_INSTANTIATE_VECTORSETS
