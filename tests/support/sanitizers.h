// Which sanitizers the tests are built with, for gcc and for clang.
#ifndef ZAREL_TESTS_SUPPORT_SANITIZERS_H
#define ZAREL_TESTS_SUPPORT_SANITIZERS_H

#if defined(__has_feature)
#define ZAREL_TESTS_HAS_FEATURE(name) __has_feature(name)
#else
#define ZAREL_TESTS_HAS_FEATURE(name) 0
#endif

namespace support {

#if defined(__SANITIZE_ADDRESS__) || ZAREL_TESTS_HAS_FEATURE(address_sanitizer)
constexpr bool addressSanitizer = true;
#else
constexpr bool addressSanitizer = false;
#endif

#if defined(__SANITIZE_THREAD__) || ZAREL_TESTS_HAS_FEATURE(thread_sanitizer)
constexpr bool threadSanitizer = true;
#else
constexpr bool threadSanitizer = false;
#endif

} // namespace support

#endif
