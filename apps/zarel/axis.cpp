#include "axis.h"

#include "number.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace app {
namespace {

double niceStep(double rough) {
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  for (double factor : {1.0, 2.0, 5.0})
    if (rough <= factor * power * (1 + 1e-9)) return factor * power;
  return 10 * power;
}

void addDecade(Axis& axis, double power, bool dense) {
  for (double factor : {1.0, 2.0, 5.0}) {
    const double tick = factor * power;
    if ((factor == 1.0 || dense) && tick >= axis.low * (1 - 1e-9) && tick <= axis.high * (1 + 1e-9))
      axis.ticks.push_back(tick);
  }
}

} // namespace

double Axis::position(double value) const {
  if (logarithmic) return std::log(value / low) / std::log(high / low);
  return (value - low) / (high - low);
}

Axis linearAxis(double low, double high, int wanted) {
  const double size = std::max({std::fabs(low), std::fabs(high), 1e-300});
  if (!(high - low > 1e-12 * size)) {
    low -= 0.5 * size;
    high += 0.5 * size;
  }
  Axis axis;
  const double step = niceStep((high - low) / wanted);
  axis.low = step * std::floor(low / step + 1e-9);
  axis.high = step * std::ceil(high / step - 1e-9);
  const int steps = static_cast<int>(std::lround((axis.high - axis.low) / step));
  for (int i = 0; i <= steps; ++i) {
    const double tick = axis.low + i * step;
    axis.ticks.push_back(std::fabs(tick) < 1e-9 * step ? 0.0 : tick);
  }
  return axis;
}

Axis logAxis(double low, double high) {
  Axis axis;
  axis.logarithmic = true;
  axis.low = low / 1.3;
  axis.high = high * 1.3;
  const bool dense = axis.high / axis.low < 2e3;
  const int first = static_cast<int>(std::floor(std::log10(axis.low)));
  const int last = static_cast<int>(std::ceil(std::log10(axis.high)));
  const int every = std::max(1, (last - first) / 8);
  for (int decade = first; decade <= last; decade += every)
    addDecade(axis, std::pow(10.0, decade), dense);
  return axis;
}

std::string tickText(double value) {
  return roundedText(value, 6);
}

std::string percentText(double share) {
  return roundedText(100 * share, 3) + " %";
}

} // namespace app
