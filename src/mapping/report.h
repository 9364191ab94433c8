// How the procedural functions of this room tell what failed.
#ifndef ZAREL_MAPPING_REPORT_H
#define ZAREL_MAPPING_REPORT_H

namespace Zarel {

// Numbers of messages, whose texts a host may bring.
enum MapMessage : int {
  outOfMemory = 3103,
  notMapped = 3122,
  notUnmapped = 3123,
  fileNotMade = 3124,
  fileNotDeleted = 3125,
  fileNotClosed = 3126,
  registerFailed = 3127
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
  // The same with the trace of a failing call, which was reported already.
  int failTraced() const;
};

} // namespace Zarel

#endif
