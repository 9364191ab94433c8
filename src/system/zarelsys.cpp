#include <zarel/zarelsys.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <map>
#include <new>
#include <strings.h>
#include <unistd.h>
#include <utility>

#include "system/calls.h"
#include "system/text.h"

using Zarel::systemCalls;

namespace {

// Gives `use` the path as the system takes it. A path that cannot be had is a failure of the call.
template <class Use>
int withPath(const wchar_t* path, Use use) noexcept {
  if (!path) {
    errno = EINVAL;
    return -1;
  }
  try {
    return use(Zarel::toUtf8(path).c_str());
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return -1;
  }
}

int statusOf(const wchar_t* path, struct stat& status) {
  return withPath(path, [&](const char* name) { return systemCalls().stat(name, &status); });
}

// The thread's wide copy of a variable of the environment. It stays where it is while the value
// does: a caller may still hold it.
wchar_t* wideCopyOf(const char* name, const char* value) {
  thread_local std::map<std::string, std::wstring> copies;
  std::wstring& copy = copies[name];
  std::wstring wide = Zarel::toWide(value);
  if (copy != wide) copy = std::move(wide);
  return copy.data();
}

} // namespace

int zarel_file_exist(const wchar_t* path) {
  struct stat status;
  return statusOf(path, status) == 0;
}

__int64 zarel_file_mod_time(const wchar_t* path) {
  struct stat status;
  return statusOf(path, status) == 0 ? status.st_mtime : 0;
}

int zarel_ftruncate(int fd, __int64 size) {
  if (systemCalls().lseek(fd, size, SEEK_SET) < 0) return -1;
  int result = 0;
  do
    result = systemCalls().ftruncate(fd, size);
  while (result != 0 && errno == EINTR);
  return result;
}

int zarel_access(const wchar_t* path, int mode) {
  return withPath(path, [&](const char* name) { return systemCalls().access(name, mode); });
}

int zarel_rename(const wchar_t* from, const wchar_t* to) {
  return withPath(from, [&](const char* former) {
    return withPath(to, [&](const char* name) { return systemCalls().rename(former, name); });
  });
}

int zarel_unlink(const wchar_t* path) {
  return withPath(path, [](const char* name) { return systemCalls().unlink(name); });
}

int zarel_fileno(FILE* file) {
  if (file) return fileno(file);
  errno = EBADF;
  return -1;
}

char* zarel_getenv(const char* name) {
  return name ? std::getenv(name) : nullptr;
}

wchar_t* zarel_wgetenv(const wchar_t* name) {
  if (!name) return nullptr;
  try {
    const std::string narrow = Zarel::toUtf8(name);
    const char* const value = std::getenv(narrow.c_str());
    return value ? wideCopyOf(narrow.c_str(), value) : nullptr;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

int zarel_getpid(void) {
  return getpid();
}

int zarel_system(int, const char* command) {
  return std::system(command);
}

int zarel_strncasecmp(const char* a, const char* b, size_t n) {
  return strncasecmp(a, b, n);
}

double zarel_atan2(double y, double x) {
  return std::atan2(y, x);
}
