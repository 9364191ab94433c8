/**
 * @file liste_chainee.h
 * Doubly linked lists of typed objects. C and C++.
 *
 * Two forms share their nodes. A `LIS` list is its first node: an empty list is a null pointer, and
 * functions that change the list take the address of that pointer. An `LTE` list has a head with
 * count, first, last and current node, so that its end is reached in constant time. The verbs are
 * French: creer create, ins insert, debut start, fin end, apres after, avant before, sup remove,
 * chercher search, element node, ieme i-th, copier copy (docs/glossary.md).
 *
 * Objects are the caller's. Functions for their type compare, copy, free, print, write and read
 * them; a null comparing function compares pointers, a null copying function copies pointers, a
 * null freeing function leaves objects alone.
 *
 * Results: `int` functions that change a list, print or use a file return 0, and -1 on failure;
 * a failed insertion leaves the list as it was. Functions with `int* error` store 0 or -1 there
 * unless it is null. No memory reports message 1001 through `Erreur`, a missing argument 2500, a
 * missing stream to read from or a negative count of nodes in it 2005, a failing flush 1003 with
 * the system's text, and a stream that does not take what is printed 1003.
 *
 * Files: an `int` count, then for each node its `int` type and its object
 * (docs/formats/collections.md).
 *
 * Threads: one thread at a time in a list.
 */
#ifndef ZAREL_LISTE_CHAINEE_H
#define ZAREL_LISTE_CHAINEE_H

#include <stdio.h>

#include <zarel/export.h>

ZAREL_BEGIN_C

/** A node of a list, or the list that starts with it. */
typedef struct LIS {
  struct LIS* next;     ///< null at the end
  struct LIS* previous; ///< null at the start
  int type;             ///< any number but -1
  void* object;         ///< the caller's
} LIS;

/** The head of a list. */
typedef struct LTE {
  int count;    ///< number of nodes
  LIS* first;   ///< null if the list is empty
  LIS* last;    ///< null if the list is empty
  LIS* current; ///< node of the last insertion or search, null if that found nothing or is gone
} LTE;

enum { LIS_ALL_TYPES = -1 /**< the type that stands for all types */ };

/** @name Functions for a type of objects @{ */
/** Not 0 if the object is the one that the key tells. */
typedef int (*LIS_COMPARE)(const void* object, const void* key);
/** Returns a new object; null and error -1 on failure. */
typedef void* (*LIS_COPY)(const void* object, int* error);
/** Frees an object. */
typedef void (*LIS_FREE)(void* object);
/** Prints an object. */
typedef void (*LIS_PRINT)(const void* object, FILE* file);
/** Writes an object through the `BF_` functions: 0 or -1. */
typedef int (*LIS_WRITE)(FILE* stream, const void* object);
/** Reads a new object; null and error -1 on failure. */
typedef void* (*LIS_READ)(FILE* stream, int* error);
/** @} */

/** @name Ready-made functions for `int`, `double` and text
 * Objects and keys point to an `int`, a `double` or the characters of a text. Copies are blocks of
 * `zarelmem_malloc`; a null object is copied as null, freed and printed as nothing, and equal only
 * to a null key. LIS_cmp_db takes numbers that differ by less than 1e-14 as equal. @{ */
ZAREL_API int LIS_cmp_int(const void* object, const void* key);
ZAREL_API int LIS_cmp_db(const void* object, const void* key);
ZAREL_API int LIS_cmp_str(const void* object, const void* key);
ZAREL_API void* LIS_copy_int(const void* object, int* error);
ZAREL_API void* LIS_copy_db(const void* object, int* error);
ZAREL_API void* LIS_copy_str(const void* object, int* error);
ZAREL_API void LIS_free_int(void* object);
ZAREL_API void LIS_free_db(void* object);
ZAREL_API void LIS_free_str(void* object);
ZAREL_API void LIS_print_int(const void* object, FILE* file);
ZAREL_API void LIS_print_db(const void* object, FILE* file);
ZAREL_API void LIS_print_str(const void* object, FILE* file);
/** @} */

/** @name Lists of bare nodes @{ */

/** Creates a node without an object and without neighbours; null on failure. */
ZAREL_API LIS* LIS_creer(int type, int* error);

/** Inserts an object behind the node `*list`, which stays what it is; in an empty list it becomes
 * the first. */
ZAREL_API int LIS_ins(LIS** list, void* object, int type);
/** Inserts an object at the start; `*list` becomes its node. */
ZAREL_API int LIS_ins_debut(LIS** list, void* object, int type);
/** Inserts an object at the end, after a walk through the list. */
ZAREL_API int LIS_ins_fin(LIS** list, void* object, int type);
/** Inserts an object at the end unless the list has one that matches it, and tells in `*inserted`
 * whether it did: 1 or 0. */
ZAREL_API int LIS_ins_fin_unique(LIS** list, void* object, int type, int* inserted,
                                 LIS_COMPARE compare);
/** Links the nodes of `other`, the start of another list, behind the last one. Nodes that both
 * lists have are a missing argument. */
ZAREL_API int LIS_append(LIS** list, LIS* other);

/** Searches the first object that matches `key` and stores its node, or null, in `*where` unless
 * that is null: 1 if there is one, else 0. */
ZAREL_API int LIS_chercher(LIS* list, const void* key, LIS_COMPARE compare, LIS** where);
/** Searches a node: the node itself, null if the list does not have it. */
ZAREL_API LIS* LIS_chercher_element(LIS* list, const LIS* node);
/** Searches the first object that matches: its node, or null. */
ZAREL_API LIS* LIS_chercher_objet(LIS* list, const void* object, LIS_COMPARE compare);
/** Returns the node at `index`, from 0; null outside the list. */
ZAREL_API LIS* LIS_chercher_ieme(LIS* list, int index);
/** Searches the first node of a type (-1: any); null if there is none. */
ZAREL_API LIS* LIS_chercher_type(LIS* list, int type);

/** Counts the nodes. */
ZAREL_API int LIS_length(const LIS* list);
/** Counts the objects that match `key`. */
ZAREL_API int LIS_length_cmp(const LIS* list, const void* key, LIS_COMPARE compare);
/** Counts the nodes of a type (-1: all). */
ZAREL_API int LIS_length_type(const LIS* list, int type);
/** Tells whether an object matches `key`: 1 or 0. */
ZAREL_API int LIS_exist(const LIS* list, const void* key, LIS_COMPARE compare);

/** Removes a node and frees its object. A node that is not in the list changes nothing and gives 0;
 * a null list or node is a missing argument. */
ZAREL_API int LIS_sup_elt(LIS** list, LIS* node, LIS_FREE free);
/** Removes the first node whose object matches `key`; as LIS_sup_elt otherwise. */
ZAREL_API int LIS_sup_objet(LIS** list, const void* key, LIS_COMPARE compare, LIS_FREE free);

/**
 * Copies a list. On failure the result is the list of what was copied before, for the caller to
 * free, and the error is -1; an empty list gives null and error 0.
 */
ZAREL_API LIS* LIS_copier(const LIS* list, LIS_COPY copy, int* error);
/** Frees all nodes and objects; `*list` becomes null. Null does nothing. */
ZAREL_API void LIS_free(LIS** list, LIS_FREE free);
/** Prints all objects. -1 for a null function or file, and for a file that does not take them. */
ZAREL_API int LIS_print(const LIS* list, LIS_PRINT print, FILE* file);
/** Reads nodes and inserts them at the end. After a failure the list has the nodes that were read
 * before; a negative count is one. */
ZAREL_API int LIS_binput(FILE* stream, LIS** list, LIS_READ read);
/** Writes the nodes of a type (-1: all) and flushes the stream. */
ZAREL_API int LIS_boutput(FILE* stream, const LIS* list, LIS_WRITE write, int type);
/** @} */

/** @name Lists with a head
 * As the functions of the same name above; a null head is a missing argument where a list is
 * changed and an empty list elsewhere. Insertions and searches (LTE_chercher...) set `current`.
 * @{ */

/** Creates the head of an empty list; null on failure. LTE_free frees it. */
ZAREL_API LTE* LTE_creer(int* error);

/** The same as LTE_ins_apres. */
ZAREL_API int LTE_ins(LTE* head, LIS* node, void* object, int type);
/** Inserts an object behind a node of the list; behind null: at the start. */
ZAREL_API int LTE_ins_apres(LTE* head, LIS* node, void* object, int type);
/** Inserts an object before a node of the list; before null: at the start. */
ZAREL_API int LTE_ins_avant(LTE* head, LIS* node, void* object, int type);
ZAREL_API int LTE_ins_debut(LTE* head, void* object, int type);
/** Inserts an object at the end, in constant time. */
ZAREL_API int LTE_ins_fin(LTE* head, void* object, int type);
/** As LIS_ins_fin_unique; `current` becomes the new node or the one that matched. */
ZAREL_API int LTE_ins_fin_unique(LTE* head, void* object, int type, int* inserted,
                                 LIS_COMPARE compare);
/**
 * Links the nodes of `other` behind the last one. The head `other` stays as it is and its caller's;
 * as its nodes now belong to `head`, release it with `zarelmem_free` and not with LTE_free. The
 * list itself as `other` is a missing argument, and so is a head whose nodes were appended before.
 */
ZAREL_API int LTE_append(LTE* head, const LTE* other);

ZAREL_API int LTE_chercher(LTE* head, const void* key, LIS_COMPARE compare, LIS** where);
ZAREL_API LIS* LTE_chercher_element(LTE* head, const LIS* node);
ZAREL_API LIS* LTE_chercher_objet(LTE* head, const void* object, LIS_COMPARE compare);
ZAREL_API LIS* LTE_chercher_ieme(LTE* head, int index);
ZAREL_API LIS* LTE_chercher_type(LTE* head, int type);

/** Returns the count of nodes. */
ZAREL_API int LTE_length(const LTE* head);
ZAREL_API int LTE_length_cmp(const LTE* head, const void* key, LIS_COMPARE compare);
ZAREL_API int LTE_length_type(const LTE* head, int type);
/** As LIS_exist; `current` stays as it is. */
ZAREL_API int LTE_exist(const LTE* head, const void* key, LIS_COMPARE compare);

/** As LIS_sup_elt; `current` becomes null if it was that node. */
ZAREL_API int LTE_sup_elt(LTE* head, LIS* node, LIS_FREE free);
ZAREL_API int LTE_sup_objet(LTE* head, const void* key, LIS_COMPARE compare, LIS_FREE free);

/** As LIS_copier; null only if not even the head could be had. */
ZAREL_API LTE* LTE_copier(const LTE* head, LIS_COPY copy, int* error);
/** Frees all nodes, objects and the head. Null does nothing. */
ZAREL_API void LTE_free(LTE* head, LIS_FREE free);
ZAREL_API int LTE_print(const LTE* head, LIS_PRINT print, FILE* file);
ZAREL_API int LTE_binput(FILE* stream, LTE* head, LIS_READ read);
ZAREL_API int LTE_boutput(FILE* stream, const LTE* head, LIS_WRITE write, int type);
/** @} */

ZAREL_END_C

#endif
