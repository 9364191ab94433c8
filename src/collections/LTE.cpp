// Lists with a head.
#include <zarel/liste_chainee.h>

#include <new>

#include <zarel/zarelmem.h>

#include "collections/nodes.h"
#include "collections/report.h"

using namespace Zarel;

namespace {

LIS* firstOf(const LTE* head) {
  return head ? head->first : nullptr;
}

// A node comes in behind `at`, or at the start if that is null.
void putAfter(LTE* head, LIS* at, LIS* node) {
  if (at)
    linkAfter(at, node);
  else if (head->first)
    linkBefore(head->first, node);
  if (!at) head->first = node;
  if (head->last == at) head->last = node;
  head->current = node;
  ++head->count;
}

void putLast(LTE* head, LIS* node) {
  putAfter(head, head->last, node);
}

// Makes a node and puts it in behind `at`: 0, or -1 as an error of `function`.
int insertedAfter(LTE* head, LIS* at, void* object, int type,
                  const char* function = __builtin_FUNCTION()) {
  LIS* const node = newNode(object, type, function);
  if (!node) return traced();
  putAfter(head, at, node);
  return 0;
}

int removed(LTE* head, LIS* node, LIS_FREE free) {
  if (head->first == node) head->first = node->next;
  if (head->last == node) head->last = node->previous;
  if (head->current == node) head->current = nullptr;
  --head->count;
  unlink(node);
  freeNode(node, free);
  return 0;
}

// Whether the nodes of `other` have been appended to a list, `head` or another one.
bool isLinkedOn(const LTE& other, const LTE& head) {
  return other.first == head.first || other.first->previous != nullptr;
}

// Every search leaves its result as the current node.
LIS* nowCurrent(LTE* head, LIS* node) {
  if (head) head->current = node;
  return node;
}

} // namespace

LTE* LTE_creer(int* error) {
  void* const block = zarelmem_malloc(sizeof(LTE), "LTE", 1, __FILE__, __LINE__);
  setError(error, block ? 0 : reported(noMemory));
  return block ? new (block) LTE{0, nullptr, nullptr, nullptr} : nullptr;
}

int LTE_ins(LTE* head, LIS* node, void* object, int type) {
  return LTE_ins_apres(head, node, object, type);
}

int LTE_ins_apres(LTE* head, LIS* node, void* object, int type) {
  if (!head) return reported(argumentMissing);
  return insertedAfter(head, head->first ? node : nullptr, object, type);
}

int LTE_ins_avant(LTE* head, LIS* node, void* object, int type) {
  if (!head) return reported(argumentMissing);
  return insertedAfter(head, head->first && node ? node->previous : nullptr, object, type);
}

int LTE_ins_debut(LTE* head, void* object, int type) {
  if (!head) return reported(argumentMissing);
  return insertedAfter(head, nullptr, object, type);
}

int LTE_ins_fin(LTE* head, void* object, int type) {
  if (!head) return reported(argumentMissing);
  return insertedAfter(head, head->last, object, type);
}

int LTE_ins_fin_unique(LTE* head, void* object, int type, int* inserted, LIS_COMPARE compare) {
  setError(inserted, 0);
  if (LIS* const found = findObject(firstOf(head), object, compare)) {
    head->current = found;
    return 0;
  }
  if (LTE_ins_fin(head, object, type) != 0) return traced();
  setError(inserted, 1);
  return 0;
}

int LTE_append(LTE* head, const LTE* other) {
  if (!head || head == other) return reported(argumentMissing);
  if (!firstOf(other)) return 0;
  if (isLinkedOn(*other, *head)) return reported(argumentMissing);
  if (head->last) {
    head->last->next = other->first;
    other->first->previous = head->last;
  } else {
    head->first = other->first;
  }
  head->last = other->last;
  head->count += other->count;
  return 0;
}

int LTE_chercher(LTE* head, const void* key, LIS_COMPARE compare, LIS** where) {
  LIS* const found = nowCurrent(head, findObject(firstOf(head), key, compare));
  if (where) *where = found;
  return found ? 1 : 0;
}

LIS* LTE_chercher_element(LTE* head, const LIS* node) {
  return nowCurrent(head, LIS_chercher_element(firstOf(head), node));
}

LIS* LTE_chercher_objet(LTE* head, const void* object, LIS_COMPARE compare) {
  return nowCurrent(head, findObject(firstOf(head), object, compare));
}

LIS* LTE_chercher_ieme(LTE* head, int index) {
  return nowCurrent(head, LIS_chercher_ieme(firstOf(head), index));
}

LIS* LTE_chercher_type(LTE* head, int type) {
  return nowCurrent(head, LIS_chercher_type(firstOf(head), type));
}

int LTE_length(const LTE* head) {
  return head ? head->count : 0;
}

int LTE_length_cmp(const LTE* head, const void* key, LIS_COMPARE compare) {
  return LIS_length_cmp(firstOf(head), key, compare);
}

int LTE_length_type(const LTE* head, int type) {
  return LIS_length_type(firstOf(head), type);
}

int LTE_exist(const LTE* head, const void* key, LIS_COMPARE compare) {
  return LIS_exist(firstOf(head), key, compare);
}

int LTE_sup_elt(LTE* head, LIS* node, LIS_FREE free) {
  if (!head || !node) return reported(argumentMissing);
  return LIS_chercher_element(head->first, node) ? removed(head, node, free) : 0;
}

int LTE_sup_objet(LTE* head, const void* key, LIS_COMPARE compare, LIS_FREE free) {
  if (!head) return reported(argumentMissing);
  LIS* const node = findObject(head->first, key, compare);
  return node ? removed(head, node, free) : 0;
}

LTE* LTE_copier(const LTE* head, LIS_COPY copy, int* error) {
  LTE* const result = LTE_creer(error);
  if (!result) return nullptr;
  setError(error, copyNodes(firstOf(head), copy, [=](LIS* node) { putLast(result, node); }));
  return result;
}

void LTE_free(LTE* head, LIS_FREE free) {
  if (!head) return;
  freeNodes(head->first, free);
  zarelmem_free(head, __FILE__, __LINE__);
}

int LTE_print(const LTE* head, LIS_PRINT print, FILE* file) {
  return printNodes(firstOf(head), print, file);
}

int LTE_binput(FILE* stream, LTE* head, LIS_READ read) {
  if (!stream) return reported(nothingToRead);
  if (!head || !read) return reported(argumentMissing);
  return readNodes(stream, read, [=](LIS* node) { putLast(head, node); });
}

int LTE_boutput(FILE* stream, const LTE* head, LIS_WRITE write, int type) {
  if (!stream || !write) return reported(argumentMissing);
  return writeNodes(stream, firstOf(head), write, type);
}
