// Text output of records.
#include <cstdio>

#include <zarel/lm_io.h>

namespace {

enum { RealsPerLine = 5, IntegersPerLine = 8, PairsPerLine = 10 };

FILE* target(FILE* stream) {
  return stream ? stream : stdout;
}

unsigned long address(const void* p) {
  return reinterpret_cast<unsigned long>(p);
}

// Writes `count` entries by `print`, `perLine` to a line; every line that was begun is ended.
template <class Print>
void lines(FILE* to, unsigned count, unsigned perLine, Print print) {
  for (unsigned i = 0; i < count; ++i) {
    print(i);
    if ((i + 1) % perLine == 0 || i + 1 == count) std::fputc('\n', to);
  }
}

void reals(FILE* to, const double* x, unsigned count) {
  lines(to, count, RealsPerLine, [to, x](unsigned i) { std::fprintf(to, "%14.9g ", x[i]); });
}

void integers(FILE* to, const int* x, unsigned count) {
  lines(to, count, IntegersPerLine, [to, x](unsigned i) { std::fprintf(to, "%8d ", x[i]); });
}

void pairs(FILE* to, const PERM* px) {
  lines(to, px->size, PairsPerLine,
        [to, px](unsigned i) { std::fprintf(to, "%u->%u ", i, px->pe[i]); });
}

// What a record is called, and its data in a dump.
struct Heading {
  const char* title;
  const char* sizeName;
  const char* field;
};

bool isNull(FILE* to, const Heading& heading, const void* record) {
  if (!record) std::fprintf(to, "%s: NULL\n", heading.title);
  return !record;
}

void printHeading(FILE* to, const Heading& heading, unsigned size) {
  std::fprintf(to, "%s: %s: %u\n", heading.title, heading.sizeName, size);
}

// The heading of a dump, with the addresses; false if there are no data to follow.
bool dumpHeading(FILE* to, const Heading& heading, unsigned size, const void* record,
                 const void* data) {
  std::fprintf(to, "%s: %s: %u @ 0x%lx\n", heading.title, heading.sizeName, size, address(record));
  if (data)
    std::fprintf(to, "%s @ 0x%lx\n", heading.field, address(data));
  else
    std::fputs("NULL\n", to);
  return data != nullptr;
}

const Heading vector = {"Vector", "dim", "x->ve"};
const Heading intVector = {"IntVector", "dim", "x->ive"};
const Heading longVector = {"LongVector", "dim", "x->lve"};
const Heading permutation = {"Permutation", "size", "px->pe"};
const Heading matrix = {"Matrix", "", "A->me"};

} // namespace

#define LM_DEFINE_TEXT(V, p, heading, size, data, body)                                            \
  void p##_foutput(FILE* stream, const V* x) {                                                     \
    FILE* const to = target(stream);                                                               \
    if (isNull(to, heading, x)) return;                                                            \
    printHeading(to, heading, x->size);                                                            \
    body;                                                                                          \
  }                                                                                                \
  void p##_dump(FILE* stream, const V* x) {                                                        \
    FILE* const to = target(stream);                                                               \
    if (isNull(to, heading, x)) return;                                                            \
    if (dumpHeading(to, heading, x->size, x, x->data)) body;                                       \
  }
LM_DEFINE_TEXT(VEC, v, vector, dim, ve, reals(to, x->ve, x->dim))
LM_DEFINE_TEXT(IVEC, iv, intVector, dim, ive, integers(to, x->ive, x->dim))
LM_DEFINE_TEXT(LVEC, lv, longVector, dim, lve, integers(to, x->lve, x->dim))
LM_DEFINE_TEXT(PERM, px, permutation, size, pe, pairs(to, x))

void m_foutput(FILE* stream, const MAT* A) {
  FILE* const to = target(stream);
  if (isNull(to, matrix, A)) return;
  std::fprintf(to, "%s: %u by %u\n", matrix.title, A->m, A->n);
  for (unsigned i = 0; i < A->m; ++i) {
    std::fprintf(to, "row %u:\n", i);
    reals(to, A->me[i], A->n);
  }
}

void m_dump(FILE* stream, const MAT* A) {
  FILE* const to = target(stream);
  if (isNull(to, matrix, A)) return;
  std::fprintf(to, "%s: %u by %u @ 0x%lx\n", matrix.title, A->m, A->n, address(A));
  if (!A->me) {
    std::fputs("NULL\n", to);
    return;
  }
  std::fprintf(to, "%s @ 0x%lx, A->base @ 0x%lx\n", matrix.field, address(A->me), address(A->base));
  for (unsigned i = 0; i < A->m; ++i) {
    std::fprintf(to, "row %u: @ 0x%lx\n", i, address(A->me[i]));
    reals(to, A->me[i], A->n);
  }
}
