/**
 * @file cpu_features.h
 * The vector instructions that the processor has and the operating system lets programs use.
 */
#ifndef ZAREL_NUMERICS_CPU_FEATURES_H
#define ZAREL_NUMERICS_CPU_FEATURES_H

#include <cstdint>

namespace Zarel::numerics {

/** Steps of x86-64 vector instructions, each with all before it. */
enum class VectorLevel { Sse, Avx, Avx2, Avx512 };

/** The words in which processor and operating system tell what there is. */
struct CpuWords {
  std::uint32_t leaf1Ecx = 0; /**< CPUID leaf 1, ECX */
  std::uint32_t leaf7Ebx = 0; /**< CPUID leaf 7.0, EBX */
  std::uint64_t xcr0 = 0;     /**< XGETBV 0: the registers the system saves; 0 without OSXSAVE */
};

/** The words of this machine; all zero on other processors than x86-64. */
CpuWords readCpuWords();

/** The highest level whose instructions exist and whose registers the system saves. `Avx512` means
 * the foundation with the CD, BW, DQ and VL parts, as SkylakeX has them. */
VectorLevel vectorLevel(const CpuWords& words);

} // namespace Zarel::numerics

#endif
