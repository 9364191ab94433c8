// Sparse vectors: products, norms, combinations and figures.
#include <algorithm>
#include <cmath>

#include <zarel/lm_morse.h>

#include "kernel/blas.h"
#include "kernel/morse.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

// Factors this near to a limit act as the limit.
constexpr double nearby = 1e-14;

// The sum of x[idx_k] val_k, in four parts that do not wait for each other.
double gatherProduct(const double* x, const int* idx, const double* val, int count) {
  double sum[4] = {};
  int k = 0;
  for (; k + 4 <= count; k += 4)
    for (int part = 0; part < 4; ++part)
      sum[part] += x[idx[k + part]] * val[k + part];
  for (; k < count; ++k)
    sum[0] += x[idx[k]] * val[k];
  return (sum[0] + sum[1]) + (sum[2] + sum[3]);
}

double product(const VEC* a, const VECM* b) {
  double sum = 0.0;
  for (int k = 0; k < b->nb; ++k)
    sum += a->ve[b->nodes[k].index] * b->nodes[k].value;
  return sum;
}

double product(const VEC* a, const VECMP* b) {
  return gatherProduct(a->ve, b->idx, b->val, b->nb);
}

double product(const VEC* a, const VECMW* b) {
  double sum = 0.0;
  const double* value = b->val;
  morse::eachGroup(b, [&](int first, int count) {
    for (int i = first; i < first + count; ++i)
      sum += a->ve[i] * *value++;
  });
  return sum;
}

// Every entry of the larger tree is looked for in the smaller one.
double product(const VECM* a, const VECM* b) {
  if (a->nb < b->nb) std::swap(a, b);
  double sum = 0.0;
  for (int k = 0; k < a->nb; ++k)
    if (const VECM_NODE* const node = morse::find(b, a->nodes[k].index))
      sum += a->nodes[k].value * node->value;
  return sum;
}

int dimOf(const VEC* v) {
  return length(v);
}
template <class S>
int dimOf(const S* v) {
  return v->dim;
}

template <class A, class B>
double productOf(const Call& call, const A* a, const B* b) {
  LM_NEED(a && b);
  if (dimOf(a) != dimOf(b)) return call.fail(1);
  return product(a, b);
}

// The values of a tree stand between links; the largest is taken out so that no square overflows.
double norm(const VECM* v) {
  double largest = 0.0, sum = 0.0;
  for (int k = 0; k < v->nb; ++k)
    largest = std::max(largest, std::fabs(v->nodes[k].value));
  if (std::isinf(largest)) return largest;
  const double unit = largest > 0.0 ? largest : 1.0;
  for (int k = 0; k < v->nb; ++k) {
    const double part = v->nodes[k].value / unit;
    sum += part * part;
  }
  return unit * std::sqrt(sum);
}

template <class S>
double norm(const S* v) {
  return v->nb > 0 ? blas::nrm2(v->nb, v->val) : 0.0;
}

template <class S>
double normOf(const Call& call, const S* v) {
  if (v) return norm(v);
  call.fail(8);
  return -1.0;
}

// out := v + alpha s; without `copyRest` the entries that s does not store stay as they are.
template <class S>
VEC* added(const Call& call, bool copyRest, const VEC* v, const S* s, double alpha, VEC* out) {
  LM_NEED(v && s);
  if (dimOf(v) != s->dim) return call.fail(1);
  out = exactVector(call, out, dimOf(v));
  if (!out) return nullptr;
  if (copyRest && out != v) std::copy_n(v->ve, v->dim, out->ve);
  if (alpha == 0.0 || s->nb == 0) return out;
  morse::eachEntry(s, [=](int i, double x) { out->ve[i] = v->ve[i] + alpha * x; });
  return out;
}

// alpha x, for an alpha that may be as good as 1 or -1.
class Multiple {
public:
  explicit Multiple(double alpha)
      : _alpha(std::fabs(alpha - 1.0) < nearby   ? 1.0
               : std::fabs(alpha + 1.0) < nearby ? -1.0
                                                 : alpha) {}
  double operator()(double x) const { return _alpha * x; }

private:
  double _alpha;
};

int firstIndex(const VECMP* s) {
  return s->idx[0];
}
int lastIndex(const VECMP* s) {
  return s->idx[s->nb - 1];
}
int firstIndex(const VECMW* s) {
  return std::abs(s->words[0]);
}
int lastIndex(const VECMW* s) {
  int last = 0;
  morse::eachGroup(s, [&last](int first, int count) { last = first + count - 1; });
  return last;
}

// The tests are not strict: where the two lists share nothing but one end, nothing is done.
template <class S>
bool overlaps(const IVEC* wanted, const S* s) {
  return wanted->dim > 0 && wanted->ive[0] < lastIndex(s) &&
         wanted->ive[wanted->dim - 1] > firstIndex(s);
}

template <class S>
VEC* selected(const Call& call, const IVEC* wanted, const S* s, bool add, double alpha, VEC* out) {
  LM_NEED(s);
  if (wanted && length(wanted) > s->dim) return call.fail(1);
  LM_OUTPUT_VECTOR(out, s->dim);
  if (s->nb == 0 || (wanted && !overlaps(wanted, s))) return out;
  const Multiple multiple(alpha);
  const auto put = [add, multiple](double& to, double x) {
    to = add ? to + multiple(x) : multiple(x);
  };
  if (!wanted) {
    morse::eachEntry(s, [out, put](int i, double x) { put(out->ve[i], x); });
    return out;
  }
  int k = 0;
  const int count = length(wanted);
  morse::eachEntry(s, [&](int i, double x) {
    while (k < count && wanted->ive[k] < i)
      ++k;
    for (; k < count && wanted->ive[k] == i; ++k)
      put(out->ve[k], x);
  });
  return out;
}

// What a walk over the kept entries counts.
struct BlocCounts {
  int kept = 0;
  int inRuns = 0;
  int groups = 0;

  void add(int i) {
    const bool follows = kept > 0 && _last == i - 1;
    ++kept;
    if (follows) inRuns += _inRun ? 1 : 2;
    _inRun = _inRun && follows;
    if (i > 0 && !_inRun) ++groups;
    _inRun = follows;
    _last = i;
  }

private:
  int _last = 0;
  bool _inRun = false;
};

template <class S>
double rate(const Call& call, const S* v) {
  LM_NEED(v);
  if (v->dim < 1) return call.refuse();
  return static_cast<double>(v->nb) / v->dim;
}

} // namespace

VECM* LM_vecm_daxpy(const VECM* x, double alpha, VECM* y, int* status) {
  LM_ENTER_STATUS(LM_vecm_daxpy);
  LM_NEED(x && y);
  if (x->dim != y->dim) return call.fail(1);
  if (std::fabs(alpha) < nearby) return y;
  if (x == y) return LM_vecm_scal(y, alpha + 1.0, status);
  bool stored = true;
  morse::eachEntry(x, [&stored, y, alpha](int i, double value) {
    stored = stored && LM_vecm_addval(y, i, alpha * value, 1) == 0;
  });
  if (!stored) return call.pass();
  return y;
}

#define LM_DEFINE_PRODUCT(name, A, B)                                                              \
  double name(const A* a, const B* b, int* status) {                                               \
    LM_ENTER_STATUS(name);                                                                         \
    return productOf(call, a, b);                                                                  \
  }
LM_DEFINE_PRODUCT(LM_pscal_vecm, VECM, VECM)
LM_DEFINE_PRODUCT(LM_pscal_vvecm, VEC, VECM)
LM_DEFINE_PRODUCT(LM_pscal_vvecmp, VEC, VECMP)
LM_DEFINE_PRODUCT(LM_pscal_vvecmw, VEC, VECMW)

#define LM_DEFINE_NORM2(name, S)                                                                   \
  double name(const S* v, int* status) {                                                           \
    LM_ENTER_STATUS(name);                                                                         \
    return normOf(call, v);                                                                        \
  }
LM_DEFINE_NORM2(LM_vecm_norm2, VECM)
LM_DEFINE_NORM2(LM_vecmp_norm2, VECMP)
LM_DEFINE_NORM2(LM_vecmw_norm2, VECMW)

VEC* LM_vvecm_mltadd(const VEC* v, const VECM* s, double alpha, VEC* out, LM_ARGS) {
  LM_ENTER(LM_vvecm_mltadd);
  return added(call, true, v, s, alpha, out);
}

VEC* LM_vvecmp_mltadd(const VEC* v, const VECMP* s, double alpha, VEC* out, LM_ARGS) {
  LM_ENTER(LM_vvecmp_mltadd);
  return added(call, true, v, s, alpha, out);
}

VEC* LM_vvecmw_mltadd2(int flag, const VEC* v, const VECMW* s, double alpha, VEC* out, LM_ARGS) {
  LM_ENTER(LM_vvecmw_mltadd2);
  return added(call, flag != 0, v, s, alpha, out);
}

VEC* LM_vvecmw_mltadd(const VEC* v, const VECMW* s, double alpha, VEC* out, LM_ARGS) {
  return LM_vvecmw_mltadd2(1, v, s, alpha, out, argument, text, status);
}

VEC* LM_vvecmp_daxpy_idx(const IVEC* idx, const VECMP* s, int add, double alpha, VEC* out,
                         LM_ARGS) {
  LM_ENTER(LM_vvecmp_daxpy_idx);
  return selected(call, idx, s, add != 0, alpha, out);
}

VEC* LM_vvecmw_daxpy_idx(const IVEC* idx, const VECMW* s, int add, double alpha, VEC* out,
                         LM_ARGS) {
  LM_ENTER(LM_vvecmw_daxpy_idx);
  return selected(call, idx, s, add != 0, alpha, out);
}

double LM_v_RatioBloc(const VEC* v, double* mean_length, int* status) {
  LM_ENTER_STATUS(LM_v_RatioBloc);
  if (mean_length) *mean_length = 0.0;
  LM_NEED(v);
  BlocCounts counts;
  morse::eachKept(v, [&counts](int i, double) { counts.add(i); });
  if (counts.kept == 0) return 1.0;
  if (mean_length && counts.groups > 0)
    *mean_length = static_cast<double>(counts.kept) / counts.groups;
  return static_cast<double>(counts.inRuns) / counts.kept;
}

double LM_vecmw_sizebloc(const VECMW* v, int* status) {
  LM_ENTER_STATUS(LM_vecmw_sizebloc);
  LM_NEED(v);
  int groups = 0;
  morse::eachGroup(v, [&groups](int, int) { ++groups; });
  return groups > 0 ? static_cast<double>(v->nb) / groups : 0.0;
}

double v_RateCompletion(const VEC* v, double threshold, int* status) {
  LM_ENTER_STATUS(v_RateCompletion);
  LM_NEED(v);
  if (v->dim == 0) return call.refuse();
  const auto above = std::count_if(v->ve, v->ve + v->dim,
                                   [threshold](double x) { return std::fabs(x) > threshold; });
  return static_cast<double>(above) / v->dim;
}

double vecm_RateCompletion(const VECM* v, int* status) {
  LM_ENTER_STATUS(vecm_RateCompletion);
  return rate(call, v);
}

double vecmp_RateCompletion(const VECMP* v, int* status) {
  LM_ENTER_STATUS(vecmp_RateCompletion);
  return rate(call, v);
}
