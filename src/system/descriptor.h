// An open file that closes itself, and names for temporary files.
#ifndef ZAREL_SYSTEM_DESCRIPTOR_H
#define ZAREL_SYSTEM_DESCRIPTOR_H

#include <string>
#include <string_view>

#include <sys/types.h>

namespace Zarel {

// Owns a descriptor, or none (-1).
class Descriptor {
public:
  Descriptor() = default;
  explicit Descriptor(int fd) : _fd(fd) {}
  ~Descriptor() { close(); }
  Descriptor(Descriptor&& other) noexcept : _fd(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  explicit operator bool() const { return _fd >= 0; }
  int get() const { return _fd; }
  // Gives the descriptor away; the caller closes it.
  int release();
  // Closes it now: 0, also if there is none, or -1 and errno. It is gone in any case.
  int close();

private:
  int _fd = -1;
};

// Opens a file that the programs started by a host do not inherit; none and errno on failure.
// Interrupted calls are repeated.
Descriptor openDescriptor(const char* path, int flags, mode_t mode = 0600);
inline Descriptor openDescriptor(const std::string& path, int flags, mode_t mode = 0600) {
  return openDescriptor(path.c_str(), flags, mode);
}

// The directory for temporary files: `TMPDIR` if that may be written to, else `second` if that may,
// else /tmp; empty and errno if none may.
std::string temporaryDirectory(const std::string& second = {});
// A path in `directory`, with a random end, under which there is nothing; empty and errno if none
// was found. Whoever creates the file does so exclusively (O_EXCL): only that decides.
std::string unusedPath(const std::string& directory, std::string_view prefix);

} // namespace Zarel

#endif
