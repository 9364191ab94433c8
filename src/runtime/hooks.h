// What higher rooms lend to this one.
#ifndef ZAREL_RUNTIME_HOOKS_H
#define ZAREL_RUNTIME_HOOKS_H

namespace Zarel {

// Duplicates a text into a block of the library's allocator; null as long as nobody lends it.
extern char* (*duplicateText)(const char* text);

} // namespace Zarel

#endif
