// A table of system calls that a test may change.
#ifndef TESTS_SYSTEM_OWNSYSTEMCALLS_H
#define TESTS_SYSTEM_OWNSYSTEMCALLS_H

#include "system/calls.h"

// For as long as it lives, what a test puts into the table lasts.
class OwnSystemCalls {
public:
  OwnSystemCalls() : _former(Zarel::systemCalls()) {}
  ~OwnSystemCalls() { Zarel::systemCalls() = _former; }
  OwnSystemCalls(const OwnSystemCalls&) = delete;
  OwnSystemCalls& operator=(const OwnSystemCalls&) = delete;

private:
  Zarel::SystemCalls _former;
};

#endif
