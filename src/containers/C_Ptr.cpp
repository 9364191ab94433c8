#include <zarel/C_Ptr.h>

#include "containers/blas.h"
#include "containers/blocks.h"
#include "containers/scalars.h"
#include "runtime/fail.h"

using Zarel::fail;

template <class T, class I>
C_Ptr<T, I>::~C_Ptr() = default;

template <class T, class I>
C_Ptr<T, I>* C_Ptr<T, I>::Lnk(I) {
  return nullptr;
}
template <class T, class I>
int C_Ptr<T, I>::Load() {
  fail(2871);
}
template <class T, class I>
int C_Ptr<T, I>::UnLoad() {
  fail(2871);
}
template <class T, class I>
int C_Ptr<T, I>::Resize(I) {
  fail(2871);
}
template <class T, class I>
T* C_Ptr<T, I>::Adr(I) {
  return nullptr;
}
template <class T, class I>
int C_Ptr<T, I>::SetVal(I, T) {
  return 0;
}
template <class T, class I>
T& C_Ptr<T, I>::operator[](I) {
  fail(2871);
}
template <class T, class I>
T* C_Ptr<T, I>::Extract(I, I, T*) {
  fail(2871);
}
template <class T, class I>
int C_Ptr<T, I>::Zero(I, I) {
  fail(2871);
}
template <class T, class I>
int C_Ptr<T, I>::Init(T, I, I) {
  fail(2871);
}

template <class T, class I>
int C_Ptr<T, I>::Nrm2(I, I count, T& result) {
  result = T(0);
  const bool resident = InCore() != 0;
  Zarel::WorkBlock<T> work(resident ? nullptr : Zarel::newValues<T>(Zarel::kBlockSize));
  Zarel::Wide<T> sum(0);
  Zarel::forEachBlock(count, [&](long long first, long long length) {
    T* block = Extract(static_cast<I>(first), static_cast<I>(length), work.get());
    if (!resident) work.replace(block);
    sum += Zarel::Blas::sumOfSquares(length, block);
  });
  result = Zarel::fromReal<T>(std::sqrt(std::abs(sum)));
  return 0;
}

template <class T, class I>
C_PtrInCore<T, I>::C_PtrInCore(I size, T value) {
  if (size < 1) return;
  data_ = Zarel::newValues<T>(size);
  if (value != T(0)) std::fill_n(data_, size, value);
}

template <class T, class I>
C_PtrInCore<T, I>::C_PtrInCore(T* data) : owner_(0), data_(data) {}

template <class T, class I>
C_PtrInCore<T, I>::~C_PtrInCore() {
  Release();
}

template <class T, class I>
void C_PtrInCore<T, I>::freeOwned() {
  if (owner_ != 0) Zarel::freeValues(data_);
}

template <class T, class I>
C_PtrInCore<T, I>* C_PtrInCore<T, I>::Lnk(I first) {
  return new C_PtrInCore(data_ + first);
}

template <class T, class I>
int C_PtrInCore<T, I>::Copy(C_Ptr<T, I>& other, I count) {
  if (&other == this) return 0;
  Release();
  Resize(count);
  Zarel::Blas::copy(count, other.Adr(0), data_);
  return 0;
}

template <class T, class I>
int C_PtrInCore<T, I>::Resize(I n) {
  if (n == 0) {
    freeOwned();
    data_ = nullptr;
    return 0;
  }
  if (owner_ == 0 && data_ != nullptr) fail(2870);
  data_ = data_ == nullptr ? Zarel::newValues<T>(n) : Zarel::resizedValues(data_, n);
  return 0;
}

template <class T, class I>
T* C_PtrInCore<T, I>::Extract(I first, I count, T* buffer) {
  if (buffer == nullptr) return data_ + first;
  if (count < 1) return buffer;
  buffer = Zarel::resizedValues(buffer, count);
  Zarel::Blas::copy(count, data_ + first, buffer);
  return buffer;
}

template <class T, class I>
int C_PtrInCore<T, I>::Zero(I first, I count) {
  if (count >= 1) std::fill_n(data_ + first, count, T(0));
  return 0;
}

template <class T, class I>
int C_PtrInCore<T, I>::Init(T value, I first, I count) {
  if (count >= 1) std::fill_n(data_ + first, count, value);
  return 0;
}

template <class T, class I>
T C_PtrInCore<T, I>::Sum(I first, I count) {
  T sum(0);
  for (I i = 0; i < count; ++i)
    sum = Zarel::plus(sum, data_[first + i]);
  return sum;
}

template <class T, class I>
int C_PtrInCore<T, I>::SMlt(T alpha, I first, I count) {
  if (alpha == T(0)) return Zero(first, count);
  Zarel::Blas::scal(count, alpha, data_ + first);
  return 0;
}

template <class T, class I>
int C_PtrInCore<T, I>::Nrm2(I first, I count, T& result) {
  result = Zarel::fromReal<T>(std::sqrt(Zarel::Blas::sumOfSquares(count, data_ + first)));
  return 0;
}

template <class T, class I>
int C_PtrInCore<T, I>::Release() {
  freeOwned();
  data_ = nullptr;
  owner_ = 1;
  return 0;
}

template <class T, class I>
int C_PtrInCore<T, I>::Attach(T* data) {
  freeOwned();
  owner_ = 0;
  data_ = data;
  return 0;
}

#define ZAREL_INSTANTIATE(T, I)                                                                    \
  template class C_Ptr<T, I>;                                                                      \
  template class C_PtrInCore<T, I>;
ZAREL_STORAGE_SCALARS(ZAREL_INSTANTIATE)
