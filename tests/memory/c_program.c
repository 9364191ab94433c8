/* The allocator as a program in C sees it. */
#include <stdio.h>
#include <string.h>

#include <zarel/zarelmem.h>

static int failures = 0;

static void expect(int holds, const char* what) {
  if (holds) return;
  printf("failed: %s\n", what);
  ++failures;
}

static void blocks(void) {
  char* block = zarelmem_malloc(4, "block", 1, __FILE__, __LINE__);
  memcpy(block, "abc", 4);
  block = zarelmem_realloc(block, 1000, "block", 1, __FILE__, __LINE__);
  expect(strcmp(block, "abc") == 0, "realloc keeps the content");
  expect(zarel_sum_memsize() == 1016, "a block is booked with its header");
  zarelmem_free(block, __FILE__, __LINE__);
  expect(zarel_sum_memsize() == 0, "a released block is booked no more");
}

static void tags(void) {
  const int tag = zarel_get_new_tag();
  int* numbers;
  zarel_set_tag(tag);
  numbers = zarel_calloc(4, sizeof *numbers, "numbers", 1);
  expect(numbers[3] == 0, "calloc clears");
  expect(zarel_tag_memsize(tag) == 32, "a tag has its blocks");
  numbers = zarel_realloc(numbers, 48, "numbers", 1);
  zarel_free(numbers);
  expect(zarel_tag_memsize(tag) == 0, "a tag loses its blocks");
  expect(zarel_tag_maxmemsize(tag) == 64, "a tag keeps its peak");
  expect(zarel_sum_maxmemsize() >= 64, "the peaks add up");
  zarel_free_tag(tag);
}

static void threshold(void) {
  zarelmem_initialize(64);
  zarel_free(zarel_malloc(100, "external", 1));
  expect(zarel_sum_memsize() == 0, "an external block is booked and released");
}

int main(void) {
  blocks();
  tags();
  threshold();
  return failures;
}
