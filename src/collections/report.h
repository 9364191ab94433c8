// How the functions of this room tell what failed.
#ifndef ZAREL_COLLECTIONS_REPORT_H
#define ZAREL_COLLECTIONS_REPORT_H

#include <cstdio>

namespace Zarel {

enum CollectionMessage : int {
  noMemory = 1001,
  writeFailed = 1003,
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

// Tells what became of a print: 0, or -1 as an error of `function` if the stream did not take it.
// What is still in the stream's buffer fails later, before its owner.
int printedOn(FILE* file, const char* function = __builtin_FUNCTION());

} // namespace Zarel

#endif
