#include "system/descriptor.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <random>
#include <unistd.h>

#include "system/calls.h"
#include "system/environment.h"
#include "system/files.h"

namespace Zarel {

namespace {

constexpr int tries = 100;

bool mayHoldFiles(const std::string& directory) {
  return !directory.empty() && isDirectory(directory) &&
         systemCalls().access(directory.c_str(), W_OK | X_OK) == 0;
}

// Twelve characters that nobody guesses.
std::string randomEnd() {
  static constexpr char letters[] = "abcdefghijklmnopqrstuvwxyz012345";
  std::random_device source;
  std::uint64_t bits = std::uint64_t{source()} << 32 | source();
  std::string end(12, ' ');
  for (char& c : end) {
    c = letters[bits & 31];
    bits >>= 5;
  }
  return end;
}

std::string randomPath(const std::string& directory, std::string_view prefix) {
  std::string path = directory;
  if (path.empty() || path.back() != '/') path += '/';
  return path.append(prefix) += randomEnd();
}

} // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  if (this != &other) {
    close();
    _fd = other.release();
  }
  return *this;
}

int Descriptor::release() {
  const int fd = _fd;
  _fd = -1;
  return fd;
}

// A close that was interrupted has closed all the same and must not be repeated.
int Descriptor::close() {
  return _fd < 0 ? 0 : systemCalls().close(release());
}

Descriptor openDescriptor(const char* path, int flags, mode_t mode) {
  int fd = -1;
  do
    fd = systemCalls().open(path, flags | O_CLOEXEC, mode);
  while (fd < 0 && errno == EINTR);
  return Descriptor(fd);
}

std::string temporaryDirectory(const std::string& second) {
  for (const std::string& directory :
       {environment("TMPDIR").value_or(""), second, std::string("/tmp")})
    if (mayHoldFiles(directory)) return directory;
  errno = ENOENT;
  return {};
}

std::string unusedPath(const std::string& directory, std::string_view prefix) {
  for (int k = 0; k < tries; ++k) {
    std::string path = randomPath(directory, prefix);
    if (!fileExists(path)) return path;
  }
  errno = EEXIST;
  return {};
}

} // namespace Zarel
