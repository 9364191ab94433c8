// What a piece of code writes to standard output and standard error.
#ifndef TESTS_SUPPORT_CAPTURE_H
#define TESTS_SUPPORT_CAPTURE_H

#include <functional>
#include <string>

namespace support {

struct Captured {
  std::string out;
  std::string err;
};

// Runs `code` with both streams redirected, descriptors included, and puts them back even when
// it throws.
Captured capture(const std::function<void()>& code);

} // namespace support

#endif
