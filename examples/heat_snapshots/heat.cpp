#include "heat.h"

#include <cmath>
#include <utility>

#include <zarel/itf.h>

namespace heat {

namespace {

constexpr double pi = 3.14159265358979323846;

double square(double x) {
  return x * x;
}

} // namespace

Plate::Plate(int points, double step, const Spot& spot)
    : spot_(spot),
      points_(points),
      spacing_(1.0 / (points + 1)),
      step_(step),
      ratio_(0.5 * step / square(spacing_)),
      temperature_(points, points),
      rightHand_(points, points),
      diagonal_(points, 1 + 2 * ratio_),
      offDiagonal_(points, -ratio_),
      alongRows_(points),
      alongColumns_(points) {
  ITF_dpttrf(points_, diagonal_.Adr(0), offDiagonal_.Adr(0), &info_);
}

// The bell is a product of one factor for each direction. It is taken in the middle of the step.
void Plate::shapeSource() {
  const double angle = 2 * pi * (time_ + 0.5 * step_) / spot_.turn;
  const double x = 0.5 + spot_.radius * std::cos(angle), y = 0.5 + spot_.radius * std::sin(angle);
  for (int i = 0; i < points_; ++i) {
    const double place = (i + 1) * spacing_;
    alongRows_[i] = std::exp(-0.5 * square((place - x) / spot_.width));
    alongColumns_[i] = std::exp(-0.5 * square((place - y) / spot_.width));
  }
}

// Differences across columns, and half of the source.
void Plate::explicitHalf() {
  for (int j = 0; j < points_; ++j) {
    const double heat = 0.5 * step_ * spot_.power * alongColumns_[j];
    const double* const here = temperature_[j];
    double* const result = rightHand_[j];
    for (int i = 0; i < points_; ++i)
      result[i] = (1 - 2 * ratio_) * here[i] + heat * alongRows_[i];
    for (const int next : {j - 1, j + 1})
      if (next >= 0 && next < points_) ITF_daxpy(points_, ratio_, temperature_[next], 1, result, 1);
  }
}

// A tridiagonal system for each column; then rows become columns, and the other half may follow.
int Plate::implicitHalf() {
  int info = 0;
  ITF_dpttrs(points_, points_, diagonal_.Adr(0), offDiagonal_.Adr(0), rightHand_.Adr(), points_,
             &info);
  for (int j = 0; j < points_; ++j)
    for (int i = 0; i < points_; ++i)
      temperature_(i, j) = rightHand_(j, i);
  return info;
}

int Plate::advance() {
  shapeSource();
  for (int half = 0; half < 2; ++half) {
    explicitHalf();
    if (info_ == 0) info_ = implicitHalf();
    std::swap(alongRows_, alongColumns_);
  }
  time_ += step_;
  return info_;
}

} // namespace heat
