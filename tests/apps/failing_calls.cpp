// Loaded in front of a program (LD_PRELOAD), it makes one system call fail: the one whose number
// ZAREL_FAILING_CALL holds, of those listed below in the order in which the program makes them.
// The program itself knows nothing of it. When the call comes, ZAREL_FAILING_MARK names a file that
// is then made, with the call's name in it.
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

template <class Function>
Function next(Function, const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

void leaveMark(const char* name) {
  const char* const mark = std::getenv("ZAREL_FAILING_MARK");
  if (mark == nullptr) return;
  const long fd = syscall(SYS_openat, AT_FDCWD, mark, O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (fd < 0) return;
  syscall(SYS_write, fd, name, std::strlen(name));
  syscall(SYS_close, fd);
}

/** Whether this call is the one; standard error is spared, as the failure is told there. */
bool fails(const char* name, int fd = -1) {
  static const char* const text = std::getenv("ZAREL_FAILING_CALL");
  static long left = text == nullptr ? 0 : std::atol(text);
  if (fd == STDERR_FILENO || left <= 0 || --left > 0) return false;
  leaveMark(name);
  errno = EIO;
  return true;
}

} // namespace

#define ZAREL_NEXT(name) next(&name, #name)

#pragma GCC visibility push(default)
extern "C" {

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const int mode =
      (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(rest, int) : 0;
  va_end(rest);
  return fails("open") ? -1 : ZAREL_NEXT(open)(path, flags, mode);
}
ssize_t read(int fd, void* buffer, size_t bytes) {
  return fails("read", fd) ? -1 : ZAREL_NEXT(read)(fd, buffer, bytes);
}
ssize_t pread(int fd, void* buffer, size_t bytes, off_t offset) {
  return fails("pread", fd) ? -1 : ZAREL_NEXT(pread)(fd, buffer, bytes, offset);
}
ssize_t write(int fd, const void* buffer, size_t bytes) {
  return fails("write", fd) ? -1 : ZAREL_NEXT(write)(fd, buffer, bytes);
}
/** The descriptor is gone all the same, as after a failed write-back. */
int close(int fd) {
  const bool failing = fails("close", fd);
  const int result = ZAREL_NEXT(close)(fd);
  if (failing) errno = EIO;
  return failing ? -1 : result;
}
int fsync(int fd) {
  struct stat info {};
  const bool folder = syscall(SYS_fstat, fd, &info) == 0 && S_ISDIR(info.st_mode);
  return fails(folder ? "fsync of a folder" : "fsync") ? -1 : ZAREL_NEXT(fsync)(fd);
}
int fstat(int fd, struct stat* status) noexcept {
  return fails("fstat") ? -1 : ZAREL_NEXT(fstat)(fd, status);
}
int ftruncate(int fd, off_t size) noexcept {
  return fails("ftruncate") ? -1 : ZAREL_NEXT(ftruncate)(fd, size);
}
/** Returns the error itself. */
int posix_fallocate(int fd, off_t offset, off_t bytes) {
  return fails("posix_fallocate") ? ENOSPC : ZAREL_NEXT(posix_fallocate)(fd, offset, bytes);
}
int linkat(int from, const char* a, int to, const char* b, int flags) noexcept {
  return fails("linkat") ? -1 : ZAREL_NEXT(linkat)(from, a, to, b, flags);
}
int rename(const char* a, const char* b) noexcept {
  return fails("rename") ? -1 : ZAREL_NEXT(rename)(a, b);
}
int fchmod(int fd, mode_t mode) noexcept {
  return fails("fchmod") ? -1 : ZAREL_NEXT(fchmod)(fd, mode);
}
/** Files only: memory is asked for elsewhere. */
void* mmap(void* at, size_t bytes, int protection, int flags, int fd, off_t offset) noexcept {
  if (fd >= 0 && fails("mmap")) return MAP_FAILED;
  return ZAREL_NEXT(mmap)(at, bytes, protection, flags, fd, offset);
}
int msync(void* at, size_t bytes, int flags) {
  return fails("msync") ? -1 : ZAREL_NEXT(msync)(at, bytes, flags);
}

} // extern "C"
#pragma GCC visibility pop
