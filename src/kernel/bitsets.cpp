// Bit vectors: filling, sets of two sets, conversion.
#include <algorithm>

#include <zarel/lm_bitvec.h>

#include "kernel/bitruns.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

bool isKind(const BVEC* bv, int kind) {
  return bv->kind == kind;
}

// A set that is one run, or empty for last < first.
struct Segment {
  Segment(int dim, int from, int to)
      : first(from), last(to), starts{1, 1, &first}, ends{1, 1, &last}, set{LM_BV_BLOC,
                                                                            dim,
                                                                            to >= from ? 1 : 0,
                                                                            1,
                                                                            &starts,
                                                                            &ends,
                                                                            nullptr,
                                                                            0,
                                                                            0} {}
  Segment(const Segment&) = delete;
  Segment& operator=(const Segment&) = delete;

  int first, last;
  IVEC starts, ends;
  BVEC set;
};

bool either(bool a, bool b) {
  return a || b;
}
bool both(bool a, bool b) {
  return a && b;
}
bool onlySecond(bool a, bool b) {
  return !a && b;
}
bool notFirstOrSecond(bool a, bool b) {
  return !a || b;
}

using Rule = bool (*)(bool, bool);

// Puts a new content into a set, whose iterator stays where it is.
BVEC* replace(BVEC* content, BVEC* target) {
  if (content) content->position = target->position;
  return bits::install(content, target);
}

// target := rule(a, target), in the kind of the target.
BVEC* change(const Call& call, const BVEC* a, BVEC* target, Rule rule) {
  return replace(bits::combine(call, target->kind, a, target, rule), target);
}

// All operations on two sets: null operands and lengths first.
BVEC* changeBy(const Call& call, const BVEC* a, BVEC* target, Rule rule) {
  LM_NEED(a && target);
  if (a->dim != target->dim) return call.fail(1);
  return change(call, a, target, rule);
}

BVEC* setSegment(const Call& call, BVEC* bv, int first, int last, bool on) {
  LM_NEED(bv);
  if (last < first) return bv;
  if (first < 0 || last >= bv->dim) return call.fail(2);
  if (isKind(bv, LM_BV_CODAGE) || isKind(bv, LM_BV_DIRECT)) {
    bits::setRange(bv, first, last, on);
    return bv;
  }
  const Segment segment(bv->dim, first, last);
  return change(call, &segment.set, bv, on ? either : onlySecond);
}

// The set with `dim` bits, all of them on or off, in the kind it has.
BVEC* setAll(const Call& call, BVEC* bv, int dim, bool on) {
  LM_NEED(bv);
  if (dim < 0) return call.fail(20);
  bits::Builder builder(call, bv->kind, dim);
  if (on) builder.add(0, dim - 1);
  return replace(builder.finish(), bv);
}

// The word-by-word form of an operation on two packed sets.
template <class F>
BVEC* combineWords(const Call& call, const BVEC* a, const BVEC* b, F f) {
  BVEC* const result = bits::create(call, call.tag(), allocationFlag(), LM_BV_CODAGE, a->dim, 0);
  for (int w = 0; result && w < a->count; ++w)
    result->bits->ive[w] = static_cast<int>(f(bits::word(a, w), bits::word(b, w)));
  return result;
}

bool arePacked(const BVEC* a, const BVEC* b) {
  return isKind(a, LM_BV_CODAGE) && isKind(b, LM_BV_CODAGE);
}

std::uint32_t orWords(std::uint32_t a, std::uint32_t b) {
  return a | b;
}
std::uint32_t andWords(std::uint32_t a, std::uint32_t b) {
  return a & b;
}

BVEC* united(const Call& call, const BVEC* a, const BVEC* b, BVEC* out) {
  LM_NEED(a && b);
  if (a->dim != b->dim) return call.fail(1);
  if (arePacked(a, b)) return bits::install(combineWords(call, a, b, orWords), out);
  const int kind = isKind(b, LM_BV_TOUT) ? b->kind : a->kind;
  return bits::install(bits::combine(call, kind, a, b, either), out);
}

BVEC* intersected(const Call& call, const BVEC* a, const BVEC* b, BVEC* out) {
  LM_NEED(a && b);
  if (a->dim != b->dim) return call.fail(1);
  if (arePacked(a, b)) return bits::install(combineWords(call, a, b, andWords), out);
  const int kind = isKind(a, LM_BV_TOUT) ? b->kind : a->kind;
  return bits::install(bits::combine(call, kind, a, b, both), out);
}

BVEC* intersectedAs(const Call& call, int kind, const BVEC* a, const BVEC* b, BVEC* out) {
  LM_NEED(a && b);
  if (!isKind(a, kind) || !isKind(b, kind)) return call.refuse();
  return intersected(call, a, b, out);
}

bool isKnown(int kind) {
  return kind >= LM_BV_BLOC && kind <= LM_BV_TOUT;
}

BVEC* converted(const Call& call, const BVEC* in, int kind, BVEC* out) {
  if (!isKnown(kind)) return call.refuse();
  return bits::install(bits::combine(call, kind, in, in, both), out);
}

// The list of the indices that `next` finds one after the other.
IVEC* listed(const Call& call, const BVEC* in, IVEC* out, int count,
             int (*next)(const BVEC*, int, int&)) {
  out = exactVector(call, out, count);
  if (!out) return nullptr;
  int state = 0, i = 0;
  for (int k = 0; k < count; ++k, ++i)
    out->ive[k] = i = next(in, i, state);
  return out;
}

} // namespace

BVEC* LM_bv_set_all_on(BVEC* bv, int dim, LM_ARGS) {
  LM_ENTER(LM_bv_set_all_on);
  return setAll(call, bv, dim, true);
}

BVEC* LM_bv_set_all_off(BVEC* bv, int dim, LM_ARGS) {
  LM_ENTER(LM_bv_set_all_off);
  return setAll(call, bv, dim, false);
}

BVEC* LM_bv_set_to_on_segment(BVEC* bv, int first, int last, LM_ARGS) {
  LM_ENTER(LM_bv_set_to_on_segment);
  return setSegment(call, bv, first, last, true);
}

BVEC* LM_bv_set_to_off_segment(BVEC* bv, int first, int last, LM_ARGS) {
  LM_ENTER(LM_bv_set_to_off_segment);
  return setSegment(call, bv, first, last, false);
}

BVEC* LM_bv_union(const BVEC* a, const BVEC* b, BVEC* out, LM_ARGS) {
  LM_ENTER(LM_bv_union);
  return united(call, a, b, out);
}

BVEC* LM_bv_inter(const BVEC* a, const BVEC* b, BVEC* out, LM_ARGS) {
  LM_ENTER(LM_bv_inter);
  return intersected(call, a, b, out);
}

#define LM_DEFINE_INTER(name, kind)                                                                \
  BVEC* name(const BVEC* a, const BVEC* b, BVEC* out, LM_ARGS) {                                   \
    LM_ENTER(name);                                                                                \
    return intersectedAs(call, kind, a, b, out);                                                   \
  }
LM_DEFINE_INTER(LM_bv_inter_bloc, LM_BV_BLOC)
LM_DEFINE_INTER(LM_bv_inter_codage, LM_BV_CODAGE)
LM_DEFINE_INTER(LM_bv_inter_direct, LM_BV_DIRECT)
LM_DEFINE_INTER(LM_bv_inter_ivec, LM_BV_IVEC)

BVEC* LM_bv_oppose(const BVEC* a, BVEC* out, LM_ARGS) {
  LM_ENTER(LM_bv_oppose);
  LM_NEED(a);
  const int kind = isKind(a, LM_BV_TOUT) ? static_cast<int>(LM_BV_BLOC) : a->kind;
  return bits::install(bits::combine(call, kind, a, a, [](bool on, bool) { return !on; }), out);
}

BVEC* LM_bv_ou_dans_bv(const BVEC* a, BVEC* into, LM_ARGS) {
  LM_ENTER(LM_bv_ou_dans_bv);
  return changeBy(call, a, into, either);
}

BVEC* LM_bv_ou_dans_bv_fast(const BVEC* a, BVEC* into, LM_ARGS) {
  LM_ENTER(LM_bv_ou_dans_bv_fast);
  LM_NEED(a && into);
  if (!arePacked(a, into)) return call.refuse();
  if (a->dim != into->dim) return call.fail(1);
  for (int w = 0; w < a->count; ++w)
    into->bits->ive[w] |= a->bits->ive[w];
  return into;
}

BVEC* LM_bv_on1_to_off2(const BVEC* a, BVEC* b, LM_ARGS) {
  LM_ENTER(LM_bv_on1_to_off2);
  return changeBy(call, a, b, onlySecond);
}

BVEC* LM_bv_off1_to_on2(const BVEC* a, BVEC* b, LM_ARGS) {
  LM_ENTER(LM_bv_off1_to_on2);
  return changeBy(call, a, b, notFirstOrSecond);
}

BVEC* LM_bv_to_bv(const BVEC* in, int kind, BVEC* out, LM_ARGS) {
  LM_ENTER(LM_bv_to_bv);
  LM_NEED(in);
  return converted(call, in, kind, out);
}

IVEC* LM_bv_to_ivec(const BVEC* in, IVEC* out, LM_ARGS) {
  LM_ENTER(LM_bv_to_ivec);
  LM_NEED(in);
  out = exactVector(call, out, in->dim);
  if (!out) return nullptr;
  bits::Walker walker(in);
  for (int i = 0; i < in->dim;) {
    const int next = walker.moveTo(i);
    std::fill(out->ive + i, out->ive + next, walker.on() ? 1 : 0);
    i = next;
  }
  return out;
}

BVEC* LM_ivec_to_bv(const IVEC* in, int kind, BVEC* out, LM_ARGS) {
  LM_ENTER(LM_ivec_to_bv);
  LM_NEED(in);
  IVEC bits = *in; // a view: a direct set over the entries
  const BVEC direct = {LM_BV_DIRECT, length(in), length(in), length(in), nullptr,
                       nullptr,      &bits,      0,          0};
  return converted(call, &direct, kind, out);
}

IVEC* LM_bv_on_to_ivec_compact(const BVEC* in, IVEC* out, LM_ARGS) {
  LM_ENTER(LM_bv_on_to_ivec_compact);
  LM_NEED(in);
  return listed(call, in, out, LM_bv_nb_on_segment(in, 0, in->dim - 1), bits::nextOn);
}

IVEC* LM_bv_off_to_ivec_compact(const BVEC* in, IVEC* out, LM_ARGS) {
  LM_ENTER(LM_bv_off_to_ivec_compact);
  LM_NEED(in);
  return listed(call, in, out, in->dim - LM_bv_nb_on_segment(in, 0, in->dim - 1), bits::nextOff);
}
