// Bit vectors as runs of set bits: the one view in which all kinds look alike.
#ifndef ZAREL_KERNEL_BITRUNS_H
#define ZAREL_KERNEL_BITRUNS_H

#include <algorithm>
#include <cstdint>

#include <zarel/lm_bitvec.h>

#include "kernel/call.h"

namespace Zarel::kernel::bits {

enum { WordBits = 32 };

inline int wordCount(int dim) {
  return dim / WordBits + (dim % WordBits != 0);
}
inline std::uint32_t word(const BVEC* bv, int w) {
  return static_cast<std::uint32_t>(bv->bits->ive[w]);
}
inline std::uint32_t maskOf(int i) {
  return std::uint32_t{1} << (i % WordBits);
}

// The bits of word w that lie in first to last.
std::uint32_t segmentMask(int w, int first, int last);
// Sets or clears the bits first to last of a codage or direct set.
void setRange(BVEC* bv, int first, int last, bool on);

// The first set (clear) index at or after i, `dim` if there is none. `state` says where the search
// may begin, 0 at the start; it stays valid for a larger i.
int nextOn(const BVEC* bv, int i, int& state);
int nextOff(const BVEC* bv, int i, int& state);

// Tells for ascending indices whether they are set and where that changes.
class Walker {
public:
  explicit Walker(const BVEC* bv) : _bv(bv) {}

  // Moves on to index i, and returns the index up to which it stays as it is there.
  int moveTo(int i) {
    _first = std::max(_first, i);
    if (_first >= _end) {
      _first = nextOn(_bv, i, _onState);
      _end = _first < _bv->dim ? nextOff(_bv, _first, _offState) : _bv->dim;
    }
    _on = i >= _first && i < _end;
    return _on ? _end : _first;
  }
  bool on() const { return _on; }

private:
  const BVEC* _bv;
  int _first = 0;
  int _end = 0;
  int _onState = 0;
  int _offState = 0;
  bool _on = false;
};

// Makes a set of a kind from runs in ascending order.
class Builder {
public:
  // The set is allocated under this tag and flag.
  Builder(const Call& call, int kind, int dim);
  ~Builder();
  Builder(const Builder&) = delete;
  Builder& operator=(const Builder&) = delete;

  // Adds the bits first to last, which lie behind all before.
  void add(int first, int last);
  // The set, or null after a failure, which has then been reported.
  BVEC* finish();

private:
  void addRun(int first, int last);
  void addEntries(int first, int last);
  bool roomFor(int entries);

  const Call& _call;
  BVEC* _set;
  int _count = 0; // bits added
  bool _failed;
};

// Makes a set with room for `capacity` runs or entries, all bits clear. Reports errors 20 and 3.
BVEC* create(const Call& call, const char* tag, int flag, int kind, int dim, int capacity);

// Gives the result to the caller: in `out` if that is of the same kind, else in its place.
BVEC* install(BVEC* result, BVEC* out);

// The set of kind `kind` in which `f(a, b)` holds.
template <class F>
BVEC* combine(const Call& call, int kind, const BVEC* a, const BVEC* b, F f) {
  Builder builder(call, kind, a->dim);
  Walker inA(a), inB(b);
  for (int i = 0; i < a->dim;) {
    const int next = std::min(inA.moveTo(i), inB.moveTo(i));
    if (f(inA.on(), inB.on())) builder.add(i, next - 1);
    i = next;
  }
  return builder.finish();
}

} // namespace Zarel::kernel::bits

#endif
