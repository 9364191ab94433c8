#include "system/machine.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>

#include "system/calls.h"
#include "system/mapping.h"

namespace Zarel {

namespace {

constexpr long long unknown = -1;
constexpr long long kibi = 1024;

// The head of a file of the system, as text; empty when it cannot be read.
class SystemFile {
public:
  explicit SystemFile(const char* path) {
    const int fd = systemCalls().open(path, O_RDONLY | O_CLOEXEC, 0);
    if (fd < 0) return;
    _text[readFully(fd, _text, sizeof _text - 1)] = '\0';
    systemCalls().close(fd);
  }

  const char* text() const { return _text; }

private:
  char _text[8192] = "";
};

// The number at `text`, unknown if there is none.
long long numberAt(const char* text) {
  char* end = nullptr;
  const long long number = std::strtoll(text, &end, 10);
  return end == text ? unknown : number;
}

// What stands behind the next character `mark` in a text; empty if it does not come.
const char* behind(const char* text, char mark) {
  const char* const found = std::strchr(text, mark);
  return found ? found + 1 : "";
}

bool isNumber(const char* text) {
  return std::isdigit(static_cast<unsigned char>(*text)) != 0;
}

} // namespace

long long memoryFigure(const char* name) {
  const SystemFile file("/proc/meminfo");
  const size_t length = std::strlen(name);
  for (const char* line = file.text(); *line; line = behind(line, '\n')) {
    if (std::strncmp(line, name, length) != 0 || line[length] != ':') continue;
    const long long figure = numberAt(line + length + 1);
    return figure < 0 ? unknown : figure * kibi;
  }
  return unknown;
}

// "size resident shared ...", in pages.
long long residentBytes() {
  const SystemFile file("/proc/self/statm");
  const long long pages = numberAt(behind(file.text(), ' '));
  return pages < 0 ? unknown : pages * static_cast<long long>(pageSize());
}

// "allocated unused maximum".
long long openFileCount() {
  return numberAt(SystemFile("/proc/sys/fs/file-nr").text());
}

// "load load load running/all last".
long long threadCount() {
  return numberAt(behind(SystemFile("/proc/loadavg").text(), '/'));
}

long long processCount() {
  DIR* const directory = opendir("/proc");
  if (!directory) return unknown;
  long long count = 0;
  while (const dirent* entry = readdir(directory))
    count += isNumber(entry->d_name);
  closedir(directory);
  return count;
}

} // namespace Zarel
