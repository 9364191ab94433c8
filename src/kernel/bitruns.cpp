#include "kernel/bitruns.h"

#include <utility>

#include <zarel/zarelmem.h>

#include "kernel/record.h"

namespace Zarel::kernel::bits {

namespace {

constexpr std::uint32_t allBits = 0xFFFFFFFFu;

enum { FirstRoom = 16 };

// The first index from i on whose bit in `flipped` words is set, `dim` if there is none.
int scanWords(const BVEC* bv, int i, std::uint32_t flip) {
  const int words = wordCount(bv->dim);
  for (int w = i / WordBits; w < words; ++w) {
    std::uint32_t found = word(bv, w) ^ flip;
    if (w == i / WordBits) found &= allBits << (i % WordBits);
    if (found != 0) return std::min(w * WordBits + __builtin_ctz(found), bv->dim);
  }
  return bv->dim;
}

int scanDirect(const BVEC* bv, int i, bool on) {
  while (i < bv->dim && (bv->bits->ive[i] != 0) != on)
    ++i;
  return i;
}

// The first of the ascending numbers, from `state` on, that is not below i. Long ways are
// shortened by steps that double.
int search(const int* numbers, int count, int i, int state) {
  int step = 1;
  while (step < count - state && numbers[state + step] < i) {
    state += step;
    step *= 2;
  }
  const int end = std::min(count - state, step) + state;
  return static_cast<int>(std::lower_bound(numbers + state, numbers + end, i) - numbers);
}

int nextOnRun(const BVEC* bv, int i, int& run) {
  run = search(bv->ends->ive, bv->count, i, run);
  return run < bv->count ? std::min(std::max(i, bv->starts->ive[run]), bv->dim) : bv->dim;
}

// Runs that touch or overlap are one.
int nextOffRun(const BVEC* bv, int i, int& run) {
  run = search(bv->ends->ive, bv->count, i, run);
  for (; run < bv->count && bv->starts->ive[run] <= i; ++run)
    i = std::max(i, bv->ends->ive[run] + 1);
  return std::min(i, bv->dim);
}

int nextOnEntry(const BVEC* bv, int i, int& entry) {
  entry = search(bv->bits->ive, bv->count, i, entry);
  return entry < bv->count ? std::min(bv->bits->ive[entry], bv->dim) : bv->dim;
}

int nextOffEntry(const BVEC* bv, int i, int& entry) {
  entry = search(bv->bits->ive, bv->count, i, entry);
  for (; entry < bv->count && bv->bits->ive[entry] <= i; ++entry)
    if (bv->bits->ive[entry] == i) ++i;
  return std::min(i, bv->dim);
}

} // namespace

int nextOn(const BVEC* bv, int i, int& state) {
  if (i >= bv->dim) return bv->dim;
  switch (bv->kind) {
  case LM_BV_BLOC:
    return nextOnRun(bv, i, state);
  case LM_BV_CODAGE:
    return scanWords(bv, i, 0);
  case LM_BV_IVEC:
    return nextOnEntry(bv, i, state);
  case LM_BV_DIRECT:
    return scanDirect(bv, i, true);
  default:
    return i;
  }
}

int nextOff(const BVEC* bv, int i, int& state) {
  if (i >= bv->dim) return bv->dim;
  switch (bv->kind) {
  case LM_BV_BLOC:
    return nextOffRun(bv, i, state);
  case LM_BV_CODAGE:
    return scanWords(bv, i, allBits);
  case LM_BV_IVEC:
    return nextOffEntry(bv, i, state);
  case LM_BV_DIRECT:
    return scanDirect(bv, i, false);
  default:
    return bv->dim;
  }
}

std::uint32_t segmentMask(int w, int first, int last) {
  std::uint32_t mask = allBits;
  if (w == first / WordBits) mask &= allBits << (first % WordBits);
  if (w == last / WordBits) mask &= allBits >> (WordBits - 1 - last % WordBits);
  return mask;
}

void setRange(BVEC* bv, int first, int last, bool on) {
  if (bv->kind == LM_BV_DIRECT) {
    std::fill(bv->bits->ive + first, bv->bits->ive + last + 1, on ? 1 : 0);
    return;
  }
  for (int w = first / WordBits; w <= last / WordBits; ++w) {
    const std::uint32_t mask = segmentMask(w, first, last);
    bv->bits->ive[w] = static_cast<int>(on ? word(bv, w) | mask : word(bv, w) & ~mask);
  }
}

BVEC* create(const Call& call, const char* tag, int flag, int kind, int dim, int capacity) {
  if (dim < 0 || capacity < 0) return call.fail(20);
  auto* const bv =
      static_cast<BVEC*>(zarelmem_calloc(1, sizeof(BVEC), tag, flag, __FILE__, __LINE__));
  if (!bv) return call.fail(3);
  account(LM_TYPE_BVEC, 0, sizeof(BVEC), 1);
  bv->kind = kind;
  bv->dim = dim;
  const auto data = [&](IVEC*& ivec, int size) {
    ivec = createVector<IVEC>(call, tag, flag, size);
    return ivec != nullptr;
  };
  bool made = true;
  if (kind == LM_BV_BLOC || kind == LM_BV_IVEC) {
    bv->capacity = std::max(capacity, 1);
    made = kind == LM_BV_IVEC ? data(bv->bits, bv->capacity)
                              : data(bv->starts, bv->capacity) && data(bv->ends, bv->capacity);
  } else if (kind == LM_BV_CODAGE) {
    bv->count = wordCount(dim);
    bv->capacity = -1;
    made = data(bv->bits, bv->count);
  } else if (kind == LM_BV_DIRECT) {
    bv->count = bv->capacity = dim;
    made = data(bv->bits, dim);
  }
  if (made) return bv;
  LM_bv_free(bv);
  return nullptr;
}

BVEC* install(BVEC* result, BVEC* out) {
  if (!result || !out || out == result) return result;
  if (out->kind == result->kind) {
    std::swap(*out, *result);
    LM_bv_free(result);
    return out;
  }
  LM_bv_free(out);
  return result;
}

Builder::Builder(const Call& call, int kind, int dim)
    : _call(call),
      _set(create(call, call.tag(), allocationFlag(), kind, dim, FirstRoom)),
      _failed(!_set) {}

Builder::~Builder() {
  if (_set) LM_bv_free(_set);
}

void Builder::add(int first, int last) {
  if (_failed || last < first) return;
  if (_set->kind == LM_BV_BLOC)
    addRun(first, last);
  else if (_set->kind == LM_BV_IVEC)
    addEntries(first, last);
  else if (_set->kind == LM_BV_CODAGE || _set->kind == LM_BV_DIRECT)
    setRange(_set, first, last, true);
  _count += last - first + 1;
}

BVEC* Builder::finish() {
  const bool hasData = _set && _set->kind >= LM_BV_BLOC && _set->kind < LM_BV_TOUT;
  if (!_failed && !hasData && _count != _set->dim) {
    _failed = true;
    _call.refuse();
  }
  return _failed ? nullptr : std::exchange(_set, nullptr);
}

void Builder::addRun(int first, int last) {
  if (_set->count > 0 && _set->ends->ive[_set->count - 1] == first - 1) {
    _set->ends->ive[_set->count - 1] = last;
    return;
  }
  if (!roomFor(1)) return;
  _set->starts->ive[_set->count] = first;
  _set->ends->ive[_set->count++] = last;
}

void Builder::addEntries(int first, int last) {
  if (!roomFor(last - first + 1)) return;
  for (int i = first; i <= last; ++i)
    _set->bits->ive[_set->count++] = i;
}

// Grows by doubling, as far as the set can need.
bool Builder::roomFor(int entries) {
  const int needed = _set->count + entries;
  if (needed <= _set->capacity) return true;
  const int room = std::max(needed, std::min(_set->capacity, _set->dim / 2) * 2);
  for (IVEC** const data : {&_set->starts, &_set->ends, &_set->bits}) {
    if (!*data) continue;
    IVEC* const grown = resizeVector(_call, _call.tag(), allocationFlag(), *data, room);
    if (!grown) {
      _failed = true;
      return false;
    }
    *data = grown;
  }
  _set->capacity = room;
  return true;
}

} // namespace Zarel::kernel::bits
