#include "library.h"

#include <algorithm>

namespace app::library {

namespace {

Details* current = nullptr;

} // namespace

Details::Details() : former_(current) {
  current = this;
}

Details::~Details() {
  current = former_;
}

std::string Details::text() const {
  return text_;
}

double expectedTrials(int multipliers) {
  // A pass tries each multiplier up to twice and then moves; a last fit follows the search.
  const double passes = multipliers < 2 ? 2 : std::min(multipliers, 4);
  return 2 + passes * (2.0 * multipliers + 1);
}

FitProgress::FitProgress(Console& console, const std::string& what, Kriging<double>& model)
    : progress_(console, what, 0), former_(nullptr) {
  int multipliers = 0;
  int optimise = 0;
  model.GetNumKern(multipliers);
  model.GetKrigingKernOptType(optimise);
  progress_.setTotal(optimise != 0 ? expectedTrials(multipliers) : 1);
}

FitProgress::~FitProgress() = default;

} // namespace app::library
