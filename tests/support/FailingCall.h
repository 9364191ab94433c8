// Makes the n-th system call fail, for every n: of those that stand in the library's table.
#ifndef TESTS_SUPPORT_FAILINGCALL_H
#define TESTS_SUPPORT_FAILINGCALL_H

#include <cerrno>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include <zarel/C_ZarelException.h>

namespace support {

// While it lives, the n-th call from now on fails, once, with the given errno; n below 1: none.
// With a name only the calls of that entry of the table count. A descriptor whose close fails is
// closed all the same, as the system does it; whatever else fails has no effect.
class FailingCall {
public:
  explicit FailingCall(long n, const char* name = nullptr, int error = EIO);
  ~FailingCall();
  FailingCall(const FailingCall&) = delete;
  FailingCall& operator=(const FailingCall&) = delete;

  // Whether that call came.
  static bool happened();
  // The name of the call that failed; empty if none did.
  static std::string failed();
  // The calls that counted so far.
  static long count();
};

// Runs `operation` with its first system call failing, then with its second, and so on, until it
// makes fewer than that. The library's exception and std::bad_alloc may leave the operation;
// anything else fails the test. Returns how many calls were made to fail: expect it to be above 0.
template <class Operation>
long forEachFailingCall(Operation operation, const char* name = nullptr, int error = EIO,
                        long limit = 1000000) {
  for (long n = 1; n <= limit; ++n) {
    const FailingCall failing(n, name, error);
    try {
      operation();
    } catch (const std::bad_alloc&) {
    } catch (const C_ZarelException&) {
    }
    if (!FailingCall::happened()) return n - 1;
  }
  ADD_FAILURE() << "the operation never got through";
  return limit;
}

} // namespace support

#endif
