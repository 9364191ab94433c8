/* Mapped files and blocks out of core as a program in C sees them. */
#include <stdio.h>
#include <string.h>
#include <wchar.h>

#include <zarel/zarel_mmap.h>
#include <zarel/zarelmem.h>
#include <zarel/zarelmem_ooc.h>

static int failures = 0;

static void expect(int holds, const char* what) {
  if (holds) return;
  printf("failed: %s\n", what);
  ++failures;
}

static ZAREL_MMAP* grown(ZAREL_MMAP* unit, unsigned __int64 size) {
  int error = 1;
  ZAREL_MMAP* const larger =
      zarelmem_realloc_ooc(unit, size, NULL, "unit", __FILE__, __LINE__, &error);
  expect(error == 0 && larger != NULL, "a unit grows");
  return larger;
}

static void mapping(const wchar_t* file) {
  int error = 1;
  ZAREL_MMAP record;
  expect(zarel_mmap(&record, -1, file, 0, 1, 2, "file", __FILE__, __LINE__, &error) == &record,
         "a file is mapped");
  expect(memcmp(record.address, "ni", 2) == 0, "a mapping shows its range");
  expect(zarel_munmap(&record, "file", __FILE__, __LINE__, &error) == 0, "a mapping ends");
}

static void unit(void) {
  int error = 1;
  ZAREL_MMAP* record = zarelmem_malloc_ooc(4, NULL, "unit", __FILE__, __LINE__, &error);
  wchar_t* file;
  expect(error == 0 && zarelmem_ismapped(record), "a unit is made");
  expect(record->id == 1, "the first mapping of a process has number 1");
  memcpy(record->address, "unit", 4);
  record = grown(record, 100000);
  expect(zarelmem_get_mapped_size(record, __FILE__, __LINE__, &error) == 100000,
         "a unit knows its size");
  file = zarelmem_get_mapped_filename(record, __FILE__, __LINE__, &error);
  expect(wcsstr(file, L"ZRLVS") != NULL, "a unit has a temporary file");
  mapping(file);
  zarelmem_free_ooc(record, ZAREL_OOC_DELETE, "unit", __FILE__, __LINE__, &error);
  expect(error == 0, "a unit is released");
  zarelmem_free(file, __FILE__, __LINE__);
  free_variables_zarel_mmap();
  expect(zarel_sum_memsize() == 0, "nothing is left");
}

int main(void) {
  expect(zarelmem_getmode() == ZAREL_IN_CORE, "structures are in core at first");
  unit();
  return failures;
}
