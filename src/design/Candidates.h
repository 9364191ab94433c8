// The greedy choice of points that lie far apart.
#ifndef ZAREL_DESIGN_CANDIDATES_H
#define ZAREL_DESIGN_CANDIDATES_H

#include <cstddef>

#include <zarel/C_MatMGe.h>
#include <zarel/C_RandNum.h>
#include <zarel/C_VecPi.h>

namespace Zarel {

// Candidates, the points that they have to keep away from, and the squared distance of each
// candidate to the nearest of these.
//
// Distances only fall, so a distance that is behind the times is a bound from above. Candidates
// stand in tiles, and a tile is brought up to date only when its largest distance, as last known,
// exceeds the best one found in the present search.
class Candidates {
public:
  // `factors` coordinates, `count` candidates, room for `points` points. Throws 1001 and 2880.
  Candidates(int factors, int count, int points);

  // Fills in the candidates, each from the next `factors` numbers; with `corners` every number
  // becomes the nearer one of -1 and 1. Returns what the generator returns.
  int draw(C_RandNum& random, bool corners);

  // One more point to keep away from, of `factors` coordinates. It must have room.
  void keepAwayFrom(const double* point);

  // Finds the candidate of the largest distance, the first of equal ones, and that distance.
  int farthest(double& distance);

  // Writes the coordinates of a candidate.
  void copy(int candidate, double* point) const;

private:
  static constexpr int tileSize = 16;

  double* tile(std::size_t t);
  void update(std::size_t t);

  std::size_t _factors;
  int _count;
  std::size_t _tiles;
  C_MatMGe<double> _coordinates; // a column a tile; there `tileSize` values a factor
  C_MatMGe<double> _points;      // a column a point
  std::size_t _pointCount = 0;
  C_VecPi<double, int, C_PtrInCore<double, int>> _nearest; // -1 behind the last candidate
  C_VecPi<double, int, C_PtrInCore<double, int>> _bound;   // largest in each tile, as last known
  C_VecPi<int, int, C_PtrInCore<int, int>> _seen;          // points that each tile has heard of
};

} // namespace Zarel

#endif
