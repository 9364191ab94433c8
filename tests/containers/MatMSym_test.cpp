// Symmetric matrices: the packed triangle, its products, solver, files and text.
#include <cmath>
#include <utility>

#include <zarel/C_MessageTool.h>
#include <zarel/erreur.h>
#include <zarel/itf.h>

#include "containers/OffCore.h"
#include "containers/sptrsReport.h"
#include "containers/support.h"
#include "support/Capture.h"

namespace {

template <class T>
class MatMSym : public ::testing::Test {};
TYPED_TEST_SUITE(MatMSym, SymmetricScalars, ScalarNames);

// Counts the traces of failing returns: with no initialized tool each ends in the error box.
class Traces {
public:
  Traces() : former_(zarel_setErrorBox([](const char*, const char*) { ++number_; })) {
    number_ = 0;
  }
  Traces(const Traces&) = delete;
  Traces& operator=(const Traces&) = delete;
  ~Traces() { zarel_setErrorBox(former_); }
  // The traces since the last time that was asked.
  static int taken() { return std::exchange(number_, 0); }

private:
  static inline int number_ = 0;
  zarel_ErrorBox former_;
};

template <class T>
C_MatMSym<T> noisy(int n, int side, Noise& noise) {
  C_MatMSym<T> m(n, side);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j <= i; ++j)
      m(i, j) = noise.value<T>();
  return m;
}

TYPED_TEST(MatMSym, PacksTheLowerTriangleDownFromTheDiagonal) {
  using T = TypeParam;
  C_MatMSym<T> m(3, 1);
  const int places[6][2] = {{0, 0}, {1, 0}, {2, 0}, {1, 1}, {2, 1}, {2, 2}};
  for (int k = 0; k < 6; ++k)
    m.SetVal(places[k][0], places[k][1], scalar<T>(k + 1, k));

  for (int k = 0; k < 6; ++k) {
    EXPECT_EQ(m.Adr()[k], scalar<T>(k + 1, k));
    EXPECT_EQ(m.GetVal(places[k][1], places[k][0]), scalar<T>(k + 1, k));
  }
}

TYPED_TEST(MatMSym, PacksTheUpperTriangleDownToTheDiagonal) {
  using T = TypeParam;
  C_MatMSym<T> m(3, 0);
  const int places[6][2] = {{0, 0}, {0, 1}, {1, 1}, {0, 2}, {1, 2}, {2, 2}};
  for (int k = 0; k < 6; ++k)
    m(places[k][0], places[k][1]) = scalar<T>(k + 1, k);

  const C_MatMSym<T>& constant = m;
  for (int k = 0; k < 6; ++k) {
    EXPECT_EQ(m.Adr()[k], scalar<T>(k + 1, k));
    EXPECT_EQ(constant(places[k][1], places[k][0]), scalar<T>(k + 1, k));
  }
}

TYPED_TEST(MatMSym, IndexesEveryOrderAsThePackedRoutines) {
  using T = TypeParam;
  for (int side : {0, 1})
    for (int n = 0; n <= 9; ++n) {
      C_MatMSym<T> m(n, side);
      int next = 0;
      for (int j = 0; j < n; ++j)
        for (int i = side == 0 ? 0 : j; i < (side == 0 ? j + 1 : n); ++i)
          EXPECT_EQ(&m(i, j), m.Adr() + next++);
      EXPECT_EQ(m.NbVal(), next);
    }
}

TYPED_TEST(MatMSym, AnswersForItsKind) {
  using T = TypeParam;
  C_MatMSym<T> m(3, 7), none;

  EXPECT_STREQ(m.AffType(), "C_MatMSym Type");
  EXPECT_TRUE(m.Sym());
  EXPECT_EQ(m.InCore(), 1);
  EXPECT_EQ(m.GetSide(), 7);
  EXPECT_EQ(m.NbVal(), 6);
  EXPECT_EQ(m.NbRow(), 3);
  EXPECT_EQ(m.NbCol(), 3);
  EXPECT_EQ(m.MemSize(), static_cast<int>(6 * sizeof(T)));
  EXPECT_EQ(m.Type(), isComplex<T> ? C_Type::E_TypeDoubleComplex : C_Type::E_TypeDouble);
  EXPECT_EQ(none.NbRow(), 0);
  EXPECT_EQ(none.GetSide(), 0);
}

TYPED_TEST(MatMSym, HasNoColumnsFactorsOrDuplicates) {
  using T = TypeParam;
  C_MatMSym<T> m(2, 1);
  VecOf<T> v;
  Pivots pivots;

  EXPECT_EQ(codeOf([&] { m.Factor(pivots, false); }), 2871);
  EXPECT_EQ(codeOf([&] { m.Duplicate(); }), 2871);
  EXPECT_EQ(codeOf([&] { m.GetCol(0, v); }), 2871);
  EXPECT_EQ(codeOf([&] { m.ResizeAndKeepValues(3, 3); }), 2871);
  EXPECT_EQ(codeOf([&] { m.EraseCol(0, 0); }), 2871);
  EXPECT_EQ(codeOf([&] { m.EraseRow(0, 0); }), 2871);
}

TYPED_TEST(MatMSym, ResizeLeavesAnUpperMatrix) {
  C_MatMSym<TypeParam> m(2, 1);

  EXPECT_EQ(m.Resize(4, 99), 0);

  EXPECT_EQ(m.NbRow(), 4);
  EXPECT_EQ(m.NbCol(), 4);
  EXPECT_EQ(m.GetSide(), 0);
  EXPECT_EQ(m.NbVal(), 10);
}

TYPED_TEST(MatMSym, SizesThatCannotBeAreRefused) {
  C_MatMSym<TypeParam> m(2, 1), other(3, 1);
  const Traces traces;

  EXPECT_EQ(m.Resize(-1, 0), -1);
  EXPECT_EQ(traces.taken(), 1);
  EXPECT_EQ(m.Resize(65536, 0), -1);
  EXPECT_EQ(traces.taken(), 1);
  EXPECT_EQ(codeOf([] { C_MatMSym<TypeParam>(65536, 0); }), 2880);
  EXPECT_EQ(codeOf([] { C_MatMSym<TypeParam>(-1, 0); }), 2);
  {
    const AllocatorProbe none(0);
    EXPECT_EQ(m.Resize(50, 0), -1);
    EXPECT_EQ(traces.taken(), 1);
    EXPECT_EQ(m.Copy(other), -1);
    EXPECT_EQ(traces.taken(), 2) << "the resize and the copy leave one each";
    EXPECT_EQ(codeOf([&] { m = other; }), 1001);
  }
  EXPECT_EQ(m.NbRow(), 2);
  EXPECT_EQ(m.GetSide(), 1);
  EXPECT_EQ(m.NbVal(), 3);
}

TYPED_TEST(MatMSym, ShapeTakesOrderAndSide) {
  C_MatMSym<TypeParam> m;

  m.Shape(3, 1);

  EXPECT_EQ(m.GetSide(), 1);
  EXPECT_EQ(m.NbVal(), 6);
}

TYPED_TEST(MatMSym, CopiesOrderSideAndValues) {
  using T = TypeParam;
  Noise noise;
  C_MatMSym<T> m = noisy<T>(4, 1, noise), copy(m), target(2, 0), assigned;

  EXPECT_EQ(target.Copy(m), 0);
  EXPECT_EQ(target.Copy(target), 0);
  assigned = m;

  for (C_MatMSym<T>* c : {&copy, &target, &assigned}) {
    EXPECT_EQ(c->GetSide(), 1);
    EXPECT_TRUE(std::equal(m.Adr(), m.Adr() + 10, c->Adr()));
    EXPECT_NE(c->Adr(), m.Adr());
  }
}

TYPED_TEST(MatMSym, LnkShowsTheSameArray) {
  using T = TypeParam;
  C_MatMSym<T> m(3, 1);
  std::unique_ptr<C_MatMSym<T>> view(m.Lnk());

  EXPECT_EQ(view->Adr(), m.Adr());
  EXPECT_EQ(view->GetSide(), 1);
  (*view)(2, 1) = T(5);
  EXPECT_EQ(m(1, 2), T(5));
  EXPECT_EQ(view->Resize(5, 5), -1); // a view cannot grow
}

TYPED_TEST(MatMSym, IsWrittenOutInFullIntoAGeneralMatrix) {
  using T = TypeParam;
  Noise noise;
  for (int side : {0, 1}) {
    C_MatMSym<T> m = noisy<T>(3, side, noise);
    const C_Mat<T>& base = m;
    C_MatMGe<T> full(base), assigned;
    assigned = base;

    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) {
        EXPECT_EQ(full(i, j), m(i, j));
        EXPECT_EQ(assigned(i, j), m(i, j));
      }
  }
}

TYPED_TEST(MatMSym, TakesASquareMatrixElementByElement) {
  using T = TypeParam;
  C_MatMGe<T> square = countedMatrix<T>(2, 2), oblong(3, 2);
  C_MatMSym<T> m;

  EXPECT_EQ(m.GenCopy(square), 0);
  EXPECT_EQ(m(0, 1), square(1, 0)); // the later of the two values stays
  EXPECT_EQ(codeOf([&] { m.GenCopy(oblong); }), 2872);
}

TYPED_TEST(MatMSym, FillsScalesAndAddsThePackedArray) {
  using T = TypeParam;
  C_MatMSym<T> a(3, 1), b(3, 1), other(4, 1);

  EXPECT_EQ(a.Init(scalar<T>(2, 1)), 0);
  a *= scalar<T>(3);
  EXPECT_EQ(a.Axpy(b, scalar<T>(2)), 0);
  EXPECT_EQ(a(2, 0), scalar<T>(6, 3));
  EXPECT_EQ(b(0, 2), scalar<T>(12, 6));
  EXPECT_EQ(a.Zero(), 0);
  EXPECT_EQ(a(1, 1), T(0));
  EXPECT_EQ(codeOf([&] { a.Axpy(other, T(1)); }), 2872);
  C_MatMGe<T> general(3, 3);
  EXPECT_EQ(b.Axpy(general, scalar<T>(2)), 0);
  EXPECT_EQ(general(0, 2), scalar<T>(24, 12));
}

TYPED_TEST(MatMSym, ProductIsTheOneOfTheFullMatrix) {
  using T = TypeParam;
  Noise noise;
  for (int side : {0, 1})
    for (int n : {0, 1, 5, 12}) {
      C_MatMSym<T> m = noisy<T>(n, side, noise);
      VecOf<T> x(n), y(n);
      OffCoreVec<T> off(n);
      std::vector<std::complex<double>> expected(static_cast<std::size_t>(n));
      const T alpha = noise.value<T>(), beta = noise.value<T>();
      for (int i = 0; i < n; ++i) {
        x[i] = noise.value<T>();
        off.SetVal(i, x[i]);
        y[i] = noise.value<T>();
      }
      VecOf<T> z(y);
      for (int i = 0; i < n; ++i) {
        std::complex<double> sum = wide(beta) * wide(y[i]);
        for (int j = 0; j < n; ++j)
          sum += wide(alpha) * wide(m(i, j)) * wide(x[j]);
        expected[static_cast<std::size_t>(i)] = sum;
      }

      EXPECT_EQ(m.Mv(alpha, x, beta, y, '?'), 0);
      EXPECT_EQ(m.Mv(alpha, off, beta, z, 'N'), 0);

      for (int i = 0; i < n; ++i) {
        expectClose(y[i], expected[static_cast<std::size_t>(i)], n);
        EXPECT_EQ(z[i], y[i]);
      }
    }
}

TYPED_TEST(MatMSym, ProductTestsItsOperandsAndSizesTheResult) {
  using T = TypeParam;
  C_MatMSym<T> m(3, 1);
  VecOf<T> x(3, T(1)), two(2), y;
  OffCoreVec<T> off(3);

  EXPECT_EQ(codeOf([&] { m.Mv(T(1), two, T(0), off, 'N'); }), 2872);
  EXPECT_EQ(codeOf([&] { m.Mv(T(1), x, T(0), off, 'N'); }), 2870);
  EXPECT_EQ(m.Mv(T(1), x, T(0), y, 'N'), 0);
  EXPECT_EQ(y.Dim(), 3);
}

int factor(C_MatMSym<double>& m, char uplo, int* pivots) {
  int info = 0;
  ITF_dsptrf(&uplo, m.NbRow(), m.Adr(), pivots, &info);
  return info;
}
int factor(C_MatMSym<std::complex<double>>& m, char uplo, int* pivots) {
  int info = 0;
  ITF_zsptrf(&uplo, m.NbRow(), m.Adr(), pivots, &info);
  return info;
}

TYPED_TEST(MatMSym, SolvesWithAFactorisationOfTheCaller) {
  using T = TypeParam;
  Noise noise;
  for (int side : {0, 1})
    for (int n : {1, 2, 9}) {
      C_MatMSym<T> m = noisy<T>(n, side, noise), original(m);
      VecOf<T> b(n), x;
      Pivots pivots(n);
      for (int i = 0; i < n; ++i)
        b[i] = noise.value<T>();
      ASSERT_EQ(factor(m, side == 0 ? 'U' : 'L', pivots.Adr(0)), 0);

      EXPECT_EQ(m.Solve(pivots, &b, &x), 0);

      VecOf<T> back(n);
      original.Mv(T(1), x, T(0), back, 'N');
      for (int i = 0; i < n; ++i)
        expectClose(back[i], wide(b[i]), 1 + x.Nrm(E_Nrm1), 32);
      EXPECT_EQ(m.Solve(pivots, &b, nullptr), 0);
      EXPECT_TRUE(b == x);
    }
}

TYPED_TEST(MatMSym, ProductAndSolverOpenFrames) {
  using T = TypeParam;
  using Names = std::vector<std::string>;
  C_MatMSym<T> m(1, 1);
  m(0, 0) = T(2);
  VecOf<T> b(1, T(4)), y;
  Pivots pivots(1, 1);
  const FrameProbe frames;

  m.Mv(T(1), b, T(0), y, 'N');
  EXPECT_EQ(frames.taken(), (Names{"+C_MatMSym<T>::Mv", "-C_MatMSym<T>::Mv"}));
  m.Solve(pivots, &b, nullptr);
  EXPECT_EQ(frames.taken(), (Names{"+C_MatMSym<T>::Solve", "-C_MatMSym<T>::Solve"}));
}

TYPED_TEST(MatMSym, SolverTellsAFailedCopyAndRefusesShortVectors) {
  using T = TypeParam;
  C_MatMSym<T> m(3, 1);
  VecOf<T> b(3), shorter(2), x;
  Pivots pivots(3, 1), few(2, 1);

  EXPECT_EQ(codeOf([&] { m.Solve(pivots, &shorter, nullptr); }), 2872);
  EXPECT_EQ(codeOf([&] { m.Solve(few, &b, nullptr); }), 2872);
  const AllocatorProbe none(0);
  const Traces traces;
  EXPECT_EQ(m.Solve(pivots, &b, &x), -1);
  EXPECT_EQ(traces.taken(), 1);
}

TEST(MatMSymSolver, SaysWhatWasRefusedInTheNameOfAnotherRoutine) {
  int answers[3] = {};
  const support::Captured said = support::capture([&] {
    answers[0] = Zarel::reportSptrs(-5);
    answers[1] = Zarel::reportSptrs(0);
    answers[2] = Zarel::reportSptrs(3);
  });

  EXPECT_EQ(answers[0], -1);
  EXPECT_EQ(answers[1], 0);
  EXPECT_EQ(answers[2], 0);
  EXPECT_NE(said.err.find("*** Lapack call getrf() failed: info=5 is an invalid value."),
            std::string::npos)
      << said.err;
}

TYPED_TEST(MatMSym, RowNormCountsMirrors) {
  using T = TypeParam;
  for (int side : {0, 1}) {
    C_MatMSym<T> m(3, side), one(1, side), none;
    m(0, 0) = scalar<T>(1);
    m(1, 0) = scalar<T>(-6);
    m(2, 0) = scalar<T>(2);
    m(2, 2) = isComplex<T> ? scalar<T>(0, -3) : scalar<T>(-3);
    one(0, 0) = scalar<T>(-4);

    EXPECT_DOUBLE_EQ(m.Nrm(E_NrmInf), 9);
    EXPECT_DOUBLE_EQ(one.Nrm(E_NrmInf), 4);
    EXPECT_EQ(none.Nrm(E_NrmInf), 0);
  }
}

TYPED_TEST(MatMSym, OtherNormsAreSpectralOrFail) {
  using T = TypeParam;
  C_MatMSym<T> m(3, 1);

  EXPECT_EQ(codeOf([&] { m.Nrm(E_Nrm1); }), 2871); // it would need columns
  EXPECT_EQ(m.Nrm(E_Nrm2), 0);
  EXPECT_EQ(codeOf([&] { m.Nrm(static_cast<E_NrmType>(5)); }), 3);
  Zarel::setMatrixNorm2Hook<T>([](C_Mat<T>& matrix) { return matrix.Sym() ? 12.0 : 0.0; });
  EXPECT_EQ(m.Nrm(E_Nrm2), 12);
  Zarel::setMatrixNorm2Hook<T>(nullptr);
}

TYPED_TEST(MatMSym, FileIsShapeSideAndPackedVector) {
  using T = TypeParam;
  C_MatMSym<T> m(2, 1), back(5, 0);
  m(0, 0) = scalar<T>(1);
  m(1, 0) = scalar<T>(2, 1);
  m(1, 1) = scalar<T>(3);
  ScratchFile file;

  EXPECT_EQ(m.Write(file.stream()), 0);

  EXPECT_EQ(file.bytes(), raw(2, 2, 1, 3, scalar<T>(1), scalar<T>(2, 1), scalar<T>(3)));
  file.rewind();
  EXPECT_EQ(back.Read(file.stream()), 0);
  EXPECT_EQ(back.NbRow(), 2);
  EXPECT_EQ(back.GetSide(), 1);
  EXPECT_EQ(back(0, 1), scalar<T>(2, 1));
}

TYPED_TEST(MatMSym, BrokenFilesGiveMinusOneAndLeaveTheMatrix) {
  using T = TypeParam;
  const std::string whole = raw(2, 2, 1, 3, scalar<T>(1), scalar<T>(2), scalar<T>(3));
  std::vector<std::string> broken;
  for (std::size_t length = 0; length < whole.size(); ++length)
    broken.push_back(whole.substr(0, length));
  broken.push_back(raw(2, 3, 1, 3) + whole.substr(16));
  broken.push_back(raw(3, 3, 1, 3) + whole.substr(16));
  broken.push_back(raw(-2, -2, 1, 3) + whole.substr(16));
  broken.push_back(raw(2, 2, 1, -3) + whole.substr(16));
  broken.push_back(raw(65536, 65536, 1, 3) + whole.substr(16));
  const Traces traces;
  for (const std::string& bytes : broken) {
    ScratchFile file(bytes);
    C_MatMSym<T> m(1, 0);
    m(0, 0) = T(8);

    EXPECT_EQ(m.Read(file.stream()), -1) << bytes.size();

    EXPECT_EQ(traces.taken(), 1) << "for the step that failed, " << bytes.size();
    EXPECT_EQ(m.NbRow(), 1);
    EXPECT_EQ(m(0, 0), T(8));
  }
}

TYPED_TEST(MatMSym, FailingWritesGiveMinusOne) {
  C_MatMSym<TypeParam> m(2, 1);
  FILE* full = std::fopen("/dev/full", "w");

  const Traces traces;

  EXPECT_EQ(m.Write(full), -1);
  EXPECT_EQ(traces.taken(), 1);
  EXPECT_EQ(m.Write(nullptr), -1);
  EXPECT_EQ(traces.taken(), 1);
  EXPECT_EQ(m.Read(nullptr), -1);
  EXPECT_EQ(traces.taken(), 1);
  std::fclose(full);
}

TYPED_TEST(MatMSym, PrintsTheUpperHalfAndTheHeadingOnStandardOutput) {
  using T = TypeParam;
  C_MatMSym<T> m(6, 1), none;
  m.Init(scalar<T>(2, -0.5));
  const std::string t = isComplex<T> ? " 2.000E+00 -5.000E-01 " : " 2.000e+00 ";
  const std::string scalarName = isComplex<T> ? "Double complex" : "Double";
  const auto head = [&](const std::string& n) {
    return " Type: " + scalarName + "\n Rows: " + n + "\n Columns: " + n +
           "\n In Core: 1\n Sym: YES\n";
  };
  std::string body = "- Side : Lower\n", text, empty;
  for (int i = 0; i < 6; ++i) {
    for (int j = i; j < 6; ++j)
      body += "[" + std::to_string(i) + "," + std::to_string(j) + "]:" + t +
              (j - i == 4 ? " \n" : "  ");
    body += "\n";
  }

  const support::Captured said =
      support::capture([&] { text = printed([&](FILE* f) { EXPECT_EQ(m.Print(f, 0), 0); }); });
  const support::Captured nothing =
      support::capture([&] { empty = printed([&](FILE* f) { EXPECT_EQ(none.Print(f, 0), 0); }); });

  EXPECT_EQ(text, body);
  EXPECT_EQ(said.out, head("6"));
  EXPECT_EQ(empty, "- Side : Upper\n");
  EXPECT_EQ(nothing.out, head("0"));
}

TYPED_TEST(MatMSym, WithoutAStreamOnlyTheHeadingIsPrinted) {
  C_MatMSym<TypeParam> m(1, 0);

  const support::Captured said =
      support::capture([&] { EXPECT_EQ(m.Print(static_cast<FILE*>(nullptr), 0), 0); });

  EXPECT_EQ(said.out.rfind(" Type: Double", 0), 0u);
  EXPECT_EQ(said.out.find("Side"), std::string::npos);
}

TYPED_TEST(MatMSym, MatlabFormIsWrittenOutInFull) {
  using T = TypeParam;
  C_MatMSym<T> m(2, 0);
  m.Init(scalar<T>(2, -0.5));
  const std::string t = isComplex<T> ? " 2.000E+00 -5.000E-01 " : " 2.000e+00 ";
  const std::string scalarName = isComplex<T> ? "Double complex" : "Double";
  const std::string line = t + " " + t + " \n";

  EXPECT_EQ(printed([&](FILE* f) { EXPECT_EQ(m.WriteMatlab(f), 0); }),
            "C_MatMSym Type\n" + scalarName + "\n2 2\n" + line + line);
  EXPECT_EQ(codeOf([&] { m.WriteMatlab(static_cast<FILE*>(nullptr)); }), 12);
}

} // namespace
