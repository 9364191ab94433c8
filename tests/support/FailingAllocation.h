// Makes the n-th allocation fail, for every n.
//
// Counted are, together, the allocations of the zarelmem_ family and of the global operator new.
// Link zarel_test_support; it brings its own operator new.
#ifndef TESTS_SUPPORT_FAILINGALLOCATION_H
#define TESTS_SUPPORT_FAILINGALLOCATION_H

#include <new>

#include <gtest/gtest.h>

#include <zarel/C_ZarelException.h>

namespace support {

// While it lives, the n-th allocation from now on fails, once or with all that follow; n below 1:
// none.
class FailingAllocation {
public:
  enum Duration { Once, FromThenOn };

  explicit FailingAllocation(long n, Duration duration = Once);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  // Whether that allocation came.
  static bool happened();
};

// Stops the counting for as long as it lives: for the checks inside an operation.
class Unharmed {
public:
  Unharmed();
  ~Unharmed();
  Unharmed(const Unharmed&) = delete;
  Unharmed& operator=(const Unharmed&) = delete;

private:
  long _left;
};

// Runs `operation` with its first allocation failing, then with its second, and so on, until it
// makes fewer than that. std::bad_alloc and the library's exception may leave the operation;
// anything else fails the test. Returns how many allocations were made to fail: expect it to be
// above 0.
//
// With `FromThenOn` the memory stays exhausted to the end of the operation, its reports included.
template <class Operation>
long forEachFailingAllocation(Operation operation,
                              FailingAllocation::Duration duration = FailingAllocation::Once,
                              long limit = 1000000) {
  for (long n = 1; n <= limit; ++n) {
    const FailingAllocation failing(n, duration);
    try {
      operation();
    } catch (const std::bad_alloc&) {
    } catch (const C_ZarelException&) {
    }
    if (!FailingAllocation::happened()) return n - 1;
  }
  ADD_FAILURE() << "the operation never got through";
  return limit;
}

} // namespace support

#endif
