// Vector sets: the list of vector objects and the block of a set in core.
#include <zarel/C_vstruct.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>

#include <zarel/zarelmem.h>

#include "containers/blocks.h"
#include "vectorset/instantiate.h"
#include "vectorset/steps.h"

namespace Zarel {

namespace {

/** The bytes of a block, or more than any allocator gives. */
template <class T>
unsigned __int64 blockBytes(int vectors, int length) {
  unsigned __int64 bytes = 0;
  if (__builtin_mul_overflow(static_cast<unsigned __int64>(vectors) *
                                 static_cast<unsigned __int64>(length),
                             sizeof(T), &bytes))
    return ULLONG_MAX;
  return bytes;
}

} // namespace

template <class T>
void C_VSTRUCT<T>::_AllocateList() {
  ZAREL_STEP("_AllocateList");
  reserveList(this->columns_);
  withMemory([&] { flags_.Resize(this->columns_); });
  _AllocateBase(blockBytes<T>(this->columns_, this->rows_));
  growList(this->columns_);
  if (coreMode_ == 1) attachAll(base_, strideBytes(), this->columns_);
}

template <class T>
void C_VSTRUCT<T>::_AllocateBase(unsigned __int64 bytes) {
  if (coreMode_ != 1 || bytes == 0) return;
  ZAREL_STEP("_AllocateBase");
  if (bytes > PTRDIFF_MAX) fail(NoMemory);
  base_ = static_cast<T*>(zarelmem_calloc(bytes, 1, "C_VSTRUCT", 1, __FILE__, __LINE__));
  if (base_ == nullptr) fail(NoMemory);
}

template <class T>
void C_VSTRUCT<T>::_ReallocateBase(unsigned __int64 bytes, char const* name, char const* file,
                                   int line) {
  if (coreMode_ != 1 || bytes == 0) return;
  ZAREL_STEP("_ReallocateBase");
  if (bytes > PTRDIFF_MAX) fail(NoMemory);
  void* block = zarelmem_realloc(base_, bytes, name, 1, file, line);
  if (block == nullptr) fail(NoMemory);
  base_ = static_cast<T*>(block);
}

/** Makes room for `n` vectors; new entries are null, and a longer list stays as it is. */
template <class T>
void C_VSTRUCT<T>::reserveList(int n) {
  if (n <= listed_) return;
  const std::size_t bytes = static_cast<std::size_t>(n) * sizeof(*list_);
  void* list = zarelmem_realloc(list_, bytes, "C_VSTRUCT", 1, __FILE__, __LINE__);
  if (list == nullptr) fail(NoMemory);
  list_ = static_cast<C_Vec<T, int>**>(list);
  std::fill(list_ + listed_, list_ + n, nullptr);
  listed_ = n;
}

/** Fills the empty places of the list up to `n`. */
template <class T>
void C_VSTRUCT<T>::growList(int n) {
  for (int j = 0; j < n; ++j) {
    if (list_[j] == nullptr) list_[j] = withMemory([&] { return newVector(); });
    flags_[j] = mapped() ? 0 : 1;
  }
}

template <class T>
void C_VSTRUCT<T>::attachAll(T* first, unsigned __int64 stride, int count) {
  char* at = reinterpret_cast<char*>(first);
  for (int j = 0; j < count; ++j)
    list_[j]->Attach(this->rows_, reinterpret_cast<T*>(at == nullptr ? at : at + j * stride));
}

template <class T>
void C_VSTRUCT<T>::_DeallocateList() {
  ZAREL_STEP("_DeallocateList");
  try {
    for (int j = 0; j < listed_; ++j)
      delete list_[j];
    zarelmem_free(list_, __FILE__, __LINE__);
    list_ = nullptr;
    listed_ = 0;
    flags_.Release();
    work_.Release();
    if (coreMode_ == 1 && memOwner_) zarelmem_free(base_, __FILE__, __LINE__);
    base_ = nullptr;
  } catch (...) {
    fail(ListNotReleased);
  }
}

/** The last resort of the destructor: nothing is left behind that memory holds. */
template <class T>
void C_VSTRUCT<T>::abandon() noexcept {
  const auto tryTo = [](auto step) noexcept {
    try {
      step();
    } catch (...) { // there is nobody left to tell
    }
  };
  tryTo([&] { _CloseDataFile(false); });
  tryTo([&] {
    if (!fileResident()) _RemoveDataFile(false);
  });
  tryTo([&] { _DeallocateList(); });
  forgetBlocks();
}

// Resizing.

template <class T>
void C_VSTRUCT<T>::_ResizeIncore(int n, char const* name, char const* file, int line) {
  ZAREL_STEP("_ResizeIncore");
  _ResizeList(n, name, file, line);
}

/** The places for all vectors are taken first, so that a failure leaves the set as it was. */
template <class T>
void C_VSTRUCT<T>::_ResizeList(int n, char const* name, char const* file, int line) {
  ZAREL_STEP("_ResizeList");
  const int kept = std::min(n, this->columns_);
  reserveList(n);
  withMemory([&] { flags_.Resize(std::max(n, this->columns_)); });
  _ReallocateBase(blockBytes<T>(n, this->rows_), name, file, line);
  if (coreMode_ == 1) attachAll(base_, strideBytes(), kept);
  growList(n);
  for (int j = n; j < this->columns_; ++j) {
    delete list_[j];
    list_[j] = nullptr;
  }
  flags_.Resize(n);
  this->columns_ = n;
  if (coreMode_ == 1) {
    attachAll(base_, strideBytes(), n);
    for (int j = kept; j < n; ++j)
      list_[j]->Zero(0, -1);
  }
}

/**
 * The file comes first: a list that gets shorter cannot fail, so that a failure leaves the set as
 * it was. What stands behind the vectors of an adopted file is cut off before the file grows, or
 * new vectors would show it. Views keep the size that the file had, so they go before all.
 */
template <class T>
void C_VSTRUCT<T>::_ResizeOutofcore(int n, char const* name, char const* file, int line) {
  ZAREL_STEP("_ResizeOutofcore");
  UnmapAllBlocks(nullptr);
  releaseFileHandle();
  if (n > this->columns_) _setDataFileSize(dataFileSize(this->columns_));
  _setDataFileSize(dataFileSize(n));
  _ResizeList(n, name, file, line);
}

} // namespace Zarel

ZAREL_INSTANTIATE_VECTORSETS
