#include "system/machine.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>

#include "system/calls.h"
#include "system/descriptor.h"
#include "system/mapping.h"

namespace Zarel {

namespace {

constexpr long long unknown = -1;
constexpr long long kibi = 1024;

// The head of a file of the system, as text; empty when it cannot be read.
class SystemFile {
public:
  explicit SystemFile(const char* path) {
    const Descriptor file = openDescriptor(path, O_RDONLY);
    if (file) _text[readFully(file.get(), _text, sizeof _text - 1)] = '\0';
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

// How many of the entries that getdents64 gave, `bytes` bytes of them, are those of processes.
long long processesAmong(const char* entries, ssize_t bytes) {
  long long count = 0;
  for (ssize_t at = 0; at < bytes;) {
    const auto entry = reinterpret_cast<const dirent64*>(entries + at);
    count += std::isdigit(static_cast<unsigned char>(entry->d_name[0])) ? 1 : 0;
    at += entry->d_reclen;
  }
  return count;
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

// Each process has a directory there whose name is its number. opendir would allocate.
long long processCount() {
  const Descriptor directory = openDescriptor("/proc", O_RDONLY | O_DIRECTORY);
  alignas(dirent64) char entries[8192];
  long long count = 0;
  ssize_t bytes = 0;
  while ((bytes = getdents64(directory.get(), entries, sizeof entries)) > 0)
    count += processesAmong(entries, bytes);
  return bytes == 0 ? count : unknown;
}

} // namespace Zarel
