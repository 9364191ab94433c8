#include "system/calls.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

static_assert(sizeof(off_t) == 8, "file positions have 64 bits");

namespace Zarel {

namespace {

int openFile(const char* path, int flags, mode_t mode) {
  return ::open(path, flags, mode);
}

int statusOf(int fd, struct stat* status) {
  return ::fstat(fd, status);
}

// Not the standard's function: where the file system cannot reserve, that one writes to every block
// and never asks whether the disk has taken them. The caller, who does, must not be sent to write
// to a file that appends whatever it is given.
int reserve(int fd, off_t offset, off_t bytes) {
  const int result = ::fallocate(fd, 0, offset, bytes);
  if (result != 0 && errno == EOPNOTSUPP && (::fcntl(fd, F_GETFL) & O_APPEND) != 0) errno = EBADF;
  return result;
}

int statusUnder(const char* path, struct stat* status) {
  return ::stat(path, status);
}

int accessModeOf(int fd) {
  const int flags = ::fcntl(fd, F_GETFL);
  return flags < 0 ? -1 : flags & O_ACCMODE;
}

int duplicateOf(int fd) {
  return ::fcntl(fd, F_DUPFD_CLOEXEC, 0);
}

// Calls `transfer(offset, bytes left)` until all is done, nothing more comes or an error shows.
template <class Transfer>
size_t repeat(size_t bytes, Transfer transfer) {
  size_t done = 0;
  while (done < bytes) {
    const ssize_t moved = transfer(done, bytes - done);
    if (moved < 0 && errno == EINTR) continue;
    if (moved <= 0) break;
    done += static_cast<size_t>(moved);
  }
  return done;
}

} // namespace

SystemCalls& systemCalls() {
  static SystemCalls calls = {
      openFile, ::read,   ::write,     ::lseek, ::close,     ::pread,      ::pwrite,
      ::fsync,  statusOf, ::ftruncate, reserve, ::unlink,    accessModeOf, duplicateOf,
      ::mmap,   ::munmap, ::madvise,   ::msync, statusUnder, ::access,     std::rename};
  return calls;
}

size_t readFully(int fd, void* buffer, size_t bytes) {
  const auto into = static_cast<char*>(buffer);
  return repeat(bytes, [=](size_t offset, size_t left) {
    return systemCalls().read(fd, into + offset, left);
  });
}

size_t writeFully(int fd, const void* buffer, size_t bytes) {
  const auto from = static_cast<const char*>(buffer);
  return repeat(bytes, [=](size_t offset, size_t left) {
    return systemCalls().write(fd, from + offset, left);
  });
}

} // namespace Zarel
