/**
 * @file space_filling.h
 * Points that fill the space of the design variables, from the library's designs of experiments.
 */
#ifndef ZAREL_APP_SPACE_FILLING_H
#define ZAREL_APP_SPACE_FILLING_H

#include "variable.h"

#include <cstdint>
#include <vector>

namespace app {

/** Points, a row each. */
using Points = std::vector<std::vector<double>>;

/** Most factors and most points that a design of the program may have. */
constexpr int mostFactors = 1000;
constexpr int mostPoints = 10000;

/**
 * Chooses `count` points of coded values that lie far from each other and from those of `present`.
 * @param levels 0 for any value between -1 and 1; 2 or more for that many evenly spaced ones. The
 *               points are then different from each other and from `present`; there must be as
 * many.
 * @param seed   not 0
 */
Points spacedPoints(int count, int factors, int levels, const Points& present, unsigned seed);

/** Points of a space with levels, as a number that a double holds; infinity when it does not. */
double gridSize(int factors, int levels);

/** The level nearest to a coded value, as a coded value. */
double nearestLevel(double coded, int levels);

/**
 * The seed of a design, from the program's. A stream keeps what is drawn for one purpose apart from
 * the others; in stream 0 a seed that the designs take is taken as it is.
 */
unsigned designSeed(std::uint64_t seed, unsigned stream);

/**
 * `count` physical points, inside the bounds, that lie far from each other. Large numbers come in
 * blocks that do not know of each other.
 */
Points drawPoints(int count, const std::vector<Variable>& variables, std::uint64_t seed,
                  unsigned stream);

/** The two points that lie nearest to each other, and their distance; infinity below two points. */
struct NearestPair {
  double distance;
  std::size_t first;
  std::size_t second;
};
NearestPair nearestPair(const Points& points);

/** The smallest distance from one of `points` to one of `others`; infinity if there is none. */
double smallestDistance(const Points& points, const Points& others);

} // namespace app

#endif
