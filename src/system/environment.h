// Environment variables.
#ifndef ZAREL_SYSTEM_ENVIRONMENT_H
#define ZAREL_SYSTEM_ENVIRONMENT_H

#include <optional>
#include <string>

namespace Zarel {

// A private copy of a variable's value; nothing if it is not set.
std::optional<std::string> environment(const char* name);

// The number at the head of a text, as atoi reads it; 0 if there is none. Numbers beyond the range
// of an int give its nearest end.
int numberIn(const char* text);

} // namespace Zarel

#endif
