// How the procedural functions of this room tell what failed.
#ifndef ZAREL_MAPPING_REPORT_H
#define ZAREL_MAPPING_REPORT_H

namespace Zarel {

// Numbers in the family of messages that starts at 3100.
enum MapMessage : int {
  outOfMemory = 3,
  notMapped = 22,
  notUnmapped = 23,
  fileNotMade = 24,
  fileNotDeleted = 25,
  fileNotClosed = 26,
  registerFailed = 27
};

// Where a function of this room was called, and where its result goes.
struct Caller {
  const char* source;
  int line;
  int* error; // may be null

  // The call is a success until something fails.
  void succeed() const {
    if (error) *error = 0;
  }
  // Stores -1, and returns it.
  int refuse() const {
    if (error) *error = -1;
    return -1;
  }
  // The same with a report as an error of `function`.
  int fail(MapMessage message, const char* function = __builtin_FUNCTION()) const;
};

} // namespace Zarel

#endif
