#include "runtime/format.h"

#include <cstdio>

namespace Zarel {

namespace {

template <int N>
std::string formattedIn(const char* format, std::va_list args) {
  if (!format) return {};
  char buffer[N];
  return std::vsnprintf(buffer, N, format, args) < 0 ? std::string() : std::string(buffer);
}

} // namespace

std::string formatted16384(const char* format, std::va_list args) {
  return formattedIn<16384>(format, args);
}

std::string formatted1024(const char* format, std::va_list args) {
  return formattedIn<1024>(format, args);
}

std::string textOf(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  std::string text = formatted1024(format, args);
  va_end(args);
  return text;
}

std::string formattedAt(const char* format, char** cursor) {
  if (!cursor) return format ? format : "";
  std::va_list args;
  va_copy(args, *reinterpret_cast<std::va_list*>(cursor));
  std::string text = formatted16384(format, args);
  va_end(args);
  return text;
}

} // namespace Zarel
