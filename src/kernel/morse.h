// Making and walking of sparse vectors, for all that works on them.
#ifndef ZAREL_KERNEL_MORSE_H
#define ZAREL_KERNEL_MORSE_H

#include <cmath>

#include <zarel/lm_morse.h>

#include "kernel/call.h"

namespace Zarel::kernel::morse {

// Records with room for `nb` entries; the counts are set, the arrays zero. Null after reporting
// error 3, and for the first two 20 and 2.
VECM* createTree(const Call& call, int dim, int nb);
VECMP* createPacked(const Call& call, int dim, int nb);
// Without values there are no arrays.
VECMW* createWindows(const Call& call, int dim, int nb, int nw);

// Makes the block of a tree `nb` nodes long, at least one; the content is lost. False after
// reporting 3, with the tree as it was.
bool emptyTree(const Call& call, VECM* v, int dim, int nb);
// Appends a node behind the largest index, as the right child of `last`; there is room for it.
VECM_NODE* append(VECM* v, VECM_NODE* last, int index, double value);
// The node of an index, or the link where it belongs.
VECM_NODE** link(VECM* v, int index);
const VECM_NODE* find(const VECM* v, int index);

// Visits the entries in index order with f(index, value). Where a node has a left child, the way
// back up is kept for a while in the right link of the last node below it (J. H. Morris, 1979), so
// that a tree of any depth is walked without a stack; all links are put back.
template <class F>
void eachEntry(const VECM* v, F f) {
  VECM_NODE* node = v->root;
  while (node) {
    if (node->left) {
      VECM_NODE* before = node->left;
      while (before->right && before->right != node)
        before = before->right;
      if (!before->right) {
        before->right = node;
        node = node->left;
        continue;
      }
      before->right = nullptr;
    }
    f(node->index, node->value);
    node = node->right;
  }
}

template <class F>
void eachEntry(const VECMP* v, F f) {
  for (int k = 0; k < v->nb; ++k)
    f(v->idx[k], v->val[k]);
}

// Visits the groups of the words with f(first index, count).
template <class F>
void eachGroup(const VECMW* v, F f) {
  for (int k = 0; k < v->nw;) {
    const bool isRun = v->words[k] < 0 || (k == 0 && v->first_run != 0);
    if (isRun)
      f(std::abs(v->words[k]), v->words[k + 1]);
    else
      f(v->words[k], 1);
    k += isRun ? 2 : 1;
  }
}

template <class F>
void eachEntry(const VECMW* v, F f) {
  const double* value = v->val;
  eachGroup(v, [&value, &f](int first, int count) {
    for (int i = first; i < first + count; ++i)
      f(i, *value++);
  });
}

// Visits the entries of a full vector that are kept.
double keepAbove(const VEC* v);
template <class F>
void eachKept(const VEC* v, F f) {
  const double limit = keepAbove(v);
  for (int i = 0; i < static_cast<int>(v->dim); ++i)
    if (std::fabs(v->ve[i]) > limit) f(i, v->ve[i]);
}
int countKept(const VEC* v);

// Counts the words of ascending indices, or writes them.
class Words {
public:
  explicit Words(int* to = nullptr) : _to(to) {}
  void add(int index) {
    if (_count > 0 && index == _first + _count) {
      ++_count;
      return;
    }
    endGroup();
    _first = index;
    _count = 1;
  }
  // Ends the last group and gives the number of words.
  int finish() {
    endGroup();
    return _written;
  }
  bool beginsWithRun() const { return _firstRun; }

private:
  void endGroup();
  void put(int word) {
    if (_to) _to[_written] = word;
    ++_written;
  }

  int* _to;
  int _first = 0;
  int _count = 0;
  int _written = 0;
  bool _firstRun = false;
};

} // namespace Zarel::kernel::morse

#endif
