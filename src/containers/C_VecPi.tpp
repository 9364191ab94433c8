// The bodies of C_VecPi, for whoever instantiates it over a storage policy.
#ifndef ZAREL_CONTAINERS_C_VECPI_TPP
#define ZAREL_CONTAINERS_C_VECPI_TPP

#include <memory>
#include <type_traits>
#include <typeinfo>

#include <zarel/C_VecPi.h>

#include "containers/blas.h"
#include "containers/files.h"
#include "containers/scalars.h"
#include "runtime/fail.h"

template <class T, class I, class P>
C_VecPi<T, I, P>::C_VecPi(I n) : C_Vec<T, I>(n), capacity_(n), storage_(n) {}

template <class T, class I, class P>
C_VecPi<T, I, P>::C_VecPi(I n, T value) : C_VecPi(n) {
  if (n >= 1 && value != T(0)) storage_.Init(value, 0, n);
}

template <class T, class I, class P>
C_VecPi<T, I, P>::C_VecPi(I n, T* data) : C_Vec<T, I>(n), storage_(data) {}

template <class T, class I, class P>
C_VecPi<T, I, P>::C_VecPi(const C_VecPi& other) : C_VecPi() {
  Copy(other);
}

template <class T, class I, class P>
C_VecPi<T, I, P>& C_VecPi<T, I, P>::operator=(const C_VecPi& other) {
  if (this != &other) Copy(other);
  return *this;
}

template <class T, class I, class P>
C_VecPi<T, I, P>::~C_VecPi() {
  storage_.Release();
}

template <class T, class I, class P>
char* C_VecPi<T, I, P>::AffType() const {
  static char name[] = "C_VecPi Vector";
  return name;
}

// Size.

template <class T, class I, class P>
int C_VecPi<T, I, P>::Resize(I n) {
  if (n < 0) Zarel::fail(2);
  if (n == this->dim_) return 0;
  if (n == 0 || (n > this->dim_ && n > capacity_)) {
    storage_.Resize(n);
    capacity_ = n;
  }
  this->dim_ = n;
  return 0;
}

template <class T, class I, class P>
int C_VecPi<T, I, P>::Release() {
  storage_.Resize(0);
  this->dim_ = 0;
  capacity_ = 0;
  return 0;
}

template <class T, class I, class P>
int C_VecPi<T, I, P>::Attach(I n, T* data) {
  storage_.Attach(data);
  setAttached(n);
  return 0;
}

template <class T, class I, class P>
void C_VecPi<T, I, P>::setAttached(I n) {
  this->dim_ = n;
  capacity_ = 0;
}

template <class T, class I, class P>
C_Vec<T, I>* C_VecPi<T, I, P>::Lnk(I first) {
  if (!startsInRange(first)) Zarel::fail(2872);
  const I count = this->dim_ - first;
  if (InCore()) return new C_VecPi(count, Adr(0) + first);
  const std::unique_ptr<C_Ptr<T, I>> rest(storage_.Lnk(first));
  if (rest == nullptr) Zarel::fail(2871);
  if (dynamic_cast<C_PtrInCore<T, I>*>(rest.get()) != nullptr) {
    auto copy = std::make_unique<C_VecPi<T, I, C_PtrInCore<T, I>>>(count);
    copy->Storage().Copy(*rest, count);
    return copy.release();
  }
  auto copy = std::make_unique<C_VecPi>(count);
  copy->storage_.Copy(*rest, count);
  return copy.release();
}

template <class T, class I, class P>
int C_VecPi<T, I, P>::Copy(C_Vec<T, I>& source) {
  Resize(source.Dim());
  if (!source.Full()) {
    Zero(0, -1);
    T value(0);
    for (int i = source.FirstVal(value); i != -1; i = source.NextVal(value))
      storage_[static_cast<I>(i)] = value;
    return 0;
  }
  if (InCore() && source.InCore()) {
    Zarel::Blas::copy(this->dim_, source.Adr(0), Adr(0));
    return 0;
  }
  Zarel::forEachBlock(this->dim_, [&](long long first, long long length) {
    T* block = source.Extract(static_cast<I>(first), static_cast<I>(first + length - 1),
                              source.InCore() ? nullptr : source.Adr(0));
    T* target = Adr(static_cast<I>(first));
    if (target == nullptr) Zarel::fail(38);
    Zarel::Blas::copy(length, block, target);
  });
  return 0;
}

// Ranges.

template <class T, class I, class P>
I C_VecPi<T, I, P>::CompLength(I& first, I& last) {
  if (last == -1 || last >= this->dim_) last = this->dim_ - 1;
  return last < first ? 0 : last - first + 1;
}

template <class T, class I, class P>
T* C_VecPi<T, I, P>::Extract(I first, I last, T* buffer) {
  if (!startsInRange(first)) return nullptr;
  const I count = CompLength(first, last);
  return storage_.Extract(first, count, buffer);
}

template <class T, class I, class P>
int C_VecPi<T, I, P>::Init(T value, I first, I last) {
  if (!startsInRange(first)) return -1;
  const I count = CompLength(first, last);
  return storage_.Init(value, first, count);
}

template <class T, class I, class P>
int C_VecPi<T, I, P>::Zero(I first, I last) {
  if (!startsInRange(first)) return -1;
  const I count = CompLength(first, last);
  return storage_.Zero(first, count);
}

template <class T, class I, class P>
T C_VecPi<T, I, P>::Sum(I first, I last) {
  if (!startsInRange(first)) return T(0);
  const I count = CompLength(first, last);
  return storage_.Sum(first, count);
}

template <class T, class I, class P>
int C_VecPi<T, I, P>::SMlt(T alpha, I first, I last) {
  if (!startsInRange(first)) return -1;
  const I count = CompLength(first, last);
  return storage_.SMlt(alpha, first, count);
}

template <class T, class I, class P>
C_VecPi<T, I, P>& C_VecPi<T, I, P>::operator*=(T alpha) {
  storage_.SMlt(alpha, 0, this->dim_);
  return *this;
}

// Arithmetic.

/**
 * The other vector if both are of this very class and in core, else null. Both are full then, and
 * none of the questions of the general way needs to be asked.
 */
template <class T, class I, class P>
C_VecPi<T, I, P>* C_VecPi<T, I, P>::inCoreTwin(C_Vec<T, I>& other) {
  if (typeid(*this) != typeid(C_VecPi) || typeid(other) != typeid(C_VecPi)) return nullptr;
  auto* twin = static_cast<C_VecPi*>(&other);
  return storage_.InCore() && twin->storage_.InCore() ? twin : nullptr;
}

template <class T, class I, class P>
T C_VecPi<T, I, P>::operator*(C_Vec<T, I>& other) {
  C_VecPi* twin = inCoreTwin(other);
  if (twin == nullptr) return C_Vec<T, I>::operator*(other);
  if (twin->dim_ != this->dim_) Zarel::fail(2872);
  return Zarel::Blas::dot(this->dim_, storage_.Adr(0), twin->storage_.Adr(0));
}

template <class T, class I, class P>
int C_VecPi<T, I, P>::Axpy(C_Vec<T, I>& y, T alpha) {
  C_VecPi* twin = inCoreTwin(y);
  if (twin == nullptr) return C_Vec<T, I>::Axpy(y, alpha);
  if (twin->dim_ != this->dim_) Zarel::fail(2872);
  if (this->dim_ != 0) Zarel::Blas::axpy(this->dim_, alpha, storage_.Adr(0), twin->storage_.Adr(0));
  return 0;
}

// Text.

template <class T, class I, class P>
int C_VecPi<T, I, P>::Print(FILE* file) {
  if (file == nullptr) return 0;
  C_Vec<T, I>::Print(file);
  std::fputs("- Values : \n", file);
  for (I i = 0; i < this->dim_; ++i) {
    Zarel::printScalar(file, GetVal(i));
    std::fputc(i % 5 == 4 ? '\n' : ' ', file);
  }
  if (this->dim_ % 5 != 0) std::fputc('\n', file);
  return 0;
}

template <class T, class I, class P>
int C_VecPi<T, I, P>::WriteMatlab(FILE* file) {
  C_Vec<T, I>::WriteMatlab(file);
  for (I i = 0; i < this->dim_; ++i) {
    Zarel::printScalar(file, GetVal(i));
    std::fputc(' ', file);
  }
  std::fputc('\n', file);
  return 0;
}

// Files.

namespace {

/** Stores a block at once where the storage can, else value by value. */
template <class P, class T, class I>
auto storeBlock(P& storage, I first, I count, T* values)
    -> decltype(storage.Store(first, count, values)) {
  return storage.Store(first, count, values);
}
template <class P, class T, class I, class... None>
int storeBlock(P& storage, I first, I count, T* values, None...) {
  for (I i = 0; i < count; ++i)
    storage.SetVal(first + i, values[i]);
  return 0;
}

} // namespace

template <class T, class I, class P>
template <class Handle>
int C_VecPi<T, I, P>::writeTo(Handle handle) {
  if (InCore()) return C_Vec<T, I>::Write(handle);
  C_BaseVec<I>::Write(handle);
  Zarel::WorkBlock<T> work(Zarel::newValues<T>(Zarel::kBlockSize));
  Zarel::forEachBlock(this->dim_, [&](long long first, long long length) {
    Zarel::keepPosition(handle, [&] {
      work.replace(storage_.Extract(static_cast<I>(first), static_cast<I>(length), work.get()));
    });
    Zarel::writeValues(handle, work.get(), length);
  });
  return 0;
}

template <class T, class I, class P>
template <class Handle>
int C_VecPi<T, I, P>::readFrom(Handle handle) {
  Zarel::requireHandle(handle);
  const I n = Zarel::readOne<I>(handle);
  Zarel::requireHolds(handle, n, sizeof(T));
  Resize(n);
  if (InCore()) {
    Zarel::readValues(handle, Adr(0), n);
    return 0;
  }
  Zarel::WorkBlock<T> work(Zarel::newValues<T>(Zarel::kBlockSize));
  Zarel::forEachBlock(n, [&](long long first, long long length) {
    Zarel::readValues(handle, work.get(), length);
    Zarel::keepPosition(handle, [&] {
      storeBlock(storage_, static_cast<I>(first), static_cast<I>(length), work.get());
    });
  });
  return 0;
}

template <class T, class I, class P>
int C_VecPi<T, I, P>::Write(int handle) {
  return writeTo(handle);
}
template <class T, class I, class P>
int C_VecPi<T, I, P>::Write(FILE* file) {
  return writeTo(file);
}
template <class T, class I, class P>
int C_VecPi<T, I, P>::Read(int handle) {
  return Read(handle, 0);
}
template <class T, class I, class P>
int C_VecPi<T, I, P>::Read(FILE* file) {
  return Read(file, 0);
}
template <class T, class I, class P>
int C_VecPi<T, I, P>::Read(int handle, int) {
  return readFrom(handle);
}
template <class T, class I, class P>
int C_VecPi<T, I, P>::Read(FILE* file, int) {
  return readFrom(file);
}

#endif
