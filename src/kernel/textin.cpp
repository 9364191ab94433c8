// Text input of records: all values are read before the record is touched.
#include <algorithm>
#include <cstdint>

#include <zarel/lm_io.h>

#include "kernel/growing.h"
#include "kernel/record.h"
#include "kernel/textreader.h"

using namespace Zarel::kernel;

namespace {

enum { InputEnded = 7, MatrixEnded = 18, NoMemory = 3 };

// A matrix without rows has no text to show for its columns, and yet is given a row of them.
enum { MostEmptyColumns = 65536 };

// Reads `count` values by `read`; the number of the error, or 0.
template <class T, class Read>
int readValues(TextReader& reader, std::uint64_t count, Growing<T>& to, Read read) {
  for (std::uint64_t i = 0; i < count; ++i) {
    const T value = read(i);
    if (reader.failed()) return reader.error();
    T* const place = to.more(1);
    if (!place) return NoMemory;
    *place = value;
  }
  return reader.error();
}

// Reads a vector with this heading, each value by `read(reader, i)`.
template <class V, class Read>
V* readVector(const Call& call, FILE* stream, const char* title, const char* size, V* out,
              Read read) {
  LM_NEED(stream);
  TextReader reader(stream, InputEnded);
  reader.expect(title);
  reader.expect(size);
  const unsigned count = reader.count();
  Growing<ValueOf<V>> read_values(call);
  if (reader.failed()) return call.fail(reader.error());
  const int number = readValues(reader, count, read_values,
                                [&reader, read](std::uint64_t i) { return read(reader, i); });
  if (number != 0) return call.fail(number);
  out = exactVector(call, out, static_cast<int>(count));
  if (out) std::copy_n(read_values.data(), count, values(out));
  return out;
}

double readReal(TextReader& reader, std::uint64_t) {
  return reader.real();
}
int readInteger(TextReader& reader, std::uint64_t) {
  return reader.integer();
}

// "i->p"
unsigned readPair(TextReader& reader, std::uint64_t i) {
  if (reader.count() != i) reader.refuse();
  reader.expect("->");
  return reader.count();
}

MAT* readMatrix(const Call& call, FILE* stream, MAT* out) {
  LM_NEED(stream);
  TextReader reader(stream, MatrixEnded);
  reader.expect("Matrix:");
  const unsigned m = reader.count();
  reader.expect("by");
  const unsigned n = reader.count();
  Growing<double> entries(call);
  for (unsigned i = 0; i < m && !reader.failed(); ++i) {
    reader.expect("row");
    if (reader.count() != i) reader.refuse();
    reader.expect(":");
    const int number =
        readValues(reader, n, entries, [&reader](std::uint64_t) { return reader.real(); });
    if (number != 0) return call.fail(number);
  }
  if (m == 0 && n > MostEmptyColumns) reader.refuse();
  if (reader.failed()) return call.fail(reader.error());
  out = exactMatrix(call, out, static_cast<int>(m), static_cast<int>(n));
  if (!out) return nullptr;
  for (unsigned i = 0; i < m; ++i)
    std::copy_n(entries.data() + std::size_t{i} * n, n, out->me[i]);
  return out;
}

// Tests the text of a permutation before `out` is touched.
PERM* readPermutation(const Call& call, FILE* stream, PERM* out) {
  PERM* const px = readVector<PERM>(call, stream, "Permutation:", "size:", nullptr, readPair);
  if (!px) return nullptr;
  const Scratch<unsigned char> seen(call, length(px));
  if (!seen.get()) {
    freeVector(px);
    return nullptr;
  }
  std::fill_n(seen.get(), px->size, static_cast<unsigned char>(0));
  const bool good = std::all_of(px->pe, px->pe + px->size, [&seen, px](unsigned p) {
    return p < px->size && seen.get()[p]++ == 0;
  });
  if (good) out = exactVector(call, out, length(px));
  if (good && out) std::copy_n(px->pe, px->size, out->pe);
  freeVector(px);
  return good ? out : static_cast<PERM*>(call.fail(6));
}

} // namespace

#define LM_DEFINE_INPUT(name, V, title, read)                                                      \
  V* name(FILE* stream, V* out, LM_ARGS) {                                                         \
    LM_ENTER(name);                                                                                \
    return readVector(call, stream, title, "dim:", out, read);                                     \
  }
LM_DEFINE_INPUT(LM_v_finput, VEC, "Vector:", readReal)
LM_DEFINE_INPUT(LM_iv_finput, IVEC, "IntVector:", readInteger)
LM_DEFINE_INPUT(LM_lv_finput, LVEC, "LongVector:", readInteger)

MAT* LM_m_finput(FILE* stream, MAT* out, LM_ARGS) {
  LM_ENTER(LM_m_finput);
  return readMatrix(call, stream, out);
}

PERM* LM_px_finput(FILE* stream, PERM* out, LM_ARGS) {
  LM_ENTER(LM_px_finput);
  return readPermutation(call, stream, out);
}
