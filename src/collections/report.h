// How the functions of this room tell what failed.
#ifndef ZAREL_COLLECTIONS_REPORT_H
#define ZAREL_COLLECTIONS_REPORT_H

namespace Zarel {

enum CollectionMessage : int {
  noMemory = 1001,
  flushFailed = 1003,
  nothingToRead = 2005,
  argumentMissing = 2500,
  tableMissing = 3122,
  noMemoryForTable = 3123,
  keyMissing = 3126
};

// Reports a message, to which `detail` is an argument, as an error of `function`. Returns -1.
int reported(CollectionMessage message, const char* detail = "",
             const char* function = __builtin_FUNCTION(), const char* file = __builtin_FILE(),
             int line = __builtin_LINE());

} // namespace Zarel

#endif
