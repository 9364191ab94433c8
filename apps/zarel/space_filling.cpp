#include "space_filling.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>

#include <zarel/C_BaseDesign.h>
#include <zarel/lm_mat.h>
#include <zarel/lm_vec.h>

namespace app {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
/// Points of one block of a large draw.
constexpr int blockSize = 2000;
/// Draws of which most points were there already, after which the levels are counted through
/// instead: nearly all of them are taken then.
constexpr int poorDraws = 3;

struct Free {
  void operator()(MAT* m) const { m_free(m); }
  void operator()(VEC* v) const { v_free(v); }
};

MAT* newMatrix(int rows, int columns) {
  MAT* const m = LM_m_get("design", 0, rows, columns, 0, nullptr, nullptr);
  if (!m) throw std::bad_alloc();
  return m;
}

/// A design that begins with given points, none if there are none, and gives them away as rows.
class Space : public Zarel::C_BaseDesign {
public:
  Space(int factors, int levels, const Points& present)
      : C_BaseDesign(factors, levels == 2 ? 2 : 0), levels_(levels) {
    DesignMatrix = newMatrix(static_cast<int>(present.size()), factors);
    for (std::size_t i = 0; i < present.size(); ++i)
      std::copy(present[i].begin(), present[i].end(), DesignMatrix->me[i]);
    point_.reset(LM_v_get("design", 0, factors, 0, nullptr, nullptr));
    if (!point_) throw std::bad_alloc();
  }

  /// Chooses points, which the design does not hold yet.
  Points choose(int count, unsigned seed) {
    const std::unique_ptr<MAT, Free> target(newMatrix(count, NumFactors));
    SetSeed(seed);
    if (AddRandomPoints(count, 0, 0, target.get()) != 0) throw std::bad_alloc();
    Points points;
    for (int i = 0; i < count; ++i)
      points.emplace_back(target->me[i], target->me[i] + NumFactors);
    return points;
  }

  /// Adds a point unless the design holds it.
  bool add(const std::vector<double>& point) {
    std::copy(point.begin(), point.end(), point_->ve);
    int error = 0;
    const bool added = AddSpecificPoint(point_.get(), static_cast<int>(DesignMatrix->m), &error);
    if (error != 0) throw std::bad_alloc();
    return added;
  }

  /// Chooses points on the levels and adds them; those that the design holds already fall away.
  Points addOnLevels(int count, unsigned seed) {
    Points added;
    for (auto& point : choose(count, seed)) {
      for (double& x : point)
        x = nearestLevel(x, levels_);
      if (add(point)) added.push_back(point);
    }
    return added;
  }

  /// Counts through the levels until so many points were free.
  Points addFree(int count) {
    Points added;
    std::vector<int> digits(static_cast<std::size_t>(NumFactors), 0);
    std::vector<double> point(digits.size());
    while (static_cast<int>(added.size()) < count) {
      for (std::size_t k = 0; k < digits.size(); ++k)
        point[k] = -1 + 2.0 * digits[k] / (levels_ - 1);
      if (add(point)) added.push_back(point);
      std::size_t k = 0;
      while (k < digits.size() && ++digits[k] == levels_)
        digits[k++] = 0;
      if (k == digits.size()) break; // all of them
    }
    return added;
  }

private:
  int levels_;
  std::unique_ptr<VEC, Free> point_;
};

void append(Points& to, const Points& from) {
  to.insert(to.end(), from.begin(), from.end());
}

Points pointsOnLevels(Space& space, int count, unsigned seed) {
  Points points;
  const auto missing = [&] { return count - static_cast<int>(points.size()); };
  for (int poor = 0; missing() > 0 && poor < poorDraws; seed = std::max(seed + 1, 1u)) {
    const Points added = space.addOnLevels(missing(), seed);
    if (2 * static_cast<int>(added.size()) < missing()) ++poor;
    append(points, added);
  }
  append(points, space.addFree(missing()));
  return points;
}

double squaredDistance(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0;
  for (std::size_t k = 0; k < a.size(); ++k)
    sum += (a[k] - b[k]) * (a[k] - b[k]);
  return sum;
}

/// Mixes all bits of a number into all others: Steele, Lea, Flood, "Fast splittable pseudorandom
/// number generators", OOPSLA 2014, the finaliser of their generator.
std::uint64_t mixed(std::uint64_t z) {
  z += 0x9e3779b97f4a7c15u;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
  return z ^ (z >> 31);
}

} // namespace

Points spacedPoints(int count, int factors, int levels, const Points& present, unsigned seed) {
  if (count == 0) return {};
  Space space(factors, levels, present);
  return levels == 0 ? space.choose(count, seed) : pointsOnLevels(space, count, seed);
}

double gridSize(int factors, int levels) {
  return std::pow(static_cast<double>(levels), factors);
}

double nearestLevel(double coded, int levels) {
  const double steps = levels - 1;
  const double level = std::round(std::clamp(0.5 * (coded + 1), 0.0, 1.0) * steps);
  return -1 + 2 * level / steps;
}

unsigned designSeed(std::uint64_t seed, unsigned stream) {
  if (stream == 0 && seed > 0 && seed <= std::numeric_limits<unsigned>::max())
    return static_cast<unsigned>(seed);
  return std::max(static_cast<unsigned>(mixed(mixed(seed) + stream) >> 32), 1u);
}

Points drawPoints(int count, const std::vector<Variable>& variables, std::uint64_t seed,
                  unsigned stream) {
  const int factors = static_cast<int>(variables.size());
  Points points;
  for (unsigned block = 0; static_cast<int>(points.size()) < count; ++block) {
    const int size = std::min(blockSize, count - static_cast<int>(points.size()));
    append(points, spacedPoints(size, factors, 0, {}, designSeed(mixed(seed) + block, stream)));
  }
  for (auto& point : points)
    for (std::size_t k = 0; k < variables.size(); ++k)
      point[k] = physicalValue(variables[k], point[k]);
  return points;
}

NearestPair nearestPair(const Points& points) {
  NearestPair pair{infinity, 0, 0};
  for (std::size_t i = 0; i < points.size(); ++i)
    for (std::size_t j = 0; j < i; ++j) {
      const double distance = squaredDistance(points[i], points[j]);
      if (distance < pair.distance) pair = {distance, j, i};
    }
  pair.distance = std::sqrt(pair.distance);
  return pair;
}

double smallestDistance(const Points& points, const Points& others) {
  double smallest = infinity;
  for (const auto& point : points)
    for (const auto& other : others)
      smallest = std::min(smallest, squaredDistance(point, other));
  return std::sqrt(smallest);
}

} // namespace app
