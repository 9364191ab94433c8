/**
 * @file hash_util.h
 * Hash tables with text keys. C and C++.
 *
 * A table has a fixed number of buckets, each a chain of nodes in the order of their keys. Keys are
 * copied into the table; values are pointers that stay the caller's.
 *
 * Results are 0, and -1 on failure, but for hashSearch, whose -1 means that the key was found. No
 * memory reports message 3123 through `Erreur`, a missing table 3122, a missing key 3126, a missing
 * file to print on 2500, and one that does not take what is printed 1003.
 *
 * Threads: one thread at a time in a table.
 */
#ifndef ZAREL_HASH_UTIL_H
#define ZAREL_HASH_UTIL_H

#include <stdio.h>

#include <zarel/export.h>

ZAREL_BEGIN_C

/** A key with its value. */
typedef struct HashNode {
  char* key;             ///< the table's own copy
  void* value;           ///< the caller's
  struct HashNode* next; ///< the next larger key of the bucket, null at the end
} HashNode;

/** A table, in one block with its array of buckets. Read the fields; only `debug` may be set. */
typedef struct HashTable {
  int debug;          ///< not 0: hashSearch tells on standard output what it finds; 0 at first
  int size;           ///< number of buckets
  int nonEmpty;       ///< buckets that have had a node; hashDelete does not lower it
  int longest;        ///< nodes in the longest chain so far; hashDelete does not lower it
  HashNode** buckets; ///< the chains
} HashTable;

/**
 * Creates an empty table in `*out`, which is null on failure. The number of buckets is the first
 * prime from `size` upward, where 1 counts as one and 2 does not: 0 and 1 give 1, 2 gives 3, 10
 * gives 11. For a negative size there is no memory.
 */
ZAREL_API int hashCreate(int size, HashTable** out);

/** Adds a key with its value, or gives a key that is there already the new value. On failure the
 * table is as it was. */
ZAREL_API int hashAdd(HashTable* table, const char* key, void* value);

/**
 * Searches a key: -1 if it is there, 0 if not. Its value, or null, is stored in `*value` unless
 * `value` is null. A null table gives -1 as well, with a null value.
 */
ZAREL_API int hashSearch(HashTable* table, const char* key, void** value);

/** Removes a key. A key that is not there gives -1, and the table stays as it is. */
ZAREL_API int hashDelete(HashTable* table, const char* key);

/** Frees a table with its nodes and keys, but not the values. Null does nothing. */
ZAREL_API int hashDestroy(HashTable* table);

/**
 * Prints a title, as it stands, unless it is null, the statistics, an empty line and every node of
 * every bucket. -1 for a null file, for one that does not take it, or if there is no memory.
 */
ZAREL_API int hashDump(FILE* file, const char* title, const HashTable* table);

/**
 * Prints how many buckets are empty, how many chains there are of each length, and mean and
 * standard deviation of the lengths of all buckets. -1 for a null file, for one that does not take
 * it, or if there is no memory; then nothing is printed.
 */
ZAREL_API int hashStatistics(FILE* file, const HashTable* table);

ZAREL_END_C

#endif
