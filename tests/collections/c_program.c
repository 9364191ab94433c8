/* Hash tables and lists from a host in C. */
#include <stdio.h>
#include <string.h>

#include <zarel/hash_util.h>
#include <zarel/liste_chainee.h>

static int failures = 0;

static void expect(int holds, const char* what) {
  if (holds) return;
  ++failures;
  fprintf(stderr, "failed: %s\n", what);
}

static void useTable(void) {
  HashTable* table = NULL;
  int number = 3;
  void* value = NULL;
  expect(hashCreate(10, &table) == 0 && table->size == 11, "eleven buckets");
  expect(hashAdd(table, "three", &number) == 0, "adds");
  expect(hashSearch(table, "three", &value) == -1 && value == &number, "finds");
  expect(hashDelete(table, "three") == 0 && hashSearch(table, "three", NULL) == 0, "deletes");
  expect(hashDestroy(table) == 0, "destroys");
}

static void useList(void) {
  int error = -1;
  int inserted = 0;
  LIS* found = NULL;
  LTE* list = LTE_creer(&error);
  LIS* nodes = NULL;
  expect(error == 0 && list != NULL, "creates");
  expect(LTE_ins_fin(list, LIS_copy_str("one", &error), 1) == 0, "inserts");
  expect(LTE_ins_fin_unique(list, (void*)"one", 1, &inserted, LIS_cmp_str) == 0 && !inserted,
         "knows what it has");
  expect(LTE_chercher(list, "one", LIS_cmp_str, &found) == 1 && found == list->current, "finds");
  nodes = LIS_copier(list->first, LIS_copy_str, &error);
  expect(LIS_length(nodes) == 1 && strcmp((const char*)nodes->object, "one") == 0, "copies");
  LIS_free(&nodes, LIS_free_str);
  LTE_free(list, LIS_free_str);
}

int main(void) {
  useTable();
  useList();
  return failures;
}
