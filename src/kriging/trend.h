/**
 * @file trend.h
 * The terms of the regression polynomial.
 */
#ifndef ZAREL_KRIGING_TREND_H
#define ZAREL_KRIGING_TREND_H

#include <zarel/Kriging.h>

namespace Zarel {

/** Number of terms of a trend in n variables, or -1 for an unknown type. */
inline long long trendTerms(int type, long long n) {
  switch (type) {
  case E_PolyNone:
    return 0;
  case E_PolyConst:
    return 1;
  case E_PolyLinear:
    return n + 1;
  case E_PolyPureQuad:
    return 2 * n + 1;
  case E_PolyFullQuad:
    return (n + 1) * (n + 2) / 2;
  default:
    return -1;
  }
}

/** The first type, from the poorest, with that many terms, or -1. With one variable the two
 *  quadratics are the same, and the pure one is meant. */
inline int trendOfTerms(int terms, int n) {
  for (int type = E_PolyNone; type <= E_PolyFullQuad; ++type)
    if (trendTerms(type, n) == terms) return type;
  return -1;
}

/** Fills f (rows x terms, leading dimension ldf) with the terms of x (rows x n, ldx). */
template <class T>
void fillTrend(int type, int n, int rows, const T* x, long ldx, T* f, long ldf) {
  const auto next = [&](auto value) {
    for (int i = 0; i < rows; ++i)
      f[i] = value(i);
    f += ldf;
  };
  if (type == E_PolyNone) return;
  next([](int) { return T(1.0); });
  if (type == E_PolyConst) return;
  for (int k = 0; k < n; ++k)
    next([=](int i) { return x[k * ldx + i]; });
  if (type == E_PolyPureQuad)
    for (int k = 0; k < n; ++k)
      next([=](int i) { return x[k * ldx + i] * x[k * ldx + i]; });
  if (type == E_PolyFullQuad)
    for (int i = 0; i < n; ++i)
      for (int j = i; j < n; ++j)
        next([=](int row) { return x[j * ldx + row] * x[i * ldx + row]; });
}

} // namespace Zarel

#endif
