// Transient heat conduction in a square plate under a spot that circles over it.
//
//   du/dt = laplace(u) + q(x, y, t)   on the unit square, u = 0 on its edge, u = 0 at the start,
//
// in dimensionless form: lengths in sides of the plate, times in side^2 / diffusivity. The spot is
// a bell of width w that goes round the middle once a unit of `Spot::turn`.
//
// Finite differences on N x N inner points; in time the alternating direction implicit scheme
// (D. W. Peaceman, H. H. Rachford, The numerical solution of parabolic and elliptic differential
// equations, J. SIAM 3 (1955) 28-41): each half of a step is implicit in one direction, so that N
// tridiagonal systems with one matrix are solved. It is stable for any step and of second order in
// both.
#ifndef HEAT_SNAPSHOTS_HEAT_H
#define HEAT_SNAPSHOTS_HEAT_H

#include <zarel/C_MatMGe.h>
#include <zarel/C_VecPi.h>

namespace heat {

using Field = C_MatMGe<double>; ///< value (i, j) stands at x = (i + 1) h, y = (j + 1) h
using Line = C_VecPi<double, int, C_PtrInCore<double, int>>;

struct Spot {
  double power = 100;  ///< largest source
  double width = 0.06; ///< standard deviation of the bell
  double radius = 0.3; ///< of the circle
  double turn = 0.05;  ///< time of one turn
};

class Plate {
public:
  /// A cold plate of `points` x `points` inner points, with a fixed time step.
  Plate(int points, double step, const Spot& spot);

  /// Goes on by one step. Returns 0, or LAPACK's info.
  int advance();
  double time() const { return time_; }
  double spacing() const { return spacing_; }
  /// The temperatures; a test may set its own.
  Field& temperature() { return temperature_; }

private:
  void shapeSource();
  void explicitHalf();
  int implicitHalf();

  Spot spot_;
  int points_;
  double spacing_, step_, ratio_;
  double time_ = 0;
  Field temperature_, rightHand_;
  Line diagonal_, offDiagonal_; ///< factors of the one tridiagonal matrix
  Line alongRows_, alongColumns_;
  int info_ = 0;
};

} // namespace heat

#endif
