// Bit vectors: making them, single bits, counts and iteration.
#include <algorithm>

#include <zarel/lm_bitvec.h>
#include <zarel/lm_ivec.h>
#include <zarel/zarelmem.h>

#include "kernel/bitruns.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

enum { DefaultCapacity = 100, Growth = 50 };

bool isKind(const BVEC* bv, int kind) {
  return bv->kind == kind;
}

IVEC* duplicate(const Call& call, const IVEC* in) {
  if (!in) return nullptr;
  IVEC* const out = exactVector<IVEC>(call, nullptr, length(in));
  if (out) std::copy_n(in->ive, in->dim, out->ive);
  return out;
}

BVEC* cloned(const Call& call, const BVEC* in) {
  BVEC* const out = bits::create(call, call.tag(), allocationFlag(), LM_BV_TOUT, in->dim, 0);
  if (!out) return nullptr;
  *out = *in;
  out->starts = duplicate(call, in->starts);
  out->ends = duplicate(call, in->ends);
  out->bits = duplicate(call, in->bits);
  if (!out->starts == !in->starts && !out->ends == !in->ends && !out->bits == !in->bits) return out;
  LM_bv_free(out);
  return nullptr;
}

bool resizeData(const Call& call, const char* tag, int flag, IVEC*& data, int size) {
  IVEC* const resized = resizeVector(call, tag, flag, data, size);
  if (resized) data = resized;
  return resized != nullptr;
}

// Cuts the runs at the end of the set.
void clipRuns(BVEC* bv) {
  while (bv->count > 0 && bv->starts->ive[bv->count - 1] >= bv->dim)
    --bv->count;
  for (int run = 0; run < bv->count; ++run)
    bv->ends->ive[run] = std::min(bv->ends->ive[run], bv->dim - 1);
}

BVEC* resizedRuns(const Call& call, const char* tag, int flag, BVEC* bv, int dim, int capacity) {
  const int room = std::max({capacity, bv->count, 1});
  if (!resizeData(call, tag, flag, bv->starts, room) ||
      !resizeData(call, tag, flag, bv->ends, room))
    return nullptr;
  bv->capacity = room;
  bv->dim = dim;
  clipRuns(bv);
  return bv;
}

BVEC* resizedWords(const Call& call, const char* tag, int flag, BVEC* bv, int dim) {
  const int words = bits::wordCount(dim);
  if (!resizeData(call, tag, flag, bv->bits, words)) return nullptr;
  bv->dim = dim;
  bv->count = words;
  const int stored = std::max(words, 1) * bits::WordBits - 1;
  if (words == 0 || dim % bits::WordBits != 0) bits::setRange(bv, dim, stored, false);
  return bv;
}

// Runs are counted as they stand; only an index shared by two neighbours counts once.
int countRuns(const BVEC* bv) {
  int count = 0;
  for (int run = 0; run < bv->count; ++run) {
    count += bv->ends->ive[run] - bv->starts->ive[run] + 1;
    if (run > 0 && bv->starts->ive[run] == bv->ends->ive[run - 1]) --count;
  }
  return count;
}

int countSegment(const BVEC* bv, int first, int last) {
  first = std::max(first, 0);
  const int end = last >= bv->dim ? bv->dim : last + 1;
  int count = 0, onState = 0, offState = 0;
  for (int i = bits::nextOn(bv, first, onState); i < end; i = bits::nextOn(bv, i, onState)) {
    const int off = bits::nextOff(bv, i, offState);
    count += std::min(off, end) - i;
    i = off;
  }
  return count;
}

int countWords(const BVEC* bv) {
  int count = 0;
  for (int w = 0; w < bv->count; ++w)
    count += __builtin_popcount(bits::word(bv, w));
  return count;
}

int isOnInRuns(const BVEC* bv, int i) {
  const int* const ends = bv->ends->ive;
  const auto run = std::lower_bound(ends, ends + bv->count, i) - ends;
  return run < bv->count && bv->starts->ive[run] <= i;
}

int isOnInEntries(const BVEC* bv, int i) {
  const int* const entries = bv->bits->ive;
  return std::binary_search(entries, entries + bv->count, i);
}

// Whether ascending insertion may add i behind `last`, and where there is room for one more.
bool growIfFull(const Call& call, BVEC* bv) {
  if (bv->count < bv->capacity) return true;
  const int room = bv->capacity + Growth;
  if (isKind(bv, LM_BV_BLOC))
    return LM_bv_resize_bloc(call.tag(), allocationFlag(), bv, bv->dim, room, 0, nullptr, nullptr);
  if (!resizeData(call, call.tag(), allocationFlag(), bv->bits, room)) return false;
  bv->capacity = room;
  return true;
}

int insertInRuns(const Call& call, BVEC* bv, int i) {
  const int last = bv->count > 0 ? bv->ends->ive[bv->count - 1] : -1;
  if (bv->count > 0 && i == last + 1) {
    bv->ends->ive[bv->count - 1] = i;
    return 0;
  }
  if (i <= last) {
    call.refuse();
    return -1;
  }
  if (!growIfFull(call, bv)) {
    call.refuse();
    return -1;
  }
  bv->starts->ive[bv->count] = bv->ends->ive[bv->count] = i;
  ++bv->count;
  return 0;
}

int insertInEntries(const Call& call, BVEC* bv, int i) {
  if (bv->count > 0 && i <= bv->bits->ive[bv->count - 1]) {
    call.refuse();
    return -1;
  }
  if (!growIfFull(call, bv)) {
    call.refuse();
    return -1;
  }
  bv->bits->ive[bv->count++] = i;
  return 0;
}

int setBit(BVEC* bv, int i, bool on) {
  if (!bv || !isKind(bv, LM_BV_CODAGE) || i < 0 || i >= bv->dim) return -1;
  bits::setRange(bv, i, i, on);
  return 0;
}

using Next = int (*)(const BVEC*, int, int&);

// The answer of the iterator: the next index that `next` finds, and on past it.
int advance(BVEC* bv, Next next) {
  if (!bv) return -1;
  const int found = next(bv, bv->position, bv->state);
  bv->position = std::min(found, bv->dim - 1) + 1;
  return found < bv->dim ? found : -1;
}

} // namespace

#define LM_DEFINE_GET_SIZED(name, kind)                                                            \
  BVEC* name(LM_TAG, int dim, LM_ARGS) {                                                           \
    LM_ENTER(name);                                                                                \
    return bits::create(call, tag, flag, kind, dim, 0);                                            \
  }
LM_DEFINE_GET_SIZED(LM_bv_get_codage, LM_BV_CODAGE)
LM_DEFINE_GET_SIZED(LM_bv_get_direct, LM_BV_DIRECT)
LM_DEFINE_GET_SIZED(LM_bv_get_tout, LM_BV_TOUT)

#define LM_DEFINE_GET_ROOM(name, kind)                                                             \
  BVEC* name(LM_TAG, int dim, int capacity, LM_ARGS) {                                             \
    LM_ENTER(name);                                                                                \
    return bits::create(call, tag, flag, kind, dim, capacity);                                     \
  }
LM_DEFINE_GET_ROOM(LM_bv_get_bloc, LM_BV_BLOC)
LM_DEFINE_GET_ROOM(LM_bv_get_ivec, LM_BV_IVEC)

BVEC* LM_bv_get(LM_TAG, int kind, int dim, LM_ARGS) {
  LM_ENTER(LM_bv_get);
  if (kind == LM_BV_IVEC) return call.refuse();
  const bool known = kind >= LM_BV_BLOC && kind <= LM_BV_TOUT;
  return bits::create(call, tag, flag, known ? kind : static_cast<int>(LM_BV_BLOC), dim,
                      DefaultCapacity);
}

int LM_bv_free(BVEC* bv) {
  if (!bv) return -1;
  for (IVEC* const data : {bv->starts, bv->ends, bv->bits})
    freeVector(data);
  account(LM_TYPE_BVEC, sizeof(BVEC), 0, -1);
  zarelmem_free(bv, __FILE__, __LINE__);
  return 0;
}

BVEC* LM_bv_copy(const BVEC* in, BVEC* out, LM_ARGS) {
  LM_ENTER(LM_bv_copy);
  LM_NEED(in);
  return in == out ? out : bits::install(cloned(call, in), out);
}

BVEC* LM_bv_resize_bloc(LM_TAG, BVEC* bv, int dim, int capacity, LM_ARGS) {
  LM_ENTER(LM_bv_resize_bloc);
  if (dim < 0 || capacity < 0) return call.fail(20);
  if (!bv) return bits::create(call, tag, flag, LM_BV_BLOC, dim, capacity);
  if (!isKind(bv, LM_BV_BLOC)) return call.refuse();
  return resizedRuns(call, tag, flag, bv, dim, capacity);
}

BVEC* LM_bv_resize_codage(LM_TAG, BVEC* bv, int dim, LM_ARGS) {
  LM_ENTER(LM_bv_resize_codage);
  if (dim < 0) return call.fail(20);
  if (!bv) return bits::create(call, tag, flag, LM_BV_CODAGE, dim, 0);
  if (!isKind(bv, LM_BV_CODAGE)) return call.refuse();
  return resizedWords(call, tag, flag, bv, dim);
}

int LM_bv_is_on(const BVEC* bv, int i) {
  if (!bv || bv->kind < LM_BV_BLOC || bv->kind >= LM_BV_TOUT) return -1;
  if (i < 0 || i >= bv->dim) return 0;
  switch (bv->kind) {
  case LM_BV_BLOC:
    return isOnInRuns(bv, i);
  case LM_BV_CODAGE:
    return (bits::word(bv, i / bits::WordBits) & bits::maskOf(i)) != 0;
  case LM_BV_IVEC:
    return isOnInEntries(bv, i);
  default:
    return bv->bits->ive[i];
  }
}

int LM_bv_is_off(const BVEC* bv, int i) {
  return LM_bv_is_on(bv, i) == 0;
}

int LM_bv_set_on(BVEC* bv, int i) {
  return setBit(bv, i, true);
}

int LM_bv_set_off(BVEC* bv, int i) {
  return setBit(bv, i, false);
}

int LM_bv_insere(BVEC* bv, int i, int* status) {
  LM_ENTER_STATUS(LM_bv_insere);
  if (!bv) {
    call.fail(8);
    return -1;
  }
  if (i < 0 || i >= bv->dim) {
    call.refuse();
    return -1;
  }
  if (isKind(bv, LM_BV_BLOC)) return insertInRuns(call, bv, i);
  if (isKind(bv, LM_BV_IVEC)) return insertInEntries(call, bv, i);
  if (!isKind(bv, LM_BV_TOUT)) bits::setRange(bv, i, i, true);
  return 0;
}

int LM_bv_nb_on(const BVEC* bv) {
  if (!bv) return 0;
  switch (bv->kind) {
  case LM_BV_BLOC:
    return countRuns(bv);
  case LM_BV_CODAGE:
    return countWords(bv);
  case LM_BV_IVEC:
    return bv->count;
  case LM_BV_DIRECT:
    return bv->dim - static_cast<int>(std::count(bv->bits->ive, bv->bits->ive + bv->dim, 0));
  default:
    return bv->dim;
  }
}

int LM_bv_nb_off(const BVEC* bv) {
  return bv ? bv->dim - LM_bv_nb_on(bv) : 0;
}

int LM_bv_nb_on_segment(const BVEC* bv, int first, int last) {
  return bv && first <= last && last >= 0 ? countSegment(bv, first, last) : 0;
}

IVEC* LM_bv_build_nb_active_bit_per(const BVEC* bv, int size, IVEC* out, LM_ARGS) {
  LM_ENTER(LM_bv_build_nb_active_bit_per);
  LM_NEED(bv);
  if (size < 1) return call.fail(20);
  const int groups = bv->dim / size + (bv->dim % size != 0);
  out = exactVector(call, out, groups);
  if (!out) return nullptr;
  std::fill_n(out->ive, groups, 0);
  int state = 0;
  for (int i = bits::nextOn(bv, 0, state); i < bv->dim; i = bits::nextOn(bv, i + 1, state))
    ++out->ive[i / size];
  return out;
}

void LM_bv_initialize(BVEC* bv) {
  LM_bv_set_iterateur(bv, 0);
}

void LM_bv_set_iterateur(BVEC* bv, int i) {
  if (!bv) return;
  bv->position = std::max(i, 0);
  bv->state = 0;
}

int LM_bv_on_suivant(BVEC* bv) {
  return advance(bv, bits::nextOn);
}

int LM_bv_off_suivant(BVEC* bv) {
  return advance(bv, bits::nextOff);
}
