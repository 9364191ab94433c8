#include "system/environment.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace Zarel {

std::optional<std::string> environment(const char* name) {
  const char* value = std::getenv(name);
  if (!value) return std::nullopt;
  return std::string(value);
}

int numberIn(const char* text) {
  const long long number = std::strtoll(text, nullptr, 10);
  return static_cast<int>(std::clamp<long long>(number, INT_MIN, INT_MAX));
}

} // namespace Zarel
