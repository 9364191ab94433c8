#include "mapping/reserve.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <unistd.h>

#include "system/calls.h"

namespace Zarel {

namespace {

constexpr auto largestOffset = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
// No file system has smaller blocks than disks have sectors.
constexpr std::uint64_t smallestBlock = 512;

off_t position(std::uint64_t offset) {
  return static_cast<off_t>(offset);
}

// Puts errno back: what is done after a failure must not hide it.
class KeptErrno {
public:
  KeptErrno() : _value(errno) {}
  ~KeptErrno() { errno = _value; }
  KeptErrno(const KeptErrno&) = delete;
  KeptErrno& operator=(const KeptErrno&) = delete;

private:
  int _value;
};

// Whether a block of these bytes may be a hole of its file.
bool mayHaveHole(const char* bytes, size_t count) {
  for (size_t at = 0; at < count; at += smallestBlock) {
    const char* const end = bytes + std::min(count, at + smallestBlock);
    if (std::all_of(bytes + at, end, [](char byte) { return byte == 0; })) return true;
  }
  return false;
}

bool writeAll(int fd, const char* bytes, size_t count, std::uint64_t at) {
  for (size_t done = 0; done < count;) {
    const ssize_t now = systemCalls().pwrite(fd, bytes + done, count - done, position(at + done));
    if (now < 0 && errno == EINTR) continue;
    if (now == 0) errno = ENOSPC;
    if (now <= 0) return false;
    done += static_cast<size_t>(now);
  }
  return true;
}

// Reads bytes of a file; what lies behind its end reads as zero.
bool readAll(int fd, char* bytes, size_t count, std::uint64_t at) {
  for (size_t done = 0; done < count;) {
    const ssize_t now = systemCalls().pread(fd, bytes + done, count - done, position(at + done));
    if (now < 0 && errno == EINTR) continue;
    if (now < 0) return false;
    if (now == 0) std::fill(bytes + done, bytes + count, '\0');
    done = now == 0 ? count : done + static_cast<size_t>(now);
  }
  return true;
}

// For file systems that cannot reserve: holes are written with the zeros that they read as, and
// the file system says at the latest in the synchronisation if it has no place for them.
bool fillHoles(int fd, std::uint64_t from, std::uint64_t to) {
  char chunk[32768];
  for (std::uint64_t at = from; at < to; at += sizeof chunk) {
    const auto count = static_cast<size_t>(std::min<std::uint64_t>(sizeof chunk, to - at));
    if (!readAll(fd, chunk, count, at)) return false;
    if (mayHaveHole(chunk, count) && !writeAll(fd, chunk, count, at)) return false;
  }
  return systemCalls().fsync(fd) == 0;
}

int allocate(int fd, std::uint64_t from, std::uint64_t to) {
  int result = 0;
  do {
    result = systemCalls().fallocate(fd, position(from), position(to - from));
  } while (result != 0 && errno == EINTR);
  return result;
}

bool grow(int fd, std::uint64_t from, std::uint64_t to) {
  if (allocate(fd, from, to) == 0) return true;
  if (errno != EOPNOTSUPP && errno != ENOSYS) return false;
  return systemCalls().ftruncate(fd, position(to)) == 0 && fillHoles(fd, from, to);
}

} // namespace

bool reserveRange(int fd, std::uint64_t from, std::uint64_t to) {
  if (from >= to || allocate(fd, from, to) == 0) return true;
  return (errno == EOPNOTSUPP || errno == ENOSYS) && fillHoles(fd, from, to);
}

// The caller's descriptor may be the same open file: its position is put back.
std::uint64_t nextHole(int fd, std::uint64_t from, std::uint64_t size) {
  const auto lseek = systemCalls().lseek;
  const off_t former = lseek(fd, 0, SEEK_CUR);
  if (former < 0) return from;
  const off_t hole = lseek(fd, position(from), SEEK_HOLE);
  if (lseek(fd, former, SEEK_SET) < 0 || hole < 0) return from;
  return std::min(size, static_cast<std::uint64_t>(hole));
}

bool setFileSize(int fd, std::uint64_t size) {
  struct stat status;
  if (systemCalls().fstat(fd, &status) != 0) return false;
  if (size > largestOffset) {
    errno = EFBIG;
    return false;
  }
  const auto former = static_cast<std::uint64_t>(status.st_size);
  if (size <= former) return systemCalls().ftruncate(fd, position(size)) == 0;
  if (grow(fd, former, size)) return true;
  const KeptErrno kept;
  systemCalls().ftruncate(fd, status.st_size);
  return false;
}

} // namespace Zarel
