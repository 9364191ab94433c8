#include "numerics/cpu_features.h"

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace Zarel::numerics {

namespace {

constexpr std::uint32_t bit(int position) {
  return std::uint32_t{1} << position;
}

// Intel 64 and IA-32 Architectures Software Developer's Manual, volume 2A, CPUID; volume 1, 13.1.
constexpr std::uint32_t fma = bit(12), osxsave = bit(27), avx = bit(28);          // leaf 1, ECX
constexpr std::uint32_t avx2 = bit(5);                                            // leaf 7, EBX
constexpr std::uint32_t avx512 = bit(16) | bit(17) | bit(28) | bit(30) | bit(31); // F DQ CD BW VL
constexpr std::uint64_t ymmState = bit(1) | bit(2);                               // XCR0
constexpr std::uint64_t zmmState = ymmState | bit(5) | bit(6) | bit(7);

template <class Word>
bool has(Word word, Word bits) {
  return (word & bits) == bits;
}

} // namespace

VectorLevel vectorLevel(const CpuWords& words) {
  if (!has(words.leaf1Ecx, osxsave | avx) || !has(words.xcr0, ymmState)) return VectorLevel::Sse;
  if (!has(words.leaf1Ecx, fma) || !has(words.leaf7Ebx, avx2)) return VectorLevel::Avx;
  if (!has(words.leaf7Ebx, avx512) || !has(words.xcr0, zmmState)) return VectorLevel::Avx2;
  return VectorLevel::Avx512;
}

#if defined(__x86_64__)
CpuWords readCpuWords() {
  CpuWords words;
  unsigned a, b, c, d;
  if (!__get_cpuid(1, &a, &b, &c, &d)) return words;
  words.leaf1Ecx = c;
  if (__get_cpuid_count(7, 0, &a, &b, &c, &d)) words.leaf7Ebx = b;
  if (has(words.leaf1Ecx, osxsave)) {
    __asm__("xgetbv" : "=a"(a), "=d"(d) : "c"(0));
    words.xcr0 = (std::uint64_t{d} << 32) | a;
  }
  return words;
}
#else
CpuWords readCpuWords() {
  return {};
}
#endif

} // namespace Zarel::numerics
