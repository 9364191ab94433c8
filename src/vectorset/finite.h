// The search for NaN and infinity, in one fast pass.
#ifndef ZAREL_VECTORSET_FINITE_H
#define ZAREL_VECTORSET_FINITE_H

#include <complex>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Zarel {

/** Looks at the exponents as whole numbers, which compilers do many at a time. */
template <class Bits, class Real>
bool allExponentsFinite(Real const* values, long long count, Bits exponent) {
  Bits bad = 0;
  for (long long i = 0; i < count; ++i) {
    Bits bits;
    std::memcpy(&bits, values + i, sizeof bits);
    bad |= static_cast<Bits>((bits & exponent) == exponent);
  }
  return bad == 0;
}

inline bool allFinite(double const* values, long long count) {
  return allExponentsFinite<std::uint64_t>(values, count, 0x7ff0000000000000ULL);
}
inline bool allFinite(float const* values, long long count) {
  return allExponentsFinite<std::uint32_t>(values, count, 0x7f800000U);
}
template <class Real>
bool allFinite(std::complex<Real> const* values, long long count) {
  return allFinite(reinterpret_cast<Real const*>(values), 2 * count);
}
template <class Integer>
std::enable_if_t<std::is_integral_v<Integer>, bool> allFinite(Integer const*, long long) {
  return true;
}

} // namespace Zarel

#endif
