// ARPACK by reverse communication: eigenvalues of diagonal matrices.
#include <algorithm>
#include <cmath>
#include <vector>

#include "numerics/precision.h"

using namespace precision;

namespace {

constexpr int order = 40, wanted = 3, basis = 12;

/** The arrays of a run; the workspace of the non-symmetric routines covers the symmetric ones. */
template <class T>
struct Iteration {
  std::vector<T> resid = std::vector<T>(order), v = std::vector<T>(order * basis);
  std::vector<T> workd = std::vector<T>(3 * order),
                 workl = std::vector<T>(4 * basis * basis + 8 * basis);
  std::vector<Real<T>> rwork = std::vector<Real<T>>(basis);
  std::vector<int> iparam{1, 0, 300, 1, 0, 0, 1, 0, 0, 0, 0}, ipntr = std::vector<int>(14),
                                                              select = std::vector<int>(basis);
  std::vector<T> workev = std::vector<T>(3 * basis), z = std::vector<T>(order * (wanted + 1));
  int ido = 0, info = 0, lworkl = static_cast<int>(workl.size()), products = 0;

  /** Calls `step` until it asks for no more products with the diagonal `d`; the places are 1-based.
   */
  template <class Step>
  void iterate(const std::vector<T>& d, Step step) {
    for (step(); ido == 1 || ido == -1; step(), ++products) {
      ASSERT_LT(products, 10000);
      const T* in = &workd[static_cast<std::size_t>(ipntr[0] - 1)];
      T* out = &workd[static_cast<std::size_t>(ipntr[1] - 1)];
      for (std::size_t i = 0; i < order; ++i)
        out[i] = d[i] * in[i];
    }
    EXPECT_EQ(ido, 99);
    EXPECT_EQ(info, 0);
    EXPECT_GE(iparam[4], wanted);
  }
};

/** 1, 2, ... , 40, turned by an angle in the complex plane if the type has one. */
template <class T>
std::vector<T> diagonal() {
  std::vector<T> d;
  for (int i = 1; i <= order; ++i)
    d.push_back(number<T>(0.8 * i, 0.6 * i));
  return d;
}

TEST(Arpack, FindsTheLargestEigenvaluesOfASymmetricMatrix) {
  Iteration<double> run;
  const auto d = diagonal<double>();
  std::vector<double> values(wanted);

  run.iterate(d, [&] {
    ITF_dsaupd(&run.ido, option("I"), order, option("LM"), wanted, 1e-12, run.resid.data(), basis,
               run.v.data(), order, run.iparam.data(), run.ipntr.data(), run.workd.data(),
               run.workl.data(), run.lworkl, &run.info);
  });
  ITF_dseupd(1, option("A"), run.select.data(), values.data(), run.z.data(), order, 0.0,
             option("I"), order, option("LM"), wanted, 1e-12, run.resid.data(), basis, run.v.data(),
             order, run.iparam.data(), run.ipntr.data(), run.workd.data(), run.workl.data(),
             run.lworkl, &run.info);

  EXPECT_EQ(run.info, 0);
  for (std::size_t k = 0; k < wanted; ++k) {
    const std::size_t row = order - wanted + k; // ascending
    EXPECT_NEAR(values[k], d[row], 1e-9);
    EXPECT_NEAR(std::abs(run.z[row + order * k]), 1, 1e-6);
  }
}

TEST(Arpack, ReadsBothLettersOfWhich) {
  // "SA" and "SM" differ from "LA" and "LM" in the first letter, "LA" from "LM" in the second.
  Iteration<double> run;
  std::vector<double> d = diagonal<double>(), values(wanted);
  for (auto& value : d)
    value = 10 - value;

  run.iterate(d, [&] {
    ITF_dsaupd(&run.ido, option("I"), order, option("LA"), wanted, 1e-12, run.resid.data(), basis,
               run.v.data(), order, run.iparam.data(), run.ipntr.data(), run.workd.data(),
               run.workl.data(), run.lworkl, &run.info);
  });
  ITF_dseupd(0, option("A"), run.select.data(), values.data(), run.z.data(), order, 0.0,
             option("I"), order, option("LA"), wanted, 1e-12, run.resid.data(), basis, run.v.data(),
             order, run.iparam.data(), run.ipntr.data(), run.workd.data(), run.workl.data(),
             run.lworkl, &run.info);

  EXPECT_EQ(run.info, 0);
  EXPECT_NEAR(values[2], 10 - 0.8, 1e-9);
  EXPECT_NEAR(values[0], 10 - 2.4, 1e-9);
}

TEST(Arpack, FindsEigenvaluesOfAGeneralRealMatrix) {
  Iteration<double> run;
  const auto d = diagonal<double>();
  std::vector<double> re(wanted + 1), im(wanted + 1);

  run.iterate(d, [&] {
    ITF_dnaupd(&run.ido, option("I"), order, option("LR"), wanted, 1e-12, run.resid.data(), basis,
               run.v.data(), order, run.iparam.data(), run.ipntr.data(), run.workd.data(),
               run.workl.data(), run.lworkl, &run.info);
  });
  ITF_dneupd(1, option("A"), run.select.data(), re.data(), im.data(), run.z.data(), order, 0.0, 0.0,
             run.workev.data(), option("I"), order, option("LR"), wanted, 1e-12, run.resid.data(),
             basis, run.v.data(), order, run.iparam.data(), run.ipntr.data(), run.workd.data(),
             run.workl.data(), run.lworkl, &run.info);

  EXPECT_EQ(run.info, 0);
  std::sort(re.begin(), re.begin() + wanted);
  for (std::size_t k = 0; k < wanted; ++k)
    EXPECT_NEAR(re[k], d[order - wanted + k], 1e-8);
  EXPECT_NEAR(im[0], 0, 1e-8);
}

TEST(Arpack, FindsEigenvaluesOfAComplexMatrix) {
  Iteration<ComplexDouble> run;
  const auto d = diagonal<ComplexDouble>();
  std::vector<ComplexDouble> values(wanted + 1);
  ComplexDouble sigma = 0;

  run.iterate(d, [&] {
    ITF_znaupd(&run.ido, option("I"), order, option("LM"), wanted, 1e-12, run.resid.data(), basis,
               run.v.data(), order, run.iparam.data(), run.ipntr.data(), run.workd.data(),
               run.workl.data(), run.lworkl, run.rwork.data(), &run.info);
  });
  ITF_zneupd(1, option("A"), run.select.data(), values.data(), run.z.data(), order, &sigma,
             run.workev.data(), option("I"), order, option("LM"), wanted, 1e-12, run.resid.data(),
             basis, run.v.data(), order, run.iparam.data(), run.ipntr.data(), run.workd.data(),
             run.workl.data(), run.lworkl, run.rwork.data(), &run.info);

  EXPECT_EQ(run.info, 0);
  std::sort(values.begin(), values.begin() + wanted,
            [](auto a, auto b) { return std::abs(a) < std::abs(b); });
  for (std::size_t k = 0; k < wanted; ++k)
    EXPECT_NEAR(std::abs(values[k] - d[order - wanted + k]), 0, 1e-8);
}

} // namespace
