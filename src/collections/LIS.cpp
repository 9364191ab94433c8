// Lists of bare nodes.
#include <zarel/liste_chainee.h>

#include "collections/nodes.h"
#include "collections/report.h"

using namespace Zarel;

namespace {

// Appends nodes one after the other and walks to the end of the list only once.
class Tail {
public:
  explicit Tail(LIS** list) : _list(list), _last(lastOf(*list)) {}

  void put(LIS* node) {
    if (_last)
      linkAfter(_last, node);
    else
      *_list = node;
    _last = node;
  }

private:
  LIS** _list;
  LIS* _last;
};

// Makes a node and has `link` put it into the list: 0, or -1 without a list or memory, as an error
// of `function`.
template <class Link>
int inserted(LIS** list, void* object, int type, Link link,
             const char* function = __builtin_FUNCTION()) {
  if (!list) return reported(argumentMissing, "", function);
  LIS* const node = newNode(object, type, function);
  if (!node) return traced();
  if (*list)
    link(*list, node);
  else
    *list = node;
  return 0;
}

int removed(LIS** list, LIS* node, LIS_FREE free) {
  if (*list == node) *list = node->next;
  unlink(node);
  freeNode(node, free);
  return 0;
}

} // namespace

LIS* LIS_creer(int type, int* error) {
  LIS* const node = newNode(nullptr, type);
  setError(error, node ? 0 : -1);
  return node;
}

int LIS_ins(LIS** list, void* object, int type) {
  return inserted(list, object, type, linkAfter);
}

int LIS_ins_debut(LIS** list, void* object, int type) {
  return inserted(list, object, type, [list](LIS* first, LIS* node) {
    linkBefore(first, node);
    *list = node;
  });
}

int LIS_ins_fin(LIS** list, void* object, int type) {
  return inserted(list, object, type,
                  [](LIS* first, LIS* node) { linkAfter(lastOf(first), node); });
}

int LIS_ins_fin_unique(LIS** list, void* object, int type, int* inserted, LIS_COMPARE compare) {
  setError(inserted, 0);
  if (list && findObject(*list, object, compare)) return 0;
  if (LIS_ins_fin(list, object, type) != 0) return traced();
  setError(inserted, 1);
  return 0;
}

int LIS_append(LIS** list, LIS* other) {
  if (!list) return reported(argumentMissing);
  if (!other) return 0;
  if (LIS* const last = lastOf(*list)) {
    // Chains that share a node share their end: linked, they would go round for ever.
    if (last == lastOf(other)) return reported(argumentMissing);
    last->next = other;
    other->previous = last;
  } else {
    *list = other;
  }
  return 0;
}

int LIS_chercher(LIS* list, const void* key, LIS_COMPARE compare, LIS** where) {
  LIS* const found = findObject(list, key, compare);
  if (where) *where = found;
  return found ? 1 : 0;
}

LIS* LIS_chercher_element(LIS* list, const LIS* node) {
  return find(list, [=](const LIS& other) { return &other == node; });
}

LIS* LIS_chercher_objet(LIS* list, const void* object, LIS_COMPARE compare) {
  return findObject(list, object, compare);
}

LIS* LIS_chercher_ieme(LIS* list, int index) {
  if (index < 0) return nullptr;
  return find(list, [index](const LIS&) mutable { return index-- == 0; });
}

LIS* LIS_chercher_type(LIS* list, int type) {
  return find(list, [=](const LIS& node) { return isOfType(node, type); });
}

int LIS_length(const LIS* list) {
  return LIS_length_type(list, LIS_ALL_TYPES);
}

int LIS_length_cmp(const LIS* list, const void* key, LIS_COMPARE compare) {
  return countOf(list, [=](const LIS& node) { return matches(node, key, compare); });
}

int LIS_length_type(const LIS* list, int type) {
  return countOf(list, [=](const LIS& node) { return isOfType(node, type); });
}

int LIS_exist(const LIS* list, const void* key, LIS_COMPARE compare) {
  return find(list, [=](const LIS& node) { return matches(node, key, compare); }) ? 1 : 0;
}

int LIS_sup_elt(LIS** list, LIS* node, LIS_FREE free) {
  if (!list || !*list || !node) return reported(argumentMissing);
  return LIS_chercher_element(*list, node) ? removed(list, node, free) : 0;
}

int LIS_sup_objet(LIS** list, const void* key, LIS_COMPARE compare, LIS_FREE free) {
  if (!list || !*list) return reported(argumentMissing);
  LIS* const node = findObject(*list, key, compare);
  return node ? removed(list, node, free) : 0;
}

LIS* LIS_copier(const LIS* list, LIS_COPY copy, int* error) {
  LIS* result = nullptr;
  Tail tail(&result);
  setError(error, copyNodes(list, copy, [&](LIS* node) { tail.put(node); }));
  return result;
}

void LIS_free(LIS** list, LIS_FREE free) {
  if (!list) return;
  freeNodes(*list, free);
  *list = nullptr;
}

int LIS_print(const LIS* list, LIS_PRINT print, FILE* file) {
  return printNodes(list, print, file);
}

int LIS_binput(FILE* stream, LIS** list, LIS_READ read) {
  if (!stream) return reported(nothingToRead);
  if (!list || !read) return reported(argumentMissing);
  Tail tail(list);
  return readNodes(stream, read, [&](LIS* node) { tail.put(node); });
}

int LIS_boutput(FILE* stream, const LIS* list, LIS_WRITE write, int type) {
  if (!stream || !write) return reported(argumentMissing);
  return writeNodes(stream, list, write, type);
}
