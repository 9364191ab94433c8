#include <zarel/C_bfd.h>

#include <zarel/bf.h>

#include "binary/chunks.h"
#include "binary/order.h"
#include "runtime/fail.h"

using namespace Zarel;

namespace {

// What the transfers do with a descriptor and with a stream, by the same names.
size_t readFrom(int fd, void* buffer, size_t width, size_t count) {
  return CBF_read64(buffer, width, count, fd);
}
size_t readFrom(FILE* file, void* buffer, size_t width, size_t count) {
  return CBF_fread64(buffer, width, count, file);
}
size_t writeTo(int fd, const void* buffer, size_t width, size_t count) {
  return CBF_write64(buffer, width, count, fd);
}
size_t writeTo(FILE* file, const void* buffer, size_t width, size_t count) {
  return CBF_fwrite64(buffer, width, count, file);
}

bool isThere(int) {
  return true;
}
bool isThere(FILE* file) {
  return file != nullptr;
}

// Descriptors are never exceptions.
bool readsReversed(int, bool bigEndian) {
  return bigEndian != hostIsBigEndian();
}
bool readsReversed(FILE* file, bool bigEndian) {
  return (bigEndian != hostIsBigEndian()) != (IsFileException(file) != 0);
}

// Not the mirror of reading on an exception stream with `bigEndian` true: written files rely on
// both rules as they are.
bool writesReversed(int, bool bigEndian) {
  return bigEndian != hostIsBigEndian();
}
bool writesReversed(FILE* file, bool bigEndian) {
  return IsFileException(file) != 0 || bigEndian != hostIsBigEndian();
}

// The words that a scalar is made of.
template <class T>
struct Word {
  using type = T;
  static constexpr size_t perElement = 1;
};
template <class R>
struct Word<std::complex<R>> {
  using type = R;
  static constexpr size_t perElement = 2;
};

// Bytes that should be reversed: an error on a descriptor, nothing on a stream.
void refuseToReverse(int) {
  fail(2871);
}
void refuseToReverse(FILE*) {}

template <class T, class Source>
int readElements(Source source, const T* target, int count, bool bigEndian) {
  if (!isThere(source) || !target || count < 1) return traced();
  using W = typename Word<T>::type;
  const size_t words = Word<T>::perElement * static_cast<size_t>(count);
  const auto buffer = const_cast<T*>(target);
  if (readFrom(source, buffer, sizeof(W), words) != words) return -1;
  if (!readsReversed(source, bigEndian)) return 0;
  if constexpr (sizeof(W) == 1)
    refuseToReverse(source);
  else
    reverseWords(buffer, sizeof(W), words);
  return 0;
}

template <class T, class Sink>
int writeElements(Sink sink, const T* buffer, int count, bool bigEndian) {
  if (!isThere(sink) || !buffer || count < 1) return traced();
  using W = typename Word<T>::type;
  const size_t words = Word<T>::perElement * static_cast<size_t>(count);
  const auto write = [sink](const void* part, size_t number) {
    return writeTo(sink, part, sizeof(W), number);
  };
  if (!writesReversed(sink, bigEndian)) return write(buffer, words) == words ? 0 : -1;
  return writeReversed<sizeof(W)>(buffer, words, write) ? 0 : -1;
}

// The results of the chunks are the reader's to find out by what follows in its file.
template <class T, class Source>
int readChunks(Source source, const T* buffer, __int64 count, bool bigEndian) {
  const Chunks chunks = F_Chunks(count);
  for (__int64 k = 0; k < chunks.number; ++k)
    readElements(source, buffer ? buffer + k * chunks.limit : buffer, chunks.size(k), bigEndian);
  return 0;
}

template <class T, class Sink>
int writeChunks(Sink sink, const T* buffer, __int64 count, bool bigEndian) {
  const Chunks chunks = F_Chunks(count);
  for (__int64 k = 0; k < chunks.number; ++k) {
    const T* part = buffer ? buffer + k * chunks.limit : buffer;
    if (writeElements(sink, part, chunks.size(k), bigEndian) != 0) fail(22);
  }
  return 0;
}

} // namespace

template <class T>
int T_BF_read(int fd, const T* buffer, int count, bool bigEndian) {
  return readElements(fd, buffer, count, bigEndian);
}
template <class T>
int T_BF_read(FILE* file, const T* buffer, int count, bool bigEndian) {
  return readElements(file, buffer, count, bigEndian);
}
template <class T>
int T_BF_read(int fd, const T* buffer, __int64 count, bool bigEndian) {
  return readChunks(fd, buffer, count, bigEndian);
}
template <class T>
int T_BF_read(FILE* file, const T* buffer, __int64 count, bool bigEndian) {
  return readChunks(file, buffer, count, bigEndian);
}
template <class T>
int T_BF_write(int fd, const T* buffer, int count, bool bigEndian) {
  return writeElements(fd, buffer, count, bigEndian);
}
template <class T>
int T_BF_write(FILE* file, const T* buffer, int count, bool bigEndian) {
  return writeElements(file, buffer, count, bigEndian);
}
template <class T>
int T_BF_write(int fd, const T* buffer, __int64 count, bool bigEndian) {
  return writeChunks(fd, buffer, count, bigEndian);
}
template <class T>
int T_BF_write(FILE* file, const T* buffer, __int64 count, bool bigEndian) {
  return writeChunks(file, buffer, count, bigEndian);
}

#define ZAREL_DEFINE_BF(T) ZAREL_BF_TEMPLATES(, T)
ZAREL_FOR_EACH_BF_SCALAR(ZAREL_DEFINE_BF)
