#include "system/files.h"

#include <sys/stat.h>

#include "system/calls.h"

namespace Zarel {

namespace {

// The kind of what a name stands for, 0 if there is nothing.
mode_t kindOf(const std::string& name) {
  struct stat status;
  return systemCalls().stat(name.c_str(), &status) == 0 ? status.st_mode & S_IFMT : 0;
}

} // namespace

// "e" keeps the descriptor out of the programs that a host starts.
FILE* openShared(const std::string& name, const char* mode) {
  return std::fopen(name.c_str(), (std::string(mode) + "e").c_str());
}

bool fileExists(const std::string& name) {
  return kindOf(name) != 0;
}
bool isRegularFile(const std::string& name) {
  return kindOf(name) == S_IFREG;
}
bool isDirectory(const std::string& name) {
  return kindOf(name) == S_IFDIR;
}

long long bytesLeft(int fd) {
  struct stat status;
  if (systemCalls().fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return -1;
  const off_t position = systemCalls().lseek(fd, 0, SEEK_CUR);
  if (position < 0) return -1;
  return position < status.st_size ? status.st_size - position : 0;
}

std::string directoryOf(const std::string& name) {
  const size_t slash = name.rfind('/');
  if (slash == std::string::npos) return {};
  return name.substr(0, slash == 0 ? 1 : slash);
}

std::string fileNameOf(const std::string& name) {
  return name.substr(name.rfind('/') + 1);
}

std::wstring withoutExtension(const std::wstring& name) {
  const size_t part = name.rfind(L'/') + 1;
  const size_t point = name.rfind(L'.');
  if (point == std::wstring::npos || point <= part) return name;
  return name.substr(0, point);
}

} // namespace Zarel
