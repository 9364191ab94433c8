#include <zarel/C_BaseDesign.h>

#include <algorithm>

#include <zarel/C_Trace.h>
#include <zarel/lm_mat.h>
#include <zarel/lm_vec.h>

#include "design/report.h"
#include "runtime/fail.h"

namespace Zarel {

namespace {

int rowsOf(const MAT* m) {
  return static_cast<int>(m->m);
}

MAT* resized(MAT* m, int rows, int columns) {
  return LM_m_resize("C_BaseDesign", 1, m, rows, columns, 0, nullptr, nullptr);
}

void tell(int* error, int value) {
  if (error) *error = value;
}

bool holds(const MAT* m, const VEC* point) {
  return std::any_of(m->me, m->me + m->m, [point](const double* row) {
    return std::equal(point->ve, point->ve + point->dim, row);
  });
}

// Moves the rows from `position` on down by one; the last row is lost.
void openRow(MAT* m, int position) {
  for (int i = rowsOf(m) - 1; i > position; --i)
    std::copy(m->me[i - 1], m->me[i - 1] + m->n, m->me[i]);
}

const char* numberFormat(int levels, bool negative) {
  if (levels >= 1000 || levels < 0) return negative ? "%.1lf%s" : " %.1lf%s";
  if (levels >= 100) return negative ? "%5.1lf%s" : " %5.1lf%s";
  if (levels >= 10) return negative ? "%4.1lf%s" : " %4.1lf%s";
  return negative ? "%4.2lf%s" : " %4.2lf%s";
}

} // namespace

// Every operation stands in a frame of the call stack that bears its name.
#define DESIGN_FRAME(name)                                                                         \
  static const char label[] = "C_BaseDesign::" name;                                               \
  const C_Trace frame(label, __FILE__, __LINE__, BegFunc(), EndFunc())

C_BaseDesign::C_BaseDesign(int numFactors, int numLevels)
    : NumFactors(numFactors), NumLevels(numLevels) {}

C_BaseDesign::~C_BaseDesign() {
  m_free(DesignMatrix);
}

E_DebugScope_enum C_BaseDesign::GetDebugScope() const {
  return E_ScopeDesign;
}

int C_BaseDesign::AllocateDesignMatrix(int rows) {
  DESIGN_FRAME("AllocateDesignMatrix");
  MAT* const m = resized(DesignMatrix, rows, NumFactors);
  if (!m) return traced();
  DesignMatrix = m;
  return 0;
}

MAT* C_BaseDesign::getDesignMatrix() {
  DESIGN_FRAME("getDesignMatrix");
  return DesignMatrix;
}

bool C_BaseDesign::AddCentralPoint(int position, int* error) {
  DESIGN_FRAME("AddCentralPoint:1");
  if (!error) return false;
  DesignMessage(*this, label).Print("[BASE DOE] : Ajout du point central");
  VEC* const centre = LM_v_get("C_BaseDesign", 1, NumFactors, 0, nullptr, nullptr);
  if (!centre) {
    *error = -1;
    return false;
  }
  const bool added = AddSpecificPoint(centre, position, error);
  v_free(centre);
  *error = 0;
  return added;
}

bool C_BaseDesign::AddCentralPoint(int* error) {
  DESIGN_FRAME("AddCentralPoint:2");
  return AddCentralPoint(0, error);
}

bool C_BaseDesign::AddSpecificPoint(VEC* point, int position, int* error) {
  DESIGN_FRAME("AddSpecificPoint");
  tell(error, -1);
  if (!point || !DesignMatrix || static_cast<int>(point->dim) != NumFactors) return false;
  DesignMessage message(*this, label);
  message.Set("[BASE DOE] : Ajout d'un point au plan d'experience : ");
  if (holds(DesignMatrix, point)) {
    tell(error, 0);
    message.Append("Point deja present -> rejete");
    message.Print();
    return false;
  }
  const int rows = rowsOf(DesignMatrix);
  if (AllocateDesignMatrix(rows + 1) != 0) return false;
  const int at = std::clamp(position, 0, rows);
  openRow(DesignMatrix, at);
  std::copy(point->ve, point->ve + NumFactors, DesignMatrix->me[at]);
  NumPoints = rows + 1;
  tell(error, 0);
  message.Append("Point ajoute. (Nb = %d)", NumPoints);
  message.Print();
  return true;
}

int C_BaseDesign::AugmentDesign(char kind, int count, MAT* target) {
  DESIGN_FRAME("AugmentDesign");
  if (kind != 'R' && kind != 'r') return -1;
  return AddRandomPoints(count, 0, 0, target);
}

void C_BaseDesign::SetSeed(unsigned int seed) {
  Seed = seed;
}

double C_BaseDesign::ComputeDistMin(int first, int last, double* point, MAT* m) {
  DESIGN_FRAME("ComputeDistMin");
  double smallest = 1e30;
  for (int i = first; i < last; ++i) {
    double distance = 0;
    for (int k = 0; k < NumFactors; ++k)
      distance += (m->me[i][k] - point[k]) * (m->me[i][k] - point[k]);
    if (distance < smallest) smallest = distance;
  }
  return smallest;
}

void C_BaseDesign::Normalize(double low, double high, int* error) {
  DESIGN_FRAME("Normalize");
  tell(error, -1);
  if (low > high && !Normalized) return;
  // The levels give the step, but it is the factors that decide whether they are asked.
  const double step = NumFactors > 1 ? (high - low) / (NumLevels - 1) : 1.0;
  for (int i = 0; DesignMatrix && i < rowsOf(DesignMatrix); ++i)
    for (unsigned j = 0; j < DesignMatrix->n; ++j)
      DesignMatrix->me[i][j] = step * DesignMatrix->me[i][j] + low;
  Normalized = true;
  tell(error, 0);
}

void C_BaseDesign::Print(FILE* stream) {
  DESIGN_FRAME("Print");
  std::fputc('\n', stream);
  for (int i = 0; DesignMatrix && i < rowsOf(DesignMatrix); ++i)
    for (unsigned j = 0; j < DesignMatrix->n; ++j) {
      const double x = DesignMatrix->me[i][j];
      std::fprintf(stream, numberFormat(NumLevels, !(x >= 0)), x,
                   j + 1 < DesignMatrix->n ? " " : "\n");
    }
}

} // namespace Zarel
