// Temporary directories and the bytes of files.
#ifndef TESTS_SUPPORT_FILES_H
#define TESTS_SUPPORT_FILES_H

#include <string>

namespace support {

// A fresh directory, removed with all that is in it.
class TempDirectory {
public:
  TempDirectory();
  ~TempDirectory();
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;

  const std::string& path() const { return _path; }
  std::string file(const std::string& name) const { return _path + "/" + name; }

private:
  std::string _path;
};

// Makes a directory the working directory for as long as it lives.
class WorkingDirectory {
public:
  explicit WorkingDirectory(const std::string& path);
  ~WorkingDirectory();
  WorkingDirectory(const WorkingDirectory&) = delete;
  WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
  std::string _former;
};

// Sets an environment variable, or takes it away, for as long as it lives.
class Environment {
public:
  Environment(const char* name, const char* value);
  ~Environment();
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

private:
  std::string _name;
  std::string _former;
  bool _was;
};

// All of these throw std::runtime_error when the system refuses.
std::string bytesOf(const std::string& path);
void writeBytes(const std::string& path, const std::string& bytes);
void truncateTo(const std::string& path, size_t bytes);
// Turns over the bits of `mask` in the byte at `position`.
void flipByte(const std::string& path, size_t position, unsigned char mask = 0xFF);

// "01 00 ff" as three bytes; anything but hexadecimal digits separates.
std::string hex(const std::string& digits);

} // namespace support

#endif
