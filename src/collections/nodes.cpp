#include "collections/nodes.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

#include <zarel/zarelmem.h>

namespace Zarel {

namespace {

int writeNode(FILE* stream, const LIS& node, LIS_WRITE write) {
  if (BF_fwrite_int(stream, &node.type, 1) != 0) return traced();
  return write(stream, node.object) == 0 ? 0 : traced();
}

} // namespace

LIS* newNode(void* object, int type, const char* function) {
  void* const block = zarelmem_malloc(sizeof(LIS), "LIS", 1, __FILE__, __LINE__);
  if (block) return new (block) LIS{nullptr, nullptr, type, object};
  reported(noMemory, "", function);
  return nullptr;
}

void freeNode(LIS* node, LIS_FREE free) {
  if (free) free(node->object);
  zarelmem_free(node, __FILE__, __LINE__);
}

void freeNodes(LIS* first, LIS_FREE free) {
  while (first) {
    LIS* const next = first->next;
    freeNode(first, free);
    first = next;
  }
}

void linkAfter(LIS* at, LIS* node) {
  node->previous = at;
  node->next = at->next;
  if (at->next) at->next->previous = node;
  at->next = node;
}

void linkBefore(LIS* at, LIS* node) {
  node->next = at;
  node->previous = at->previous;
  if (at->previous) at->previous->next = node;
  at->previous = node;
}

void unlink(LIS* node) {
  if (node->previous) node->previous->next = node->next;
  if (node->next) node->next->previous = node->previous;
}

LIS* lastOf(LIS* first) {
  return find(first, [](const LIS& node) { return node.next == nullptr; });
}

bool isOfType(const LIS& node, int type) {
  return type == LIS_ALL_TYPES || node.type == type;
}

bool matches(const LIS& node, const void* key, LIS_COMPARE compare) {
  return compare ? compare(node.object, key) != 0 : node.object == key;
}

LIS* findObject(LIS* first, const void* key, LIS_COMPARE compare) {
  return find(first, [=](const LIS& node) { return matches(node, key, compare); });
}

LIS* copiedNode(const LIS& node, LIS_COPY copy, const char* function) {
  LIS* const result = newNode(node.object, node.type, function);
  if (!result || !copy) return result;
  int error = 0;
  result->object = copy(node.object, &error);
  if (error == 0) return result;
  freeNode(result, nullptr);
  return nullptr;
}

LIS* readNode(FILE* stream, LIS_READ read, const char* function) {
  int type = 0;
  if (BF_fread_int(stream, &type, 1) != 0) return nullptr;
  LIS* const result = newNode(nullptr, type, function);
  if (!result) return nullptr;
  int error = 0;
  result->object = read(stream, &error);
  if (error == 0) return result;
  freeNode(result, nullptr);
  return nullptr;
}

int writeNodes(FILE* stream, const LIS* first, LIS_WRITE write, int type, const char* function) {
  const auto wanted = [=](const LIS& node) { return isOfType(node, type); };
  const int count = countOf(first, wanted);
  if (BF_fwrite_int(stream, &count, 1) != 0) return traced();
  for (; first; first = first->next)
    if (wanted(*first) && writeNode(stream, *first, write) != 0) return traced();
  return std::fflush(stream) == 0 ? 0 : reported(writeFailed, std::strerror(errno), function);
}

int printNodes(const LIS* first, LIS_PRINT print, FILE* file, const char* function) {
  if (!print || !file) return reported(argumentMissing, "", function);
  for (; first; first = first->next)
    print(first->object, file);
  return printedOn(file, function);
}

} // namespace Zarel
