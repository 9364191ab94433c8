// The ready-made functions for objects of lists.
#include <zarel/liste_chainee.h>

#include <cmath>
#include <cstdio>
#include <cstring>

#include <zarel/zarelmem.h>
#include <zarel/zarelsys.h>

#include "collections/nodes.h"
#include "collections/report.h"

using namespace Zarel;

namespace {

constexpr double equalBelow = 1e-14;

// Null is equal to null alone.
template <class T, class Equal>
int compared(const void* object, const void* key, Equal equal) {
  if (!object || !key) return object == key;
  return equal(static_cast<const T*>(object), static_cast<const T*>(key));
}

template <class T>
void* copied(const void* object, int* error, const char* function = __builtin_FUNCTION()) {
  setError(error, 0);
  if (!object) return nullptr;
  void* const block = zarelmem_malloc(sizeof(T), "LIS object", 1, __FILE__, __LINE__);
  if (block) return std::memcpy(block, object, sizeof(T));
  setError(error, reported(noMemory, "", function));
  return nullptr;
}

void freed(void* object) {
  zarelmem_free(object, __FILE__, __LINE__);
}

} // namespace

int LIS_cmp_int(const void* object, const void* key) {
  return compared<int>(object, key, [](const int* a, const int* b) { return *a == *b; });
}

int LIS_cmp_db(const void* object, const void* key) {
  return compared<double>(object, key, [](const double* a, const double* b) {
    return std::fabs(*a - *b) < equalBelow;
  });
}

int LIS_cmp_str(const void* object, const void* key) {
  return compared<char>(object, key,
                        [](const char* a, const char* b) { return std::strcmp(a, b) == 0; });
}

void* LIS_copy_int(const void* object, int* error) {
  return copied<int>(object, error);
}
void* LIS_copy_db(const void* object, int* error) {
  return copied<double>(object, error);
}

void* LIS_copy_str(const void* object, int* error) {
  char* const copy = zarel_strdup(static_cast<const char*>(object), "LIS object");
  setError(error, object && !copy ? reported(noMemory) : 0);
  return copy;
}

void LIS_free_int(void* object) {
  freed(object);
}
void LIS_free_db(void* object) {
  freed(object);
}
void LIS_free_str(void* object) {
  freed(object);
}

void LIS_print_int(const void* object, FILE* file) {
  if (object) std::fprintf(file, "%d\n", *static_cast<const int*>(object));
}
void LIS_print_db(const void* object, FILE* file) {
  if (object) std::fprintf(file, "%g\n", *static_cast<const double*>(object));
}
void LIS_print_str(const void* object, FILE* file) {
  if (object) std::fprintf(file, "%s\n", static_cast<const char*>(object));
}
