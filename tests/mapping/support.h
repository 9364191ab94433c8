// The vocabulary of the tests of mapped files.
#ifndef ZAREL_TESTS_MAPPING_SUPPORT_H
#define ZAREL_TESTS_MAPPING_SUPPORT_H

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <zarel/C_ZarelException.h>

#include "support/Capture.h"
#include "support/FailingAllocation.h"
#include "support/FailingCall.h"
#include "support/Files.h"
#include "system/calls.h"
#include "system/text.h"

using u64 = unsigned __int64;

inline const u64 kPage = static_cast<u64>(sysconf(_SC_PAGESIZE));

inline size_t entriesOf(const std::string& directory) {
  const std::filesystem::directory_iterator entries(directory);
  return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

// The descriptors that the process has open.
inline size_t openDescriptors() {
  return entriesOf("/proc/self/fd");
}

// Those of them that are of a file.
inline std::vector<int> descriptorsOf(const std::string& name) {
  std::vector<int> result;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone; // the one that reads the directory
    if (std::filesystem::read_symlink(entry.path(), gone) == name)
      result.push_back(std::stoi(entry.path().filename()));
  }
  return result;
}

// Whether an address of this process is mapped from a file of that name.
inline bool isMappedFrom(const std::string& name) {
  return support::bytesOf("/proc/self/maps").find(name) != std::string::npos;
}

// Expects the library's exception with this code and reason.
inline void expectFailure(int code, int reason, const std::function<void()>& operation) {
  try {
    operation();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const C_ZarelException& e) {
    EXPECT_EQ(e.getExceptionCode(), code);
    EXPECT_EQ(e.getReasonCode(), reason);
  }
}

// The texts of the reports of this room, where a host has brought none.
inline const std::string kNoMemory = "Not enough memory for a mapped file";
inline const std::string kNotMapped = "A file cannot be mapped";
inline const std::string kNotUnmapped = "The mapping of a file cannot be ended";
inline const std::string kNotMade = "A file cannot be created, opened or sized";
inline const std::string kNotDeleted = "A file cannot be deleted";
inline const std::string kNotClosed = "A file cannot be closed";
inline const std::string kNotRegistered = "A mapped file is not registered";

inline bool throwsAnything(const std::function<void()>& operation) {
  try {
    operation();
    return false;
  } catch (...) {
    return true;
  }
}

// Runs `operation` with each of its system calls failing, and with its memory exhausted from each
// allocation on, in all combinations. Nothing may be thrown. Its own checks need `Unharmed`.
inline void expectNothingThrown(const std::function<void()>& operation) {
  bool callFailed = true;
  for (long n = 0; callFailed; ++n) {
    bool memoryFailed = true;
    callFailed = n == 0;
    for (long m = 1; memoryFailed; ++m) {
      const support::FailingCall call(n);
      const support::FailingAllocation memory(m, support::FailingAllocation::FromThenOn);
      const bool thrown = throwsAnything(operation);
      const support::Unharmed checks;
      EXPECT_FALSE(thrown) << "system call " << n << ", allocation " << m;
      callFailed = callFailed || support::FailingCall::happened();
      memoryFailed = support::FailingAllocation::happened();
    }
  }
}

// What a piece of code says, on either stream.
inline std::string toldBy(const std::function<void()>& operation) {
  const support::Captured told = support::capture(operation);
  return told.out + told.err;
}

// Puts the table of system calls back.
class SystemCallsKept {
public:
  SystemCallsKept() : _former(Zarel::systemCalls()) {}
  ~SystemCallsKept() { Zarel::systemCalls() = _former; }
  SystemCallsKept(const SystemCallsKept&) = delete;
  SystemCallsKept& operator=(const SystemCallsKept&) = delete;

private:
  Zarel::SystemCalls _former;
};

inline int cannotUnmap(void*, size_t) {
  errno = EINVAL;
  return -1;
}

// A file system that cannot reserve.
inline int cannotReserve(int, off_t, off_t) {
  errno = EOPNOTSUPP;
  return -1;
}

// The process's largest file for as long as it lives; what would be larger is an error.
class FileSizeLimit {
public:
  explicit FileSizeLimit(rlim_t bytes) {
    _handler = signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &_former);
    const rlimit limit = {bytes, _former.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &_former);
    signal(SIGXFSZ, _handler);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
  rlimit _former;
  void (*_handler)(int);
};

#endif
