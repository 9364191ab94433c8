// Feeds bytes to the reader of lists and to hash tables. The first byte chooses: a list file, which
// is read, written and compared, or a run of operations on a table, which is compared with a map.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include <zarel/bf.h>
#include <zarel/erreur.h>
#include <zarel/hash_util.h>
#include <zarel/liste_chainee.h>

#include "fuzz/input.h"

using fuzz::fileOf;
using fuzz::require;

namespace {

int writeText(FILE* stream, const void* object) {
  return BF_fwrite_str(stream, object ? static_cast<const char*>(object) : "");
}

void* readText(FILE* stream, int* error) {
  char* text = nullptr;
  *error = BF_fread_str(stream, &text);
  return text;
}

// An empty text is read back as none.
const char* textOf(const LIS* node) {
  return node->object ? static_cast<const char*>(node->object) : "";
}

bool areEqual(const LIS* a, const LIS* b) {
  for (; a && b; a = a->next, b = b->next)
    if (a->type != b->type || !LIS_cmp_str(textOf(a), textOf(b))) return false;
  return !a && !b;
}

// A list that was read comes back the same from what is written of it.
void comesBack(const LTE* list) {
  FILE* const copy = fileOf(nullptr, 0);
  LIS* again = nullptr;
  require(LTE_boutput(copy, list, writeText, -1) == 0);
  std::rewind(copy);
  require(LIS_binput(copy, &again, readText) == 0);
  require(areEqual(list->first, again) && LIS_length(again) == list->count);
  LIS_free(&again, LIS_free_str);
  std::fclose(copy);
}

void readList(const std::uint8_t* bytes, std::size_t size) {
  FILE* const file = fileOf(bytes, size);
  LTE* const list = LTE_creer(nullptr);
  LTE_binput(file, list, readText);
  comesBack(list);
  LTE_free(list, LIS_free_str);
  std::fclose(file);
}

// One operation: what to do, the length of the key, the key.
void runTable(const std::uint8_t* bytes, std::size_t size) {
  HashTable* table = nullptr;
  require(hashCreate(static_cast<int>(size % 13), &table) == 0);
  static char values[256];
  std::map<std::string, void*> reference;
  while (size >= 2) {
    const std::size_t length = bytes[1] % 8u < size - 2 ? bytes[1] % 8u : size - 2;
    const std::string key = std::string(bytes + 2, bytes + 2 + length).c_str();
    void* const value = values + bytes[0];
    if (bytes[0] % 3 == 0) {
      require(hashAdd(table, key.c_str(), value) == 0);
      reference[key] = value;
    } else if (bytes[0] % 3 == 1) {
      require(hashDelete(table, key.c_str()) == (reference.erase(key) ? 0 : -1));
    } else {
      void* found = nullptr;
      const auto entry = reference.find(key);
      require(hashSearch(table, key.c_str(), &found) == (entry == reference.end() ? 0 : -1));
      require(found == (entry == reference.end() ? nullptr : entry->second));
    }
    bytes += 2 + length;
    size -= 2 + length;
  }
  hashDestroy(table);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  zarel_setErrorBox(zarel_silentErrorBox);
  if (data[0] % 2 == 0)
    readList(data + 1, size - 1);
  else
    runTable(data + 1, size - 1);
  return 0;
}
