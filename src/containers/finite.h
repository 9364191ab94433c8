// The search for NaN and infinity, in one fast pass.
#ifndef ZAREL_CONTAINERS_FINITE_H
#define ZAREL_CONTAINERS_FINITE_H

#include <complex>
#include <type_traits>

namespace Zarel {

/**
 * Adds up every value times 0, which is 0 for all but NaN and infinity. Eight sums side by side, so
 * that compilers take several at a time without changing any order of additions.
 */
template <class Real>
bool zeroTimesAllIsZero(Real const* values, long long count) {
  constexpr int lanes = 8;
  Real sums[lanes] = {};
  long long i = 0;
  for (; i + lanes <= count; i += lanes)
    for (int k = 0; k < lanes; ++k)
      sums[k] += values[i + k] * Real(0);
  for (; i < count; ++i)
    sums[0] += values[i] * Real(0);
  Real all = 0;
  for (const Real sum : sums)
    all += sum;
  return all == 0;
}

inline bool allFinite(double const* values, long long count) {
  return zeroTimesAllIsZero(values, count);
}
inline bool allFinite(float const* values, long long count) {
  return zeroTimesAllIsZero(values, count);
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
