/**
 * @file scaling.h
 * One column scaled, in one place: samples and points must be scaled by the same arithmetic, so
 * that a point that is a sample has distance 0 from it.
 */
#ifndef ZAREL_KRIGING_SCALING_H
#define ZAREL_KRIGING_SCALING_H

namespace Zarel {

/** out := intercept + scale * x, `rows` values; in and out may be the same. */
template <class T>
void scaleColumn(const T* x, int rows, double scale, T intercept, T* out) {
  for (int i = 0; i < rows; ++i)
    out[i] = intercept + scale * x[i];
}

} // namespace Zarel

#endif
