// Formatted texts from argument lists.
#ifndef ZAREL_RUNTIME_FORMAT_H
#define ZAREL_RUNTIME_FORMAT_H

#include <cstdarg>
#include <string>

namespace Zarel {

// Formats as vprintf does and cuts what does not fit a buffer of N bytes; no format, no text.
std::string formatted16384(const char* format, std::va_list args);
std::string formatted1024(const char* format, std::va_list args);
std::string textOf(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The "pointer to a cursor on the arguments" of the interfaces is the address of a va_list.
inline char** cursorOn(std::va_list* args) {
  return reinterpret_cast<char**>(args);
}

// The same as vprintf's argument, on a copy, so that a cursor can be used again.
std::string formattedAt(const char* format, char** args);

} // namespace Zarel

#endif
