// Files of sets as the tests see them: bytes.
#ifndef ZAREL_TESTS_VECTORSET_FILES_H
#define ZAREL_TESTS_VECTORSET_FILES_H

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "memory/allocator.h"
#include "vectorset/support.h"

namespace vectorset {

/** An unnamed file with given bytes, at its start. */
class ByteFile {
public:
  explicit ByteFile(const std::string& bytes = {}) : file_(std::tmpfile()) {
    if (file_ == nullptr ||
        pwrite(handle(), bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
      std::abort();
  }
  ByteFile(const ByteFile&) = delete;
  ByteFile& operator=(const ByteFile&) = delete;
  ~ByteFile() { std::fclose(file_); }

  FILE* stream() const { return file_; }
  int handle() const { return fileno(file_); }
  long long position() const { return lseek(handle(), 0, SEEK_CUR); }
  void moveTo(long long position) const { lseek(handle(), position, SEEK_SET); }
  /** All bytes; the position stays. */
  std::string bytes() const {
    const long long here = position();
    std::string text(static_cast<std::size_t>(lseek(handle(), 0, SEEK_END)), '\0');
    moveTo(here);
    if (pread(handle(), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
      std::abort();
    return text;
  }

private:
  FILE* file_;
};

/** The bytes of values as they lie in memory, which is little-endian here. */
template <class... V>
std::string raw(V... values) {
  std::string bytes;
  (bytes.append(reinterpret_cast<const char*>(&values), sizeof values), ...);
  return bytes;
}

template <class T>
std::string rawList(const std::vector<T>& values) {
  return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T)};
}

/** The file of a set: its counts, then vector after vector. */
template <class T>
std::string fileOf(const Dense<T>& values, int length) {
  std::string bytes = raw(static_cast<int>(values.size()), length);
  for (const auto& column : values)
    bytes += rawList(column);
  return bytes;
}

/** The values by rows. */
template <class T>
std::string rowsOf(const Dense<T>& values, int length) {
  std::string bytes;
  for (int i = 0; i < length; ++i)
    for (const auto& column : values)
      bytes += raw(column[static_cast<std::size_t>(i)]);
  return bytes;
}

template <class T>
void readAs(Zarel::C_VSTRUCT<T>& set, FILE* file, Storage storage, int gap = 0) {
  set.Read(file, storage == Storage::InCore ? 1 : 2, storage == Storage::Mapped, 0, 0, gap);
}

/** Code and reason of the exception that a call throws, zeros if none. */
struct Told {
  int code = 0;
  int reason = 0;
  bool operator==(const Told& other) const { return code == other.code && reason == other.reason; }
};
inline std::ostream& operator<<(std::ostream& out, const Told& told) {
  return out << told.code << ", " << told.reason;
}
template <class Call>
Told toldBy(Call call) {
  try {
    call();
  } catch (const C_ZarelException& e) {
    return {e.getExceptionCode(), e.getReasonCode()};
  }
  return {};
}

/** While it lives, the library's allocator has no block above a limit, and remembers the largest
 * that was asked for. */
class BlockLimit {
public:
  explicit BlockLimit(std::size_t most) : saved_(Zarel::allocator()) {
    limit = most;
    largest = 0;
    real = saved_;
    Zarel::Allocator& a = Zarel::allocator();
    a.malloc = [](std::size_t size) { return fits(size) ? real.malloc(size) : nullptr; };
    a.calloc = [](std::size_t n, std::size_t size) {
      return fits(n * size) ? real.calloc(n, size) : nullptr;
    };
    a.realloc = [](void* p, std::size_t size) {
      return fits(size) ? real.realloc(p, size) : nullptr;
    };
  }
  BlockLimit(const BlockLimit&) = delete;
  BlockLimit& operator=(const BlockLimit&) = delete;
  ~BlockLimit() { Zarel::allocator() = saved_; }

  static std::size_t largestAsked() { return largest; }

private:
  static bool fits(std::size_t size) {
    largest = std::max(largest, size);
    return size <= limit;
  }
  static inline std::size_t limit = 0;
  static inline std::size_t largest = 0;
  static inline Zarel::Allocator real{};
  Zarel::Allocator saved_;
};

/** The descriptors that this process has open. */
inline long openDescriptors() {
  long count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
    count += entry.path().empty() ? 0 : 1;
  return count;
}

inline bool isOpen(int descriptor) {
  return fcntl(descriptor, F_GETFD) >= 0;
}

} // namespace vectorset

#endif
