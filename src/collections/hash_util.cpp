#include <zarel/hash_util.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include <zarel/zarelmem.h>
#include <zarel/zarelsys.h>

#include "collections/report.h"
#include "runtime/fail.h"

using namespace Zarel;

namespace {

// Odd numbers from 1; 1 counts as prime.
bool isPrime(int number) {
  for (int divisor = 3; divisor <= number / divisor; divisor += 2)
    if (number % divisor == 0) return false;
  return true;
}

// The largest int is prime, so there is always one.
int primeFrom(int size) {
  int number = size % 2 == 0 ? size + 1 : size;
  while (!isPrime(number))
    number += 2;
  return number;
}

// Up to four bytes as one number, the first one most significant; moves on behind them.
std::uint32_t takeGroup(const char*& key) {
  std::uint32_t group = 0;
  for (int k = 0; k < 4 && *key; ++k)
    group = group << 8 | static_cast<unsigned char>(*key++);
  return group;
}

// A table of a host may have no buckets yet, for which every key belongs to bucket 0.
int bucketOf(const HashTable* table, const char* key) {
  if (table->size == 0) return 0;
  std::uint32_t sum = 0;
  while (*key)
    sum += takeGroup(key);
  return static_cast<int>(sum % static_cast<std::uint32_t>(table->size));
}

// The place in a chain where a key stands or would stand.
HashNode** placeOf(HashNode** chain, const char* key) {
  while (*chain && std::strcmp((*chain)->key, key) < 0)
    chain = &(*chain)->next;
  return chain;
}

bool holds(HashNode* const* place, const char* key) {
  return *place && std::strcmp((*place)->key, key) == 0;
}

int lengthOf(const HashNode* node) {
  int length = 0;
  for (; node; node = node->next)
    ++length;
  return length;
}

void freeNode(HashNode* node) {
  zarelmem_free(node->key, __FILE__, __LINE__);
  zarelmem_free(node, __FILE__, __LINE__);
}

HashNode* newNode(const char* key, void* value) {
  char* const copy = zarel_strdup(key, "HashNode::key");
  if (!copy) return nullptr;
  void* const node = zarelmem_malloc(sizeof(HashNode), "HashNode", 1, __FILE__, __LINE__);
  if (node) return new (node) HashNode{copy, value, nullptr};
  zarelmem_free(copy, __FILE__, __LINE__);
  return nullptr;
}

// Links a new node into place and keeps the counts of the table.
void insert(HashTable& table, int bucket, HashNode** place, HashNode* node) {
  if (!table.buckets[bucket]) ++table.nonEmpty;
  node->next = *place;
  *place = node;
  const int length = lengthOf(table.buckets[bucket]);
  if (length > table.longest) table.longest = length;
}

void tell(const HashTable* table, const char* key, const HashNode* node) {
  if (node)
    std::printf("(hashSearch) \"%s\":%p found in table %p.\n", key, node->value,
                static_cast<const void*>(table));
  else
    std::printf("(hashSearch) Key \"%s\" not found in table %p.\n", key,
                static_cast<const void*>(table));
}

// How many buckets have how many nodes.
std::vector<int> bucketsByLength(const HashTable& table) {
  std::vector<int> counts(static_cast<size_t>(table.longest) + 1);
  for (int k = 0; k < table.size; ++k)
    ++counts[static_cast<size_t>(lengthOf(table.buckets[k]))];
  return counts;
}

void printMoments(FILE* file, const std::vector<int>& counts, int buckets) {
  const auto meanOf = [&](auto term) {
    double sum = 0;
    for (size_t length = 0; length < counts.size(); ++length)
      sum += counts[length] * term(static_cast<double>(length));
    return buckets > 0 ? sum / buckets : 0;
  };
  const double mean = meanOf([](double length) { return length; });
  const double variance = meanOf([=](double length) { return (length - mean) * (length - mean); });
  std::fprintf(file, "\nMean bucket length = %G\n", mean);
  std::fprintf(file, "\nStandard deviation = %G\n", std::sqrt(variance));
}

void printStatistics(FILE* file, const HashTable& table) {
  const std::vector<int> counts = bucketsByLength(table);
  std::fprintf(file,
               "There are %d empty buckets, %d non-empty buckets,\n"
               "and %d items in the longest chain.\n\n",
               table.size - table.nonEmpty, table.nonEmpty, table.longest);
  for (size_t length = 1; length < counts.size(); ++length)
    std::fprintf(file, "Buckets of length %d: %d\n", static_cast<int>(length), counts[length]);
  printMoments(file, counts, table.size);
}

void printBucket(FILE* file, int bucket, const HashNode* node) {
  if (node) std::fprintf(file, "Bucket %d:\n", bucket);
  for (; node; node = node->next)
    std::fprintf(file, "    Value: %p    Key: \"%s\"\n", node->value, node->key);
}

} // namespace

int hashCreate(int size, HashTable** out) {
  if (!out) return reported(tableMissing);
  *out = nullptr;
  if (size < 0) return reported(noMemoryForTable);
  const int buckets = primeFrom(size);
  const size_t bytes = sizeof(HashTable) + static_cast<size_t>(buckets) * sizeof(HashNode*);
  void* const block = zarelmem_calloc(1, bytes, "HashTable", 1, __FILE__, __LINE__);
  if (!block) return reported(noMemoryForTable);
  const auto table = static_cast<HashTable*>(block);
  table->size = buckets;
  table->buckets = reinterpret_cast<HashNode**>(table + 1);
  *out = table;
  return 0;
}

int hashAdd(HashTable* table, const char* key, void* value) {
  if (!table) return reported(tableMissing);
  if (!key) return reported(keyMissing);
  const int bucket = bucketOf(table, key);
  HashNode** const place = placeOf(&table->buckets[bucket], key);
  if (holds(place, key)) {
    (*place)->value = value;
    return 0;
  }
  HashNode* const node = newNode(key, value);
  if (!node) return reported(noMemoryForTable);
  insert(*table, bucket, place, node);
  return 0;
}

int hashSearch(HashTable* table, const char* key, void** value) {
  if (value) *value = nullptr;
  if (!table) return reported(tableMissing);
  if (!key) return 0;
  HashNode** const place = placeOf(&table->buckets[bucketOf(table, key)], key);
  const HashNode* const found = holds(place, key) ? *place : nullptr;
  if (found && value) *value = found->value;
  if (table->debug) tell(table, key, found);
  return found ? -1 : 0;
}

int hashDelete(HashTable* table, const char* key) {
  if (!table) return reported(tableMissing);
  if (!key) return reported(keyMissing);
  HashNode** const place = placeOf(&table->buckets[bucketOf(table, key)], key);
  if (!holds(place, key)) return reported(keyMissing, key);
  HashNode* const node = *place;
  *place = node->next;
  freeNode(node);
  return 0;
}

int hashDestroy(HashTable* table) {
  if (!table) return 0;
  for (int k = 0; k < table->size; ++k) {
    for (HashNode* node = table->buckets[k]; node;) {
      HashNode* const next = node->next;
      freeNode(node);
      node = next;
    }
  }
  zarelmem_free(table, __FILE__, __LINE__);
  return 0;
}

int hashDump(FILE* file, const char* title, const HashTable* table) {
  if (!file) return reported(argumentMissing);
  if (title) std::fputs(title, file);
  if (hashStatistics(file, table) != 0) return traced();
  std::fputc('\n', file);
  for (int k = 0; table && k < table->size; ++k)
    printBucket(file, k, table->buckets[k]);
  return printedOn(file);
}

int hashStatistics(FILE* file, const HashTable* table) {
  if (!file) return reported(argumentMissing);
  if (!table) {
    std::fputs("-- Null Hash Table --\n", file);
    return printedOn(file);
  }
  try {
    printStatistics(file, *table);
    return printedOn(file);
  } catch (const std::bad_alloc&) {
    return reported(noMemoryForTable);
  }
}
