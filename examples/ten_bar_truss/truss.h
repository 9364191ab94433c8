/**
 * @file truss.h
 * The ten-bar planar truss, the best known small problem of structural optimisation.
 *
 * @code
 *      5 ────1──── 3 ────2──── 1        y
 *        ╲       ╱ │ ╲       ╱ │        │
 *          7   8   │   9  10   │        └── x
 *            ╳     5     ╳     6
 *          ╱   ╲   │   ╱   ╲   │
 *        ╱       ╲ │ ╱       ╲ │
 *      6 ────3──── 4 ────4──── 2
 *                  │P          │P
 * @endcode
 *
 * Nodes 5 and 6 are held by the wall. Members 1 to 6 are L = 360 in long, the diagonals 7 to 10
 * (7: 4-5, 8: 3-6, 9: 2-3, 10: 1-4) are L sqrt(2). Load case 1 of the literature: P = 1e5 lb
 * downwards at nodes 2 and 4. Units are inches, pounds (force for P, weight for rho) and psi.
 *
 * Geometry, material and loads: V. B. Venkayya, "Design of optimum structures", Computers &
 * Structures 1 (1971) 265-309; L. A. Schmit and B. Farshi, "Some approximation concepts for
 * structural synthesis", AIAA Journal 12 (1974) 692-699; R. T. Haftka and Z. Gürdal, "Elements of
 * Structural Optimization", 3rd ed., Kluwer 1992.
 */
#ifndef ZAREL_EXAMPLES_TEN_BAR_TRUSS_H
#define ZAREL_EXAMPLES_TEN_BAR_TRUSS_H

#include <array>

namespace truss {

constexpr int NumNodes = 6;
constexpr int NumFreeNodes = 4; ///< nodes 1 to 4; the wall holds 5 and 6
constexpr int NumMembers = 10;

constexpr double Length = 360.0;  ///< in, of a horizontal or vertical member
constexpr double Modulus = 1.0e7; ///< psi
constexpr double Density = 0.1;   ///< lb/in^3
constexpr double Load = 1.0e5;    ///< lb

/// Cross-section areas of members 1 to 10, in^2.
using Areas = std::array<double, NumMembers>;

/// Ends of a member, as indices into Nodes.
struct Member {
  int from;
  int to;
};

struct Point {
  double x;
  double y;
};

/// Coordinates of nodes 1 to 6, in.
extern const std::array<Point, NumNodes> Nodes;
/// Members 1 to 10.
extern const std::array<Member, NumMembers> Members;
/// Forces on nodes 1 to 4 as (x, y) pairs, lb.
extern const std::array<double, 2 * NumFreeNodes> Loads;

/// What a structural analysis gives.
struct Response {
  double weight;                                     ///< lb
  std::array<double, 2 * NumFreeNodes> displacement; ///< in, (x, y) of nodes 1 to 4
  std::array<double, NumMembers> stress;             ///< psi, tension positive

  /// Largest magnitude of a member's stress, psi.
  double maxStress() const;
  /// Largest vertical displacement of the two tip nodes 1 and 2, in.
  double tipDisplacement() const;
};

/// Length of member `m` (0 to 9), in.
double memberLength(int m);

/**
 * Assembles the stiffness of the free nodes, solves for their displacements and recovers the
 * stresses. Small displacements, linear elastic bars.
 * @param areas  all greater than 0; throws std::domain_error otherwise
 */
Response analyse(const Areas& areas);

} // namespace truss

#endif
