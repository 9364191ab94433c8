// The two words with which the rooms report a failure.
#ifndef ZAREL_RUNTIME_FAIL_H
#define ZAREL_RUNTIME_FAIL_H

namespace Zarel {

// Throws the library's exception with origin "Throwing" and key "DefaultMessageTool". Reason 100
// takes the reason from errno.
[[noreturn]] void fail(int code, int reason = 0, const char* file = __builtin_FILE(),
                       int line = __builtin_LINE());

// Leaves the trace of a failing return and gives the -1 to return.
int traced(const char* file = __builtin_FILE(), int line = __builtin_LINE());

} // namespace Zarel

#endif
