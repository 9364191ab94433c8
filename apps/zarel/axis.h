/**
 * @file axis.h
 * Scales of charts: a range of values, round numbers on it, and how they are written.
 */
#ifndef ZAREL_APP_AXIS_H
#define ZAREL_APP_AXIS_H

#include <string>
#include <vector>

namespace app {

/** A linear or logarithmic scale with its ticks. */
struct Axis {
  double low = 0;
  double high = 1;
  bool logarithmic = false;
  std::vector<double> ticks;

  /** Where a value stands: 0 at `low`, 1 at `high`. */
  double position(double value) const;
};

/** Covers the range with about `wanted` ticks at 1, 2 or 5 times a power of ten. */
Axis linearAxis(double low, double high, int wanted);
/** The same for positive values on a logarithmic scale, with ticks at 1, 2, 5 or at 1 alone. */
Axis logAxis(double low, double high);

/** A tick's text: "0.25", "1200", "2.5e+06". */
std::string tickText(double value);
/** A share as a percentage: "0.5 %". */
std::string percentText(double share);

} // namespace app

#endif
