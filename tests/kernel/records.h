// Records that free themselves, short calls, and what the kernel reported last.
#ifndef TESTS_KERNEL_RECORDS_H
#define TESTS_KERNEL_RECORDS_H

#include <initializer_list>
#include <memory>
#include <random>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <zarel/erreur.h>
#include <zarel/lm.h>

inline bool operator==(ZCOMPLEX a, ZCOMPLEX b) {
  return a.re == b.re && a.im == b.im;
}

namespace kernel {

struct Release {
  void operator()(VEC* x) const { v_free(x); }
  void operator()(ZVEC* x) const { zv_free(x); }
  void operator()(IVEC* x) const { iv_free(x); }
  void operator()(LVEC* x) const { lv_free(x); }
  void operator()(PERM* x) const { px_free(x); }
  void operator()(MAT* x) const { m_free(x); }
  void operator()(ZMAT* x) const { zm_free(x); }
  void operator()(BVEC* x) const { LM_bv_free(x); }
  void operator()(VECM* x) const { vecm_free(x); }
  void operator()(VECMP* x) const { vecmp_free(x); }
  void operator()(VECMW* x) const { vecmw_free(x); }
};

template <class R>
using Own = std::unique_ptr<R, Release>;

template <class R>
Own<R> own(R* record) {
  return Own<R>(record);
}

inline Own<VEC> vec(const std::vector<double>& x) {
  auto v = own(LM_v_get("test", 0, static_cast<int>(x.size()), 0, nullptr, nullptr));
  std::copy(x.begin(), x.end(), v->ve);
  return v;
}
inline Own<ZVEC> zvec(const std::vector<ZCOMPLEX>& x) {
  auto v = own(LM_zv_get("test", 0, static_cast<int>(x.size()), 0, nullptr, nullptr));
  std::copy(x.begin(), x.end(), v->ve);
  return v;
}
inline Own<IVEC> ivec(const std::vector<int>& x) {
  auto v = own(LM_iv_get("test", 0, static_cast<int>(x.size()), 0, nullptr, nullptr));
  std::copy(x.begin(), x.end(), v->ive);
  return v;
}
inline Own<LVEC> lvec(const std::vector<int>& x) {
  auto v = own(LM_lv_get("test", 0, static_cast<int>(x.size()), 0, nullptr, nullptr));
  std::copy(x.begin(), x.end(), v->lve);
  return v;
}
inline Own<PERM> perm(const std::vector<unsigned>& x) {
  auto v = own(LM_px_get("test", 0, static_cast<int>(x.size()), 0, nullptr, nullptr));
  std::copy(x.begin(), x.end(), v->pe);
  return v;
}
inline Own<MAT> mat(int m, int n, const std::vector<double>& x = {}) {
  auto A = own(LM_m_get("test", 0, m, n, 0, nullptr, nullptr));
  for (std::size_t k = 0; k < x.size(); ++k)
    A->me[k / n][k % n] = x[k];
  return A;
}
inline Own<ZMAT> zmat(int m, int n) {
  return own(LM_zm_get("test", 0, m, n, 0, nullptr, nullptr));
}

inline std::vector<double> list(const VEC* x) {
  return {x->ve, x->ve + x->dim};
}
inline std::vector<ZCOMPLEX> list(const ZVEC* x) {
  return {x->ve, x->ve + x->dim};
}
inline std::vector<int> list(const IVEC* x) {
  return {x->ive, x->ive + x->dim};
}
inline std::vector<int> list(const LVEC* x) {
  return {x->lve, x->lve + x->dim};
}
inline std::vector<unsigned> list(const PERM* x) {
  return {x->pe, x->pe + x->size};
}
template <class M>
auto list(const M* A, int = 0) -> std::vector<std::decay_t<decltype(A->me[0][0])>> {
  std::vector<std::decay_t<decltype(A->me[0][0])>> x;
  for (unsigned i = 0; i < A->m; ++i)
    x.insert(x.end(), A->me[i], A->me[i] + A->n);
  return x;
}

// Numbers from -1 to 1, the same in every run.
class Random {
public:
  explicit Random(unsigned seed) : _engine(seed) {}
  double operator()() { return std::uniform_real_distribution<double>(-1.0, 1.0)(_engine); }
  int below(int n) { return static_cast<int>(_engine() % static_cast<unsigned>(n)); }
  void fill(double* x, int n) {
    for (int i = 0; i < n; ++i)
      x[i] = (*this)();
  }
  void fill(ZCOMPLEX* x, int n) {
    for (int i = 0; i < n; ++i)
      x[i] = {(*this)(), (*this)()};
  }
  template <class M>
  void fill(M* A) {
    for (unsigned i = 0; i < A->m; ++i)
      fill(A->me[i], static_cast<int>(A->n));
  }

private:
  std::mt19937 _engine;
};

// The number of the last error since the test began; 0 if there was none.
inline int lastError() {
  const LM_ERROR_RECORD* const record = LM_error_get(LM_error_count() - 1);
  return record ? record->number : 0;
}

// No errors before the test, and no text about missing messages.
class Kernel : public testing::Test {
protected:
  void SetUp() override {
    _box = zarel_setErrorBox(zarel_silentErrorBox);
    LM_error_clear();
  }
  void TearDown() override { zarel_setErrorBox(_box); }

  int status = 99;

private:
  zarel_ErrorBox _box = nullptr;
};

// That a call failed with an error of this number: a null (or zero) result and the status.
#define EXPECT_FAILS(error, call)                                                                  \
  do {                                                                                             \
    LM_error_clear();                                                                              \
    status = 99;                                                                                   \
    EXPECT_FALSE(call);                                                                            \
    EXPECT_EQ(status, -1);                                                                         \
    EXPECT_EQ(::kernel::lastError(), error);                                                       \
  } while (false)

} // namespace kernel

#endif
