// The random points of a design.
#include <climits>
#include <cmath>

#include <zarel/C_BaseDesign.h>
#include <zarel/C_Trace.h>
#include <zarel/lm_mat.h>

#include "design/Candidates.h"
#include "design/report.h"
#include "runtime/fail.h"

namespace Zarel {

namespace {

constexpr char label[] = "C_BaseDesign::AddRandomPoints";
constexpr char spread[] = "[BASE DOE] : Pt %d : distance = %f";

// How many candidates there are. Throws 2880 where a matrix cannot hold them, or the points.
int candidateCount(int factors, long long points) {
  const double count = std::trunc(10000.0 * std::sqrt(static_cast<double>(factors)));
  if (count * factors > INT_MAX || points * factors > INT_MAX) fail(2880);
  return static_cast<int>(count);
}

bool isRandomReady(C_RandNum& random, unsigned int seed) {
  random.SetRangeValue(-1.0, 1.0);
  return random.Init(E_SeedUser, seed) == 0;
}

bool hasShape(const MAT* m, int rows, int columns) {
  return static_cast<int>(m->m) == rows && static_cast<int>(m->n) == columns;
}

// Takes the rows that were added back again, unless they were filled.
class AddedRows {
public:
  AddedRows(MAT* matrix, unsigned former) : _matrix(matrix), _former(former) {}
  ~AddedRows() {
    if (_matrix) _matrix->m = _former;
  }
  AddedRows(const AddedRows&) = delete;
  AddedRows& operator=(const AddedRows&) = delete;
  void keep() { _matrix = nullptr; }

private:
  MAT* _matrix;
  unsigned _former;
};

void select(const C_BaseDesign& design, Candidates& pool, int count, double** rows) {
  for (int k = 0; k < count; ++k) {
    double distance = 0;
    const int chosen = pool.farthest(distance);
    DesignMessage message(design, label);
    if (message.IsActive()) message.Print(spread, k, distance);
    pool.copy(chosen, rows[k]);
    pool.keepAwayFrom(rows[k]);
  }
}

} // namespace

int C_BaseDesign::AddRandomPoints(int count, double, double, MAT* target) {
  const C_Trace frame(label, __FILE__, __LINE__, BegFunc(), EndFunc());
  if (target && !hasShape(target, count, NumFactors)) return -1;
  if (!DesignMatrix || NumFactors < 1 || count < 0) return -1;
  DesignMessage(*this, label).Print("[BASE DOE] : Appel a %s", label);
  C_RandNum random;
  if (!isRandomReady(random, Seed)) return traced();

  const int rows = static_cast<int>(DesignMatrix->m);
  const int candidates = candidateCount(NumFactors, static_cast<long long>(rows) + count);
  Candidates pool(NumFactors, candidates, rows + count);
  DesignMessage(*this, label)
      .Print("[BASE DOE] : On genere %d points random dans l'espace des variables", candidates);
  if (pool.draw(random, NumLevels == 2) != 0) return traced();
  for (int i = 0; i < rows; ++i)
    pool.keepAwayFrom(DesignMatrix->me[i]);

  if (!target && AllocateDesignMatrix(rows + count) != 0) return -1;
  AddedRows added(target ? nullptr : DesignMatrix, static_cast<unsigned>(rows));
  DesignMessage(*this, label)
      .Print("[BASE DOE] : On selectionne les %d points les mieux places", count);
  select(*this, pool, count, target ? target->me : DesignMatrix->me + rows);
  added.keep();
  if (target) NumPoints = count;
  return 0;
}

} // namespace Zarel
