// Files by descriptor: wide paths, 64-bit positions, whole elements.
#include <zarel/bf.h>

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <unistd.h>

#include "system/calls.h"
#include "system/descriptor.h"
#include "system/files.h"
#include "system/text.h"

using namespace Zarel;

namespace {

constexpr mode_t ownerOnly = 0600;

// Whether a transfer has any bytes; one that has more than memory can hold is refused.
bool hasBytes(size_t size, size_t count) {
  if (size == 0 || count == 0) return false;
  if (count <= SIZE_MAX / size) return true;
  errno = EINVAL;
  return false;
}

} // namespace

int CBF_open64(const wchar_t* path, int flags) {
  if (!path) {
    errno = EINVAL;
    return -1;
  }
  return openDescriptor(toUtf8(path), flags, ownerOnly).release();
}

int CBF_close64(int fd) {
  return systemCalls().close(fd);
}

FILE* CBF_fopen64(const wchar_t* path, const wchar_t* mode) {
  if (!path || !mode) {
    errno = EINVAL;
    return nullptr;
  }
  return openShared(toUtf8(path), toUtf8(mode).c_str());
}

int CBF_fclose64(FILE* file) {
  if (file) return std::fclose(file);
  errno = EINVAL;
  return EOF;
}

size_t CBF_read64(void* buffer, size_t size, size_t count, int fd) {
  return hasBytes(size, count) ? readFully(fd, buffer, size * count) / size : 0;
}

size_t CBF_write64(const void* buffer, size_t size, size_t count, int fd) {
  return hasBytes(size, count) ? writeFully(fd, buffer, size * count) / size : 0;
}

size_t CBF_fread64(void* buffer, size_t size, size_t count, FILE* file) {
  return file ? CBF_read64(buffer, size, count, fileno(file)) : 0;
}

size_t CBF_fwrite64(const void* buffer, size_t size, size_t count, FILE* file) {
  return file ? CBF_write64(buffer, size, count, fileno(file)) : 0;
}

__int64 CBF_lseek64(int fd, __int64 offset, int whence) {
  return systemCalls().lseek(fd, offset, whence);
}

__int64 CBF_tell64(int fd) {
  return CBF_lseek64(fd, 0, SEEK_CUR);
}

int CBF_fseek64(FILE* file, __int64 offset, int whence) {
  return file && CBF_lseek64(fileno(file), offset, whence) >= 0 ? 0 : -1;
}

__int64 CBF_ftell64(FILE* file) {
  return file ? CBF_tell64(fileno(file)) : -1;
}
