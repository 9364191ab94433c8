// Sparse vectors: copies and conversions.
#include <algorithm>
#include <utility>

#include <zarel/lm_morse.h>

#include "kernel/morse.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

// Puts the content of a new record into the caller's, if there is one.
template <class R>
R* install(R* made, R* out, void (*release)(R*)) {
  if (!made || !out) return made;
  std::swap(*made, *out);
  release(made);
  return out;
}

VECM* copied(const Call& call, const VECM* in, VECM* out) {
  VECM* const fresh = out ? nullptr : morse::createTree(call, in->dim, in->nb);
  VECM* const target = out ? out : fresh;
  if (!target || !morse::emptyTree(call, target, in->dim, in->nb)) return nullptr;
  const auto at = [in, target](const VECM_NODE* node) {
    return node ? target->nodes + (node - in->nodes) : nullptr;
  };
  for (int k = 0; k < in->nb; ++k) {
    const VECM_NODE& from = in->nodes[k];
    target->nodes[k] = {from.value, from.index, at(from.left), at(from.right)};
  }
  target->nb = in->nb;
  target->root = at(in->root);
  return target;
}

VECMP* copied(const Call& call, const VECMP* in, VECMP* out) {
  VECMP* const made = morse::createPacked(call, in->dim, in->nb);
  if (!made) return nullptr;
  std::copy_n(in->idx, in->nb, made->idx);
  std::copy_n(in->val, in->nb, made->val);
  return install(made, out, vecmp_free);
}

VECMW* copied(const Call& call, const VECMW* in, VECMW* out) {
  VECMW* const made = morse::createWindows(call, in->dim, in->nb, in->nw);
  if (!made) return nullptr;
  made->first_run = in->first_run;
  if (in->nb > 0) {
    std::copy_n(in->words, in->nw, made->words);
    std::copy_n(in->val, in->nb, made->val);
  }
  return install(made, out, vecmw_free);
}

template <class R>
R* copy(const Call& call, const R* in, R* out) {
  LM_NEED(in);
  return in == out ? out : copied(call, in, out);
}

// A tree that is one chain to the right, from entries in index order.
template <class Source, class Each>
VECM* chained(const Call& call, const Source* v, int dim, int nb, Each each) {
  VECM* const out = morse::createTree(call, dim, nb);
  if (!out) return nullptr;
  VECM_NODE* last = nullptr;
  each(v, [out, &last](int i, double x) { last = morse::append(out, last, i, x); });
  return out;
}

// A window form of entries in index order, counted first.
template <class Source, class Each>
VECMW* windowed(const Call& call, const Source* v, int dim, int nb, Each each) {
  morse::Words counting;
  each(v, [&counting](int i, double) { counting.add(i); });
  VECMW* const out = morse::createWindows(call, dim, nb, counting.finish());
  if (!out) return nullptr;
  morse::Words words(out->words);
  double* value = out->val;
  each(v, [&words, &value](int i, double x) {
    words.add(i);
    *value++ = x;
  });
  words.finish();
  out->first_run = words.beginsWithRun() ? 1 : 0;
  return out;
}

const auto stored = [](const auto* v, auto f) { morse::eachEntry(v, f); };
const auto kept = [](const VEC* v, auto f) { morse::eachKept(v, f); };

template <class Source>
VEC* expanded(const Call& call, const Source* v, VEC* out) {
  LM_NEED(v);
  out = exactVector(call, out, v->dim);
  if (!out) return nullptr;
  std::fill_n(out->ve, v->dim, 0.0);
  morse::eachEntry(v, [out](int i, double x) { out->ve[i] = x; });
  return out;
}

// Whether the indices ascend within the length.
bool areAscending(const VECMP* v) {
  for (int k = 0; k < v->nb; ++k)
    if (v->idx[k] < (k > 0 ? v->idx[k - 1] + 1 : 0) || v->idx[k] >= v->dim) return false;
  return true;
}

VECM* inserted(const Call& call, const VECMP* v) {
  VECM* const out = morse::createTree(call, v->dim, v->nb);
  for (int k = 0; out && k < v->nb; ++k)
    LM_vecm_addval(out, v->idx[k], v->val[k], 0);
  return out;
}

} // namespace

#define LM_DEFINE_COPY(name, R)                                                                    \
  R* name(const R* in, R* out, int* status) {                                                      \
    LM_ENTER_STATUS(name);                                                                         \
    return copy(call, in, out);                                                                    \
  }
LM_DEFINE_COPY(LM_vecm_copy, VECM)
LM_DEFINE_COPY(LM_vecmp_copy, VECMP)
LM_DEFINE_COPY(LM_vecmw_copy, VECMW)

VECM* LM_vec2vecm(const VEC* v, int* status) {
  LM_ENTER_STATUS(LM_vec2vecm);
  LM_NEED(v);
  return chained(call, v, length(v), morse::countKept(v), kept);
}

VECMP* LM_vec2vecmp(const VEC* v, int* status) {
  LM_ENTER_STATUS(LM_vec2vecmp);
  LM_NEED(v);
  VECMP* const out = morse::createPacked(call, length(v), morse::countKept(v));
  if (!out) return nullptr;
  int k = 0;
  morse::eachKept(v, [out, &k](int i, double x) {
    out->idx[k] = i;
    out->val[k++] = x;
  });
  return out;
}

VECMW* LM_vec2vecmw(const VEC* v, int* status) {
  LM_ENTER_STATUS(LM_vec2vecmw);
  LM_NEED(v);
  return windowed(call, v, length(v), morse::countKept(v), kept);
}

VEC* LM_vecm2vec(const VECM* v, VEC* out, int* status) {
  LM_ENTER_STATUS(LM_vecm2vec);
  return expanded(call, v, out);
}

VEC* LM_vecmw2vec(const VECMW* v, VEC* out, int* status) {
  LM_ENTER_STATUS(LM_vecmw2vec);
  return expanded(call, v, out);
}

void BT_fill_pack(const VECM* v, int* indices, double* values) {
  if (!v || !indices || !values) return;
  morse::eachEntry(v, [&indices, &values](int i, double x) {
    *indices++ = i;
    *values++ = x;
  });
}

VECMP* LM_vecm2vecmp(const VECM* v, int* status) {
  LM_ENTER_STATUS(LM_vecm2vecmp);
  LM_NEED(v);
  VECMP* const out = morse::createPacked(call, v->dim, v->nb);
  if (out) BT_fill_pack(v, out->idx, out->val);
  return out;
}

VECM* LM_vecmp2vecm(const VECMP* v, int* status) {
  LM_ENTER_STATUS(LM_vecmp2vecm);
  LM_NEED(v);
  // Ascending insertion makes a chain; it is made without searching.
  return areAscending(v) ? chained(call, v, v->dim, v->nb, stored) : inserted(call, v);
}

VECM* LM_vecmw2vecm(const VECMW* v, int* status) {
  LM_ENTER_STATUS(LM_vecmw2vecm);
  LM_NEED(v);
  return chained(call, v, v->dim, v->nb, stored);
}

VECMW* LM_vecmp2vecmw(const VECMP* v, int* status) {
  LM_ENTER_STATUS(LM_vecmp2vecmw);
  LM_NEED(v);
  if (!areAscending(v)) return call.fail(2);
  return windowed(call, v, v->dim, v->nb, stored);
}
