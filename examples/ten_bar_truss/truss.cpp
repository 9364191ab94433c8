#include "truss.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include <zarel/C_MatMGe.h>
#include <zarel/C_VecPi.h>

namespace truss {

const std::array<Point, NumNodes> Nodes = {{{2 * Length, Length},
                                            {2 * Length, 0.0},
                                            {Length, Length},
                                            {Length, 0.0},
                                            {0.0, Length},
                                            {0.0, 0.0}}};

const std::array<Member, NumMembers> Members = {
    {{2, 4}, {0, 2}, {3, 5}, {1, 3}, {2, 3}, {0, 1}, {3, 4}, {2, 5}, {1, 2}, {0, 3}}};

const std::array<double, 2 * NumFreeNodes> Loads = {0.0, 0.0, 0.0, -Load, 0.0, 0.0, 0.0, -Load};

namespace {

using Vector = C_VecPi<double, int, C_PtrInCore<double, int>>;
using Pivots = C_VecPi<int, int, C_PtrInCore<int, int>>;

constexpr int NumDof = 2 * NumFreeNodes;

/// Length and direction cosines of a member, and the unknowns of its ends: x and y of `from`, then
/// of `to`. An end in the wall has unknowns of NumDof or more.
struct Bar {
  double length;
  std::array<double, 4> cosines; ///< elongation = sum of cosines times displacements
  std::array<int, 4> dof;
};

Bar bar(int m) {
  const Member& ends = Members[m];
  const double dx = Nodes[ends.to].x - Nodes[ends.from].x;
  const double dy = Nodes[ends.to].y - Nodes[ends.from].y;
  const double length = std::hypot(dx, dy);
  const double c = dx / length, s = dy / length;
  return {length, {-c, -s, c, s}, {2 * ends.from, 2 * ends.from + 1, 2 * ends.to, 2 * ends.to + 1}};
}

/// Adds E A / L times the outer product of the direction cosines to the rows and columns that move.
void addStiffness(C_MatMGe<double>& stiffness, const Bar& b, double area) {
  const double k = Modulus * area / b.length;
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j)
      if (b.dof[i] < NumDof && b.dof[j] < NumDof)
        stiffness(b.dof[i], b.dof[j]) += k * b.cosines[i] * b.cosines[j];
}

double elongation(const Bar& b, const std::array<double, NumDof>& displacement) {
  double sum = 0.0;
  for (int i = 0; i < 4; ++i)
    if (b.dof[i] < NumDof) sum += b.cosines[i] * displacement[b.dof[i]];
  return sum;
}

void requirePositive(const Areas& areas) {
  for (int m = 0; m < NumMembers; ++m)
    if (!(areas[m] > 0.0) || !std::isfinite(areas[m]))
      throw std::domain_error("area of member " + std::to_string(m + 1) +
                              " must be a positive number");
}

std::array<double, NumDof> solveDisplacements(const Areas& areas) {
  C_MatMGe<double> stiffness;
  stiffness.Resize(NumDof, NumDof);
  stiffness.Zero();
  for (int m = 0; m < NumMembers; ++m)
    addStiffness(stiffness, bar(m), areas[m]);

  Vector load(NumDof);
  for (int i = 0; i < NumDof; ++i)
    load[i] = Loads[i];
  Pivots pivots;
  stiffness.Factor(pivots, false);
  stiffness.Solve(pivots, &load, nullptr);

  std::array<double, NumDof> displacement{};
  for (int i = 0; i < NumDof; ++i)
    displacement[i] = load[i];
  return displacement;
}

} // namespace

double Response::maxStress() const {
  double largest = 0.0;
  for (double s : stress)
    largest = std::max(largest, std::fabs(s));
  return largest;
}

double Response::tipDisplacement() const {
  return std::max(std::fabs(displacement[1]), std::fabs(displacement[3]));
}

double memberLength(int m) {
  return bar(m).length;
}

Response analyse(const Areas& areas) {
  requirePositive(areas);
  Response response{};
  response.displacement = solveDisplacements(areas);
  for (int m = 0; m < NumMembers; ++m) {
    const Bar b = bar(m);
    response.weight += Density * b.length * areas[m];
    response.stress[m] = Modulus * elongation(b, response.displacement) / b.length;
  }
  return response;
}

} // namespace truss
