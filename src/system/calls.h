// The system calls through which the bytes of binary files and mappings pass, in one table, so that
// tests can count them and make them fail. Text goes through the streams of the C library.
#ifndef ZAREL_SYSTEM_CALLS_H
#define ZAREL_SYSTEM_CALLS_H

#include <sys/stat.h>
#include <sys/types.h>

namespace Zarel {

struct SystemCalls {
  int (*open)(const char* path, int flags, mode_t mode);
  ssize_t (*read)(int fd, void* buffer, size_t bytes);
  ssize_t (*write)(int fd, const void* buffer, size_t bytes);
  off_t (*lseek)(int fd, off_t offset, int whence);
  int (*close)(int fd);
  ssize_t (*pread)(int fd, void* buffer, size_t bytes, off_t offset);
  ssize_t (*pwrite)(int fd, const void* buffer, size_t bytes, off_t offset);
  int (*fsync)(int fd);
  int (*fstat)(int fd, struct stat* status);
  int (*ftruncate)(int fd, off_t size);
  // Gives the range its place on the file system and the file the length that holds it.
  int (*fallocate)(int fd, off_t offset, off_t bytes);
  int (*unlink)(const char* path);
  // The access mode of a descriptor (O_RDONLY, O_WRONLY or O_RDWR), -1 on an error.
  int (*accessMode)(int fd);
  // Another descriptor of the same open file, closed when a program is started.
  int (*duplicate)(int fd);
  void* (*mmap)(void* address, size_t bytes, int protection, int flags, int fd, off_t offset);
  int (*munmap)(void* address, size_t bytes);
  int (*madvise)(void* address, size_t bytes, int advice);
  int (*msync)(void* address, size_t bytes, int flags);
  int (*stat)(const char* path, struct stat* status);
  int (*access)(const char* path, int mode);
  int (*rename)(const char* from, const char* to);
};

// The table in use. Tests put their own entries in and the old ones back.
SystemCalls& systemCalls();

// Transfer all of `bytes`, whatever the system takes at a time; interrupted calls are repeated.
// They return the bytes transferred, fewer at the end of the file or on an error (see errno).
size_t readFully(int fd, void* buffer, size_t bytes);
size_t writeFully(int fd, const void* buffer, size_t bytes);

} // namespace Zarel

#endif
