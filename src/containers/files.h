// Values on descriptors and streams, with the container's error codes.
#ifndef ZAREL_CONTAINERS_FILES_H
#define ZAREL_CONTAINERS_FILES_H

#include <cerrno>
#include <cstdio>

#include <zarel/C_bfd.h>
#include <zarel/bf.h>

#include "containers/blocks.h"
#include "runtime/fail.h"
#include "system/files.h"

namespace Zarel {

/** Bytes from the position of the descriptor to the end of a regular file; no limit elsewhere. */
long long remainingBytes(int descriptor);

inline int descriptorOf(int handle) {
  return handle;
}
inline int descriptorOf(FILE* file) {
  return fileno(file);
}

/** Throws 12 for a null stream, and for 0 in the place of a descriptor. */
template <class Handle>
void requireHandle(Handle handle) {
  if (!handle) fail(12);
}

/** Throws 21 for a negative count and for one that the rest of the file cannot hold. */
template <class Handle>
void requireHolds(Handle handle, long long count, std::size_t width) {
  if (count < 0 || count > remainingBytes(descriptorOf(handle)) / static_cast<long long>(width))
    fail(21);
}

/** Writes `n` values, none if `n` is below 1. Throws 22. */
template <class Handle, class T>
void writeValues(Handle handle, T const* values, long long n) {
  if (n < 1) return;
  forEachIntPiece(n, [=](long long at, int length) {
    if (T_BF_write<T>(handle, values + at, length, false) != 0) fail(22);
  });
}

/** Reads `n` values, none if `n` is below 1. Throws 21. */
template <class Handle, class T>
void readValues(Handle handle, T* values, long long n) {
  if (n < 1) return;
  forEachIntPiece(n, [=](long long at, int length) {
    if (T_BF_read<T>(handle, values + at, length, false) != 0) fail(21);
  });
}

template <class T, class Handle>
T readOne(Handle handle) {
  T value(0);
  readValues(handle, &value, 1);
  return value;
}

/**
 * Does the work and puts the file back where it stood: the storage that works may lie on the very
 * file that is being read or written. What has no position, as a pipe, stays alone. Throws 20.
 */
template <class Handle, class Work>
void keepPosition(Handle handle, Work work) {
  const int descriptor = descriptorOf(handle);
  const __int64 position = CBF_tell64(descriptor);
  if (position < 0 && errno != ESPIPE) fail(20);
  work();
  if (position >= 0 && CBF_lseek64(descriptor, position, SEEK_SET) < 0) fail(20);
}

/** A text file that others may read and write too, closed at the end of the scope. */
class TextFile {
public:
  TextFile(char const* name, char const* mode)
      : file_(name == nullptr ? nullptr : openShared(name, mode)) {}
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;
  ~TextFile() {
    if (file_ != nullptr) std::fclose(file_);
  }
  FILE* get() const { return file_; }

private:
  FILE* file_;
};

} // namespace Zarel

#endif
