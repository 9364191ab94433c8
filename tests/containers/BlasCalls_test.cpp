// One operation in core is one BLAS call: the routines are counted on their way to the library.
#include <map>

#include <dlfcn.h>

#include "containers/support.h"
#include "support/Capture.h"

namespace {

std::map<std::string, int>& calls() {
  static std::map<std::string, int> counts;
  return counts;
}

template <class Function>
Function* counted(const char* name) {
  ++calls()[name];
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

#define ZAREL_COUNTED(RESULT, NAME, PARAMETERS, ARGUMENTS)                                         \
  extern "C" RESULT NAME PARAMETERS {                                                              \
    return counted<RESULT PARAMETERS>(#NAME) ARGUMENTS;                                            \
  }
ZAREL_COUNTED(void, daxpy_,
              (const int* n, const double* a, const double* x, const int* ix, double* y,
               const int* iy),
              (n, a, x, ix, y, iy))
ZAREL_COUNTED(double, ddot_,
              (const int* n, const double* x, const int* ix, const double* y, const int* iy),
              (n, x, ix, y, iy))
ZAREL_COUNTED(void, dscal_, (const int* n, const double* a, double* x, const int* ix),
              (n, a, x, ix))
ZAREL_COUNTED(void, dcopy_,
              (const int* n, const double* x, const int* ix, double* y, const int* iy),
              (n, x, ix, y, iy))
ZAREL_COUNTED(int, idamax_, (const int* n, const double* x, const int* ix), (n, x, ix))

/** Refuses a leading dimension as the reference routine does, where OpenBLAS answers info 0. */
extern "C" void dgetrs_(const char* trans, const int* n, const int* nrhs, const double* a,
                        const int* lda, const int* ipiv, double* b, const int* ldb, int* info,
                        std::size_t length) {
  if (*lda < *n) {
    *info = -5;
    return;
  }
  counted<void(const char*, const int*, const int*, const double*, const int*, const int*, double*,
               const int*, int*, std::size_t)>("dgetrs_")(trans, n, nrhs, a, lda, ipiv, b, ldb,
                                                          info, length);
}

namespace {

template <class Operation>
std::map<std::string, int> callsOf(Operation operation) {
  calls().clear();
  operation();
  return calls();
}

using Calls = std::map<std::string, int>;

TEST(BlasCalls, AreOneAnOperation) {
  VecOf<double> x(10000, 1.0), y(10000, 2.0), z;
  double dot = 0;

  EXPECT_EQ(callsOf([&] { x.Axpy(y, 2.0); }), (Calls{{"daxpy_", 1}}));
  EXPECT_EQ(callsOf([&] { dot = x * y; }), (Calls{{"ddot_", 1}}));
  EXPECT_EQ(callsOf([&] { x *= 2.0; }), (Calls{{"dscal_", 1}}));
  EXPECT_EQ(callsOf([&] { x.SMlt(2.0, 5, -1); }), (Calls{{"dscal_", 1}}));
  EXPECT_EQ(callsOf([&] { z.Copy(x); }), (Calls{{"dcopy_", 1}}));
  EXPECT_EQ(callsOf([&] { x.IMax(0, -1); }), (Calls{{"idamax_", 1}}));
  EXPECT_EQ(callsOf([&] { dot = x.Nrm2(); }), (Calls{{"ddot_", 1}}));
  EXPECT_EQ(callsOf([&] { dot = x.NrmInf(); }), (Calls{{"idamax_", 1}}));
  EXPECT_EQ(callsOf([&] { x += y; }), (Calls{{"daxpy_", 1}}));
  EXPECT_EQ(dot, 4);
}

TEST(BlasCalls, OfMatricesWithoutAGapAreOne) {
  C_MatMGe<double> a(50, 40), b(50, 40);

  EXPECT_EQ(callsOf([&] { a.Axpy(b, 2.0); }), (Calls{{"daxpy_", 1}}));
  EXPECT_EQ(callsOf([&] { a *= 2.0; }), (Calls{{"dscal_", 1}}));
  EXPECT_EQ(callsOf([&] { a *= 1.0; }), Calls{});
}

// The text names the factorisation, though it is the solver that was refused.
TEST(LapackCalls, ARefusedSolveIsSaidAndThrows2875) {
  double block[4] = {1, 2, 3, 4};
  C_MatMGe<double> crooked(2, 2, block, 1); // a leading dimension below the rows
  Pivots pivots(2, 1);
  VecOf<double> b(2, 1.0);

  const support::Captured said = support::capture(
      [&] { EXPECT_EQ(codeOf([&] { crooked.Solve(pivots, &b, nullptr); }), 2875); });

  EXPECT_EQ(said.err, "Lapack call getrf() failed: info5is an invalid value.\n");
}

} // namespace
