#include <zarel/C_PtrOnFile.h>

#include <algorithm>
#include <memory>
#include <utility>

#include <zarel/bf.h>

#include "containers/C_VecPi.tpp"
#include "containers/blas.h"
#include "containers/blocks.h"
#include "containers/files.h"
#include "containers/scalars.h"
#include "runtime/fail.h"

using Zarel::fail;

namespace {

/** Below this modulus a factor counts as 0. */
constexpr double kNoFactor = 1e-14;

/** Values of a fill that go out at once. */
constexpr int kFillSize = 512;

/** Where the stream stands for who uses its buffer, and from now on its descriptor too. */
__int64 settledPosition(FILE* stream) {
  if (stream == nullptr || std::fflush(stream) != 0) fail(34);
  const __int64 position = CBF_ftell64(stream);
  if (position < 0) fail(34);
  return position;
}

/** Calls work(first, length) for the blocks of a range, none of them longer than `size`. */
template <class I, class Work>
void forEachPart(I first, I count, I size, Work work) {
  Zarel::forEachBlock(count, size, [&](long long at, long long length) {
    work(static_cast<I>(first + at), static_cast<I>(length));
  });
}

} // namespace

// The stream of values.

template <class T>
C_File<T>::~C_File() = default;

template <class T>
C_FilePtr<T>::C_FilePtr(FILE* stream) : stream_(stream), base_(settledPosition(stream)) {}

template <class T>
C_FilePtr<T>* C_FilePtr<T>::Lnk(int offset) {
  std::unique_ptr<C_FilePtr> link(new C_FilePtr(stream_, base_));
  if (offset != 0) {
    Seek(offset, 0);
    const __int64 position = CBF_ftell64(stream_);
    if (position < 0) fail(34);
    base_ = position;
  }
  return link.release();
}

template <class T>
int C_FilePtr<T>::Seek(int offset, int mode) {
  if (stream_ == nullptr) return -1;
  const __int64 bytes = static_cast<__int64>(sizeof(T)) * offset;
  if (mode == 0) {
    __int64 place = 0; // one call where restoring the base and moving on would be two
    if (__builtin_add_overflow(base_, bytes, &place)) fail(20);
    if (CBF_fseek64(stream_, place, SEEK_SET) != 0) fail(20);
  } else if (bytes != 0 && CBF_fseek64(stream_, bytes, SEEK_CUR) != 0) {
    fail(20);
  }
  return 0;
}

template <class T>
int C_FilePtr<T>::Read(T* values, int count) {
  if (T_BF_read<T>(stream_, values, count, false) != 0) fail(21);
  return 0;
}

template <class T>
int C_FilePtr<T>::Write(T* values, int count) {
  if (T_BF_write<T>(stream_, values, count, false) != 0) fail(22);
  return 0;
}

// Attaching and releasing.

template <class T, class I>
C_PtrOnFile<T, I>::C_PtrOnFile(T*) {
  fail(2871);
}

template <class T, class I>
C_PtrOnFile<T, I>::~C_PtrOnFile() {
  Release();
}

template <class T, class I>
int C_PtrOnFile<T, I>::Release() {
  delete std::exchange(file_, nullptr);
  dropBuffer();
  count_ = 0;
  return 0;
}

template <class T, class I>
int C_PtrOnFile<T, I>::Attach(T*) {
  fail(2871);
}

template <class T, class I>
int C_PtrOnFile<T, I>::Attach(FILE* stream, I count, I bufferSize) {
  auto file = std::make_unique<C_FilePtr<T>>(stream);
  delete std::exchange(file_, file.release());
  count_ = count;
  return InitBuff(bufferSize);
}

template <class T, class I>
int C_PtrOnFile<T, I>::InitBuff(I size) {
  dropBuffer();
  if (file_ == nullptr) fail(12);
  const I wanted = std::max<I>(0, std::min(size, count_));
  if (!makeRoom(std::max<I>(wanted, blockRoom()))) return 0;
  bufferSize_ = wanted;
  if (wanted > 0) file_->Read(buffer_, wanted);
  setWindow(0, wanted);
  if (count_ > wanted) file_->Seek(count_ - wanted, 1);
  return 0;
}

template <class T, class I>
C_PtrOnFile<T, I>* C_PtrOnFile<T, I>::Lnk(I first) {
  if (file_ == nullptr) fail(12);
  if (first < 0 || first > std::max<I>(count_, 0)) fail(21);
  auto rest = std::make_unique<C_PtrOnFile>(count_ - first);
  // The position that Lnk was asked of moves on: that one is the rest's, and the new one stays.
  rest->file_ = std::exchange(file_, file_->Lnk(first));
  rest->file_->Seek(0, 0);
  rest->InitBuff(bufferSize_);
  return rest.release();
}

template <class T, class I>
int C_PtrOnFile<T, I>::Copy(C_Ptr<T, I>& other, I count) {
  auto* source = dynamic_cast<C_PtrOnFile*>(&other);
  if (source == nullptr) fail(2871);
  if (source == this) return 0;
  Release();
  count_ = count;
  if (source->file_ == nullptr) return 0;
  file_ = source->file_->Lnk(0);
  file_->Seek(0, 0);
  return InitBuff(std::min(count, source->bufferSize_));
}

// The buffer and its window.

template <class T, class I>
void C_PtrOnFile<T, I>::dropBuffer() {
  Zarel::freeValues(std::exchange(buffer_, nullptr));
  room_ = 0;
  bufferSize_ = 0;
  setWindow(0, 0);
}

/** Sizes the buffer for `count` values if it is shorter. False, and nothing changed, without
 * memory. */
template <class T, class I>
bool C_PtrOnFile<T, I>::makeRoom(I count) {
  if (count <= room_) return true;
  T* fresh = static_cast<T*>(
      zarelmem_calloc(static_cast<std::size_t>(count), sizeof(T), "window", 1, __FILE__, __LINE__));
  if (fresh == nullptr) return false;
  Zarel::freeValues(std::exchange(buffer_, fresh));
  room_ = count;
  return true;
}

/** What the block-wise paths of the vectors put into the buffer at most. */
template <class T, class I>
I C_PtrOnFile<T, I>::blockRoom() const {
  return std::min<I>(count_, Zarel::kBlockSize);
}

/** A buffer for a storage that was left without one for lack of memory. */
template <class T, class I>
T* C_PtrOnFile<T, I>::lateBuffer() {
  if (file_ != nullptr && !makeRoom(blockRoom())) fail(1001);
  return buffer_;
}

template <class T, class I>
void C_PtrOnFile<T, I>::setWindow(I first, I count) {
  windowStart_ = first;
  windowLength_ = static_cast<Place>(count);
}

/** The length of a full window; single values where there is no buffer. */
template <class T, class I>
I C_PtrOnFile<T, I>::step() const {
  return std::max<I>(bufferSize_, 1);
}

/** Moves the stream to a range of values; throws `code` if the vector does not hold it. */
template <class T, class I>
void C_PtrOnFile<T, I>::seekTo(I first, I count, int code) {
  if (file_ == nullptr) fail(12);
  if (first < 0 || first > count_ || count > count_ - first) fail(code);
  file_->Seek(first, 0);
}

/** Reads a range, at least one value long, as the window. */
template <class T, class I>
T* C_PtrOnFile<T, I>::readWindow(I first, I count) {
  seekTo(first, count, 21);
  setWindow(0, 0); // a failing read leaves no window
  if (!makeRoom(count)) fail(1001);
  file_->Read(buffer_, count);
  setWindow(first, count);
  return buffer_;
}

template <class T, class I>
T* C_PtrOnFile<T, I>::moveWindow(I i) {
  if (i < 0 || i >= count_) fail(21);
  return readWindow(i, std::min<I>(step(), count_ - i));
}

template <class T, class I>
T* C_PtrOnFile<T, I>::Extract(I first, I count, T* buffer) {
  if (buffer != nullptr && count < 1) return buffer;
  if (buffer != nullptr && buffer == buffer_) return readWindow(first, count);
  Zarel::WorkBlock<T> fresh(buffer == nullptr ? Zarel::newValues<T>(count) : nullptr);
  T* target = buffer == nullptr ? fresh.get() : buffer;
  if (count > 0) {
    seekTo(first, count, 21);
    file_->Read(target, count);
  }
  fresh.replace(nullptr);
  return target;
}

// Values.

template <class T, class I>
int C_PtrOnFile<T, I>::SetVal(I i, T value) {
  seekTo(i, 1, 22);
  return file_->Write(&value, 1);
}

template <class T, class I>
int C_PtrOnFile<T, I>::Store(I first, I count, T* values) {
  if (count < 1) return 0;
  setWindow(0, 0);
  seekTo(first, count, 22);
  return file_->Write(values, static_cast<int>(count));
}

template <class T, class I>
void C_PtrOnFile<T, I>::fill(T value, I first, I count) {
  T values[kFillSize];
  std::fill_n(values, std::min<I>(count, kFillSize), value);
  seekTo(first, count, 22);
  forEachPart<I>(first, count, kFillSize,
                 [&](I, I length) { file_->Write(values, static_cast<int>(length)); });
}

template <class T, class I>
int C_PtrOnFile<T, I>::Init(T value, I first, I count) {
  if (count > 0) fill(value, first, count);
  return 0;
}

template <class T, class I>
int C_PtrOnFile<T, I>::Zero(I first, I count) {
  return Init(T(0), first, count);
}

template <class T, class I>
T C_PtrOnFile<T, I>::Sum(I first, I count) {
  T sum(0);
  forEachPart(first, count, step(), [&](I at, I length) {
    T* block = readWindow(at, length);
    for (I i = 0; i < length; ++i)
      sum = Zarel::plus(sum, block[i]);
  });
  return sum;
}

template <class T, class I>
int C_PtrOnFile<T, I>::SMlt(T alpha, I first, I count) {
  if (Zarel::modulus(alpha) < kNoFactor) return Zero(first, count);
  forEachPart(first, count, step(), [&](I at, I length) {
    T* block = readWindow(at, length);
    Zarel::Blas::scal(length, alpha, block);
    Store(at, length, block);
    setWindow(at, length); // a failing write leaves no window, as buffer and file differ
  });
  return 0;
}

#define ZAREL_INSTANTIATE(T)                                                                       \
  template class C_File<T>;                                                                        \
  template class C_FilePtr<T>;                                                                     \
  template class C_PtrOnFile<T, int>;                                                              \
  template class C_VecPi<T, int, C_PtrOnFile<T, int>>;
ZAREL_MATRIX_SCALARS(ZAREL_INSTANTIATE)
