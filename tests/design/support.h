// A design whose fields can be seen, and its matrix as lists of numbers.
#ifndef TESTS_DESIGN_SUPPORT_H
#define TESTS_DESIGN_SUPPORT_H

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <zarel/C_BaseDesign.h>
#include <zarel/C_MessageTool.h>
#include <zarel/erreur.h>
#include <zarel/lm_mat.h>
#include <zarel/lm_vec.h>

#include "support/Capture.h"

namespace design {

using Rows = std::vector<std::vector<double>>;

inline Rows rowsOf(const MAT* m) {
  Rows rows;
  for (unsigned i = 0; m && i < m->m; ++i)
    rows.emplace_back(m->me[i], m->me[i] + m->n);
  return rows;
}

// A matrix of this shape that frees itself.
class Matrix {
public:
  Matrix(int rows, int columns) : _m(LM_m_get("test", 0, rows, columns, 0, nullptr, nullptr)) {}
  ~Matrix() { m_free(_m); }
  Matrix(const Matrix&) = delete;
  Matrix& operator=(const Matrix&) = delete;
  MAT* get() { return _m; }
  Rows rows() const { return rowsOf(_m); }

private:
  MAT* _m;
};

// A vector that frees itself.
class Point {
public:
  Point(const std::vector<double>& x)
      : _v(LM_v_get("test", 0, static_cast<int>(x.size()), 0, nullptr, nullptr)) {
    std::copy(x.begin(), x.end(), _v->ve);
  }
  ~Point() { v_free(_v); }
  Point(const Point&) = delete;
  Point& operator=(const Point&) = delete;
  VEC* get() { return _v; }

private:
  VEC* _v;
};

class Design : public Zarel::C_BaseDesign {
public:
  using Zarel::C_BaseDesign::C_BaseDesign;
  using Zarel::C_BaseDesign::DesignMatrix;
  using Zarel::C_BaseDesign::Normalized;
  using Zarel::C_BaseDesign::NumFactors;
  using Zarel::C_BaseDesign::NumLevels;
  using Zarel::C_BaseDesign::NumPoints;

  Rows rows() { return rowsOf(DesignMatrix); }
  void set(const Rows& rows) {
    ASSERT_EQ(AllocateDesignMatrix(static_cast<int>(rows.size())), 0);
    for (std::size_t i = 0; i < rows.size(); ++i)
      std::copy(rows[i].begin(), rows[i].end(), DesignMatrix->me[i]);
  }
};

// While it lives, the screen shows level 3, and the designs' scope if it is told so.
class Listening {
public:
  explicit Listening(bool scope = true) {
    _tool->setEndMsgChar('\n');
    _tool->setVerbosityLevel(3, Zarel::SCREEN);
    _tool->ActivateDebugScope(452, scope, Zarel::SCREEN);
  }
  ~Listening() {
    _tool->setVerbosityLevel(0, Zarel::SCREEN);
    _tool->ActivateDebugScope(452, false, Zarel::SCREEN);
  }
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;

private:
  Zarel::C_MessageTool* _tool = Zarel::C_MessageTool::Instance("DefaultMessageTool");
};

// Silences the texts of failures.
class Quiet {
public:
  Quiet() : _box(zarel_setErrorBox(zarel_silentErrorBox)) {}
  ~Quiet() { zarel_setErrorBox(_box); }
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;

private:
  zarel_ErrorBox _box;
};

} // namespace design

#endif
