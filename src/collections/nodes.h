// What both forms of lists do with nodes.
#ifndef ZAREL_COLLECTIONS_NODES_H
#define ZAREL_COLLECTIONS_NODES_H

#include <zarel/bf.h>
#include <zarel/liste_chainee.h>

#include "collections/report.h"
#include "runtime/fail.h"

namespace Zarel {

// What fails here is reported as an error of `function`, the one that the caller has called.

// A node with an object; null when there is no memory.
LIS* newNode(void* object, int type, const char* function = __builtin_FUNCTION());
// Frees a node that is in no list, and its object if a function is given.
void freeNode(LIS* node, LIS_FREE free);
// Frees a whole chain of nodes.
void freeNodes(LIS* first, LIS_FREE free);

// Link a node in; `at` is in a list.
void linkAfter(LIS* at, LIS* node);
void linkBefore(LIS* at, LIS* node);
// Closes the gap that a node leaves.
void unlink(LIS* node);

LIS* lastOf(LIS* first);
bool isOfType(const LIS& node, int type);
bool matches(const LIS& node, const void* key, LIS_COMPARE compare);

// The first node for which `test` holds, null if there is none.
template <class Node, class Test>
Node* find(Node* first, Test test) {
  while (first && !test(*first))
    first = first->next;
  return first;
}

template <class Test>
int countOf(const LIS* first, Test test) {
  int count = 0;
  for (; first; first = first->next)
    count += test(*first) ? 1 : 0;
  return count;
}

LIS* findObject(LIS* first, const void* key, LIS_COMPARE compare);

// Stores what a function with an error word reports.
inline void setError(int* error, int value) {
  if (error) *error = value;
}

// A copy of a node, or one read from a file; null on failure. The node is made before its object,
// so that no object is left without an owner.
LIS* copiedNode(const LIS& node, LIS_COPY copy, const char* function);
LIS* readNode(FILE* stream, LIS_READ read, const char* function);

// Hands copies of all nodes to `put`: 0, or -1 at the first that fails.
template <class Put>
int copyNodes(const LIS* first, LIS_COPY copy, Put put,
              const char* function = __builtin_FUNCTION()) {
  for (; first; first = first->next) {
    LIS* const node = copiedNode(*first, copy, function);
    if (!node) return traced();
    put(node);
  }
  return 0;
}

// Hands the nodes of a file to `put`: 0, or -1 at the first that fails.
template <class Put>
int readNodes(FILE* stream, LIS_READ read, Put put, const char* function = __builtin_FUNCTION()) {
  int count = 0;
  if (BF_fread_int(stream, &count, 1) != 0) return traced();
  if (count < 0) return reported(nothingToRead, "", function);
  for (; count > 0; --count) {
    LIS* const node = readNode(stream, read, function);
    if (!node) return traced();
    put(node);
  }
  return 0;
}

// Writes the nodes of a type with their count, and flushes: 0 or -1.
int writeNodes(FILE* stream, const LIS* first, LIS_WRITE write, int type,
               const char* function = __builtin_FUNCTION());

// Prints all objects: 0, or -1 for a null function or file.
int printNodes(const LIS* first, LIS_PRINT print, FILE* file,
               const char* function = __builtin_FUNCTION());

} // namespace Zarel

#endif
