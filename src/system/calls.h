// The system calls through which all file bytes pass, in one table, so that tests can count them
// and make them fail.
#ifndef ZAREL_SYSTEM_CALLS_H
#define ZAREL_SYSTEM_CALLS_H

#include <sys/types.h>

namespace Zarel {

struct SystemCalls {
  int (*open)(const char* path, int flags, mode_t mode);
  ssize_t (*read)(int fd, void* buffer, size_t bytes);
  ssize_t (*write)(int fd, const void* buffer, size_t bytes);
  off_t (*lseek)(int fd, off_t offset, int whence);
};

// The table in use. Tests put their own entries in and the old ones back.
SystemCalls& systemCalls();

// Transfer all of `bytes`, whatever the system takes at a time; interrupted calls are repeated.
// They return the bytes transferred, fewer at the end of the file or on an error (see errno).
size_t readFully(int fd, void* buffer, size_t bytes);
size_t writeFully(int fd, const void* buffer, size_t bytes);

} // namespace Zarel

#endif
