/* The system's services from a host in C. */
#include <stdio.h>
#include <string.h>

#include <zarel/zarelmem.h>
#include <zarel/zarelsys.h>

static int failures = 0;

static void expect(int holds, const char* what) {
  if (holds) return;
  ++failures;
  fprintf(stderr, "failed: %s\n", what);
}

int main(void) {
  wchar_t* name = zarel_tempnam(NULL, L"c_program");
  char* narrow = zarel_Tchar2char(name);
  char* copy = zarel_strdup(narrow, "c_program");
  FILE* file = fopen(narrow, "w");
  expect(file && zarel_ftruncate(zarel_fileno(file), 5) == 0, "sets a size");
  expect(file && fclose(file) == 0 && zarel_file_exist(name) == 1, "exists");
  expect(zarel_file_mod_time(name) > 0 && zarel_access(name, 4) == 0, "may be read");
  expect(zarel_unlink(name) == 0 && zarel_file_exist(name) == 0, "is gone");
  expect(strcmp(copy, narrow) == 0, "duplicates");
  expect(zarel_getpid() > 0 && zarel_strncasecmp("A", "a", 1) == 0, "runs");
  zarelmem_free(copy, __FILE__, __LINE__);
  zarelmem_free(narrow, __FILE__, __LINE__);
  zarelmem_free(name, __FILE__, __LINE__);
  return failures;
}
