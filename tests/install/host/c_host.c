/* A host in C: numerics, memory and binary primitives through the C families. */
#include <stdio.h>
#include <string.h>

#include <zarel/bf.h>
#include <zarel/itf.h>
#include <zarel/version.h>
#include <zarel/zarelmem.h>

static int checks_numerics(void) {
  double x[3] = {1.0, 2.0, 3.0};
  double y[3] = {4.0, 5.0, 6.0};
  return ITF_ddot(3, x, 1, y, 1) == 32.0;
}

static int checks_binary_round_trip(void) {
  FILE* file = tmpfile();
  int written[2] = {1, -2};
  int read[2] = {0, 0};
  int good = file != NULL && BF_fwrite_int(file, written, 2) == 0;
  good = good && CBF_fseek64(file, 0, SEEK_SET) == 0 && BF_fread_int(file, read, 2) == 0;
  if (file != NULL) fclose(file);
  return good && memcmp(written, read, sizeof read) == 0;
}

static int checks_memory(void) {
  int* block = zarelmem_calloc(4, sizeof(int), "block", 4, __FILE__, __LINE__);
  int good = block != NULL && block[3] == 0;
  zarelmem_free(block, __FILE__, __LINE__);
  return good;
}

int main(void) {
  int good = checks_numerics() && checks_binary_round_trip() && checks_memory();
  printf("zarel %s from C: %s\n", ZAREL_VERSION, good ? "good" : "bad");
  return good ? 0 : 1;
}
