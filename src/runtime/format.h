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

// Message numbers are enumerations of int, which pass through "..." as the int that they are; clang
// warns of them all the same.
#if defined(__clang__)
#define ZAREL_VA_START(args, last)                                                                 \
  _Pragma("clang diagnostic push") _Pragma("clang diagnostic ignored \"-Wvarargs\"")               \
      va_start(args, last);                                                                        \
  _Pragma("clang diagnostic pop")
#else
#define ZAREL_VA_START(args, last) va_start(args, last)
#endif

// Runs `body` with `args` at the arguments behind `last`.
#define ZAREL_WITH_ARGS(last, body)                                                                \
  do {                                                                                             \
    std::va_list args;                                                                             \
    ZAREL_VA_START(args, last);                                                                    \
    body;                                                                                          \
    va_end(args);                                                                                  \
  } while (false)

// Returns what `call`, with `args` at the arguments behind `last`, gives.
#define ZAREL_RETURN_WITH_ARGS(last, call)                                                         \
  std::va_list args;                                                                               \
  ZAREL_VA_START(args, last);                                                                      \
  const auto result = call;                                                                        \
  va_end(args);                                                                                    \
  return result

#endif
