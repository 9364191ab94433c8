#include "sampler.h"

#include "failure.h"

#include <algorithm>
#include <limits>

#include <zarel/C_RandNum.h>

namespace app::refine {
namespace {

constexpr int spreadDraws = 32;
/// Work that choosing among draws may cost, in coordinate differences.
constexpr double spreadWork = 2e8;

using Points = std::vector<std::vector<double>>;

double squaredDistance(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0;
  for (std::size_t k = 0; k < a.size(); ++k)
    sum += (a[k] - b[k]) * (a[k] - b[k]);
  return sum;
}

double smallestDistance(const Points& points) {
  double smallest = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < points.size(); ++i)
    for (std::size_t j = 0; j < i; ++j)
      smallest = std::min(smallest, squaredDistance(points[i], points[j]));
  return smallest;
}

void stretch(Points& points, const std::vector<Variable>& variables) {
  for (auto& point : points)
    for (std::size_t k = 0; k < variables.size(); ++k) {
      const Variable& v = variables[k];
      point[k] = std::clamp(v.low + (v.high - v.low) * point[k], v.low, v.high);
    }
}

} // namespace

RandomSampler::RandomSampler(std::uint64_t seed, unsigned stream) : seed_(seed), stream_(stream) {}

Points RandomSampler::unitPoints(int count, int columns) {
  const unsigned seeds[] = {static_cast<unsigned>(seed_ & 0xFFFFFFFFu),
                            static_cast<unsigned>(seed_ >> 32), stream_, draws_++};
  unsigned words[2 * 4];
  for (int i = 0; i < 4; ++i) { // halves under a set bit, for the generator refuses a 0
    words[2 * i] = (seeds[i] & 0xFFFFu) | 0x10000u;
    words[2 * i + 1] = (seeds[i] >> 16) | 0x10000u;
  }
  C_RandNum random;
  Points points(static_cast<std::size_t>(count),
                std::vector<double>(static_cast<std::size_t>(columns)));
  int failed = random.Init(8, words);
  for (auto& point : points)
    failed |= random.GetRandNum(columns, point.data());
  if (failed) throw Failure(ExitCode::failure, "no random numbers");
  return points;
}

Points RandomSampler::draw(int count, const std::vector<Variable>& variables) {
  Points points = unitPoints(count, static_cast<int>(variables.size()));
  stretch(points, variables);
  return points;
}

Points SpreadSampler::draw(int count, const std::vector<Variable>& variables) {
  const double pairs = 0.5 * count * count * static_cast<double>(variables.size());
  const int draws =
      static_cast<int>(std::clamp(spreadWork / std::max(pairs, 1.0), 1.0, double(spreadDraws)));
  Points best;
  double bestDistance = -1;
  for (int i = 0; i < draws; ++i) {
    Points points = unitPoints(count, static_cast<int>(variables.size()));
    const double distance = draws > 1 ? smallestDistance(points) : 0;
    if (distance <= bestDistance) continue;
    bestDistance = distance;
    best = std::move(points);
  }
  stretch(best, variables);
  return best;
}

} // namespace app::refine
