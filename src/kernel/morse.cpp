// Sparse vectors: making them, and the entries of a tree.
#include "kernel/morse.h"

#include <algorithm>
#include <cstdint>

#include <zarel/zarelmem.h>

#include "kernel/record.h"

namespace Zarel::kernel::morse {

namespace {

enum { GrowthStep = 10 };

template <class T>
T* allocate(const Call& call, int count) {
  return static_cast<T*>(zarelmem_calloc(static_cast<std::size_t>(count), sizeof(T), call.tag(),
                                         allocationFlag(), __FILE__, __LINE__));
}

void release(void* block) {
  zarelmem_free(block, __FILE__, __LINE__);
}

long bytes(const VECM* v) {
  return static_cast<long>(sizeof(VECM) + v->room * sizeof(VECM_NODE));
}

long bytes(const VECMP* v) {
  return static_cast<long>(sizeof(VECMP) + std::max(v->nb, 1) * (sizeof(int) + sizeof(double)));
}

long bytes(const VECMW* v) {
  return static_cast<long>(sizeof(VECMW) + v->nw * sizeof(int) + v->nb * sizeof(double));
}

// Tests the sizes of a new record; false after reporting.
bool areSizes(const Call& call, int dim, int nb) {
  if (dim < 0)
    call.fail(20);
  else if (nb < 0 || nb > dim)
    call.fail(2);
  return dim >= 0 && nb >= 0 && nb <= dim;
}

// Moves the links of all nodes, and the root, from the block that stood at `old` to the one that
// holds them now.
void rebase(VECM* v, std::uintptr_t old) {
  const auto moved = [v, old](VECM_NODE*& link) {
    if (link) link = v->nodes + (reinterpret_cast<std::uintptr_t>(link) - old) / sizeof(VECM_NODE);
  };
  for (int k = 0; k < v->nb; ++k) {
    moved(v->nodes[k].left);
    moved(v->nodes[k].right);
  }
  moved(v->root);
}

bool resizeBlock(const Call& call, VECM* v, int nodes) {
  const auto old = reinterpret_cast<std::uintptr_t>(v->nodes);
  const long before = bytes(v);
  void* const block =
      zarelmem_realloc(v->nodes, static_cast<std::size_t>(nodes) * sizeof(VECM_NODE), call.tag(),
                       allocationFlag(), __FILE__, __LINE__);
  if (!block) {
    call.fail(3);
    return false;
  }
  v->nodes = static_cast<VECM_NODE*>(block);
  v->room = nodes;
  account(LM_TYPE_VECM, before, bytes(v), 0);
  if (reinterpret_cast<std::uintptr_t>(block) != old) rebase(v, old);
  return true;
}

// One node more than there are. The count of nodes is raised before memory is asked for, and stays
// raised if there is none.
bool growByStep(const Call& call, VECM* v) {
  if (v->nb >= v->max_nb)
    v->max_nb = v->max_nb > v->dim - GrowthStep ? v->dim : v->max_nb + GrowthStep;
  return resizeBlock(call, v, v->max_nb);
}

} // namespace

VECM* createTree(const Call& call, int dim, int nb) {
  if (!areSizes(call, dim, nb)) return nullptr;
  auto* const v = allocate<VECM>(call, 1);
  if (!v) return call.fail(3);
  v->dim = v->max_dim = dim;
  v->max_nb = v->room = std::max(nb, 1);
  v->nodes = allocate<VECM_NODE>(call, v->max_nb);
  if (!v->nodes) {
    release(v);
    return call.fail(3);
  }
  account(LM_TYPE_VECM, 0, bytes(v), 1);
  return v;
}

VECMP* createPacked(const Call& call, int dim, int nb) {
  if (!areSizes(call, dim, nb)) return nullptr;
  auto* const v = allocate<VECMP>(call, 1);
  if (!v) return call.fail(3);
  v->dim = dim;
  v->nb = nb;
  account(LM_TYPE_VECMP, 0, bytes(v), 1);
  v->idx = allocate<int>(call, std::max(nb, 1));
  v->val = allocate<double>(call, std::max(nb, 1));
  if (v->idx && v->val) return v;
  vecmp_free(v);
  return call.fail(3);
}

VECMW* createWindows(const Call& call, int dim, int nb, int nw) {
  auto* const v = allocate<VECMW>(call, 1);
  if (!v) return call.fail(3);
  v->dim = dim;
  v->nb = nb;
  v->nw = nw;
  account(LM_TYPE_VECMW, 0, bytes(v), 1);
  if (nb == 0) return v;
  v->words = allocate<int>(call, nw);
  v->val = allocate<double>(call, nb);
  if (v->words && v->val) return v;
  vecmw_free(v);
  return call.fail(3);
}

bool emptyTree(const Call& call, VECM* v, int dim, int nb) {
  const int nodes = std::max(nb, 1);
  const int kept = v->nb;
  VECM_NODE* const root = v->root;
  v->nb = 0; // nothing to rebase
  v->root = nullptr;
  if (v->room != nodes && !resizeBlock(call, v, nodes)) {
    v->nb = kept;
    v->root = root;
    return false;
  }
  v->dim = v->max_dim = dim;
  v->max_nb = v->room;
  return true;
}

VECM_NODE* append(VECM* v, VECM_NODE* last, int index, double value) {
  VECM_NODE* const node = v->nodes + v->nb++;
  *node = {value, index, nullptr, nullptr};
  (last ? last->right : v->root) = node;
  return node;
}

VECM_NODE** link(VECM* v, int index) {
  VECM_NODE** at = &v->root;
  while (*at && (*at)->index != index)
    at = index < (*at)->index ? &(*at)->left : &(*at)->right;
  return at;
}

const VECM_NODE* find(const VECM* v, int index) {
  const VECM_NODE* node = v->root;
  while (node && node->index != index)
    node = index < node->index ? node->left : node->right;
  return node;
}

double keepAbove(const VEC* v) {
  double largest = 0.0;
  for (unsigned i = 0; i < v->dim; ++i)
    largest = std::max(largest, std::fabs(v->ve[i]));
  return largest * 1e-16;
}

int countKept(const VEC* v) {
  int count = 0;
  eachKept(v, [&count](int, double) { ++count; });
  return count;
}

void Words::endGroup() {
  if (_count == 0) return;
  const bool isRun = _count > 1;
  if (isRun && _first == 0) _firstRun = true;
  put(isRun ? -_first : _first);
  if (isRun) put(_count);
  _count = 0;
}

} // namespace Zarel::kernel::morse

using namespace Zarel::kernel;
using morse::bytes;

VECM* LM_vecm_get(int dim, int nb, int* status) {
  LM_ENTER_STATUS(LM_vecm_get);
  return morse::createTree(call, dim, nb);
}

VECMP* LM_vecmp_get(int dim, int nb, int* status) {
  LM_ENTER_STATUS(LM_vecmp_get);
  return morse::createPacked(call, dim, nb);
}

void vecm_free(VECM* v) {
  if (!v) return;
  account(LM_TYPE_VECM, bytes(v), 0, -1);
  morse::release(v->nodes);
  morse::release(v);
}

void vecmp_free(VECMP* v) {
  if (!v) return;
  account(LM_TYPE_VECMP, bytes(v), 0, -1);
  morse::release(v->idx);
  morse::release(v->val);
  morse::release(v);
}

void vecmw_free(VECMW* v) {
  if (!v) return;
  account(LM_TYPE_VECMW, bytes(v), 0, -1);
  morse::release(v->words);
  morse::release(v->val);
  morse::release(v);
}

int LM_vecm_addval(VECM* v, int i, double value, int accumulate) {
  const Call call("_LM_vecm_addval", 0, nullptr, nullptr);
  if (!v) {
    call.fail(8);
    return -1;
  }
  if (i < 0 || i >= v->dim) return -1;
  VECM_NODE** at = morse::link(v, i);
  if (*at) {
    (*at)->value = accumulate ? (*at)->value + value : value;
    return 0;
  }
  if (v->nb >= v->room) {
    if (!morse::growByStep(call, v)) return -1;
    at = morse::link(v, i); // the block may have moved
  }
  *at = v->nodes + v->nb++;
  **at = {value, i, nullptr, nullptr};
  return 0;
}

double LM_vecm_getval(const VECM* v, int i, int* status) {
  LM_ENTER_STATUS(LM_vecm_getval);
  LM_NEED(v);
  const VECM_NODE* const node = morse::find(v, i);
  return node ? node->value : 0.0;
}

VECM* LM_vecm_zero(VECM* v, int* status) {
  LM_ENTER_STATUS(LM_vecm_zero);
  LM_NEED(v);
  std::fill_n(v->nodes, v->room, VECM_NODE());
  v->nb = 0;
  v->root = nullptr;
  return v;
}

VECM* LM_vecm_scal(VECM* v, double alpha, int* status) {
  LM_ENTER_STATUS(LM_vecm_scal);
  LM_NEED(v);
  for (int k = 0; k < v->nb; ++k)
    v->nodes[k].value *= alpha;
  return v;
}
