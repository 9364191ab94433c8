#include "design/Candidates.h"

#include <algorithm>
#include <cstring>

namespace Zarel {

namespace {

constexpr double farAway = 1e30; // the distance to no point at all

// Two numbers in a register of any x86-64 or ARM processor; eight of them hold a tile's sums.
using Pair = double __attribute__((vector_size(2 * sizeof(double))));
constexpr int registers = 8;
constexpr int width = 2 * registers;

Pair load(const double* from) {
  Pair pair;
  std::memcpy(&pair, from, sizeof pair);
  return pair;
}

// Lowers the distances of a tile to what they are from one point. A sum that is not a number
// leaves its distance alone.
void lower(const double* coordinates, std::size_t factors, const double* point, double* nearest) {
  Pair sums[registers] = {};
  for (std::size_t f = 0; f < factors; ++f) {
    const double* const values = coordinates + f * width;
#pragma GCC unroll 8
    for (int r = 0; r < registers; ++r) {
      const Pair difference = load(values + 2 * r) - point[f];
      sums[r] += difference * difference;
    }
  }
#pragma GCC unroll 8
  for (int r = 0; r < registers; ++r) {
    const Pair former = load(nearest + 2 * r);
    const Pair smaller = sums[r] < former ? sums[r] : former;
    std::memcpy(nearest + 2 * r, &smaller, sizeof smaller);
  }
}

double asCorner(double x) {
  return x >= 0 ? 1.0 : -1.0;
}

} // namespace

Candidates::Candidates(int factors, int count, int points)
    : _factors(static_cast<std::size_t>(factors)),
      _count(count),
      _tiles((static_cast<std::size_t>(count) + tileSize - 1) / tileSize),
      _coordinates(tileSize * factors, static_cast<int>(_tiles)),
      _points(factors, points),
      _nearest(static_cast<int>(_tiles) * tileSize, farAway),
      _bound(static_cast<int>(_tiles), farAway),
      _seen(static_cast<int>(_tiles), 0) {
  static_assert(tileSize == width, "a tile is what the registers hold");
  std::fill(_nearest.Adr(0) + count, _nearest.Adr(0) + _nearest.Dim(), -1.0);
}

double* Candidates::tile(std::size_t t) {
  return _coordinates[static_cast<int>(t)];
}

int Candidates::draw(C_RandNum& random, bool corners) {
  C_VecPi<double, int, C_PtrInCore<double, int>> numbers(static_cast<int>(_factors), 0.0);
  double* const from = numbers.Adr(0);
  for (int k = 0; k < _count; ++k) {
    if (random.GetRandNum(numbers.Dim(), from) != 0) return 1;
    if (corners) std::transform(from, from + _factors, from, asCorner);
    double* const to = _coordinates[k / tileSize] + k % tileSize;
    for (std::size_t f = 0; f < _factors; ++f)
      to[f * tileSize] = from[f];
  }
  return 0;
}

void Candidates::keepAwayFrom(const double* point) {
  std::copy(point, point + _factors, _points[static_cast<int>(_pointCount)]);
  ++_pointCount;
}

void Candidates::update(std::size_t t) {
  double* const nearest = _nearest.Adr(static_cast<int>(t) * tileSize);
  int& seen = *_seen.Adr(static_cast<int>(t));
  for (; seen < static_cast<int>(_pointCount); ++seen)
    lower(tile(t), _factors, _points[seen], nearest);
  *_bound.Adr(static_cast<int>(t)) = *std::max_element(nearest, nearest + tileSize);
}

int Candidates::farthest(double& distance) {
  distance = -1.0;
  int best = 0;
  const double* const bound = _bound.Adr(0);
  for (std::size_t t = 0; t < _tiles; ++t) {
    if (bound[t] <= distance) continue; // equal ones give way to the first
    update(t);
    if (bound[t] <= distance) continue;
    distance = bound[t];
    best = static_cast<int>(t);
  }
  const double* const nearest = _nearest.Adr(best * tileSize);
  return best * tileSize +
         static_cast<int>(std::find(nearest, nearest + tileSize, distance) - nearest);
}

void Candidates::copy(int candidate, double* point) const {
  const double* const from = _coordinates[candidate / tileSize] + candidate % tileSize;
  for (std::size_t f = 0; f < _factors; ++f)
    point[f] = from[f * tileSize];
}

} // namespace Zarel
