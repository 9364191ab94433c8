// Vector sets: writing.
#include <zarel/C_vstruct.h>

#include <algorithm>
#include <climits>

#include "containers/files.h"
#include "vectorset/instantiate.h"
#include "vectorset/setFiles.h"
#include "vectorset/steps.h"
#include "vectorset/walk.h"

namespace Zarel {

namespace {

/** Elements of the buffer in which a large transposed set goes out; in bytes, the size of a chunk.
 */
constexpr int chunkLength = 8388608;

/** Elements of rows that go out at once. */
constexpr int rowsLength = 65536;

/** What stands in the buffer of the stream goes out first: the transfers go round it. */
void settle(FILE* file) {
  if (file == nullptr || std::fflush(file) != 0) fail(CannotWrite);
}

void writeCount(FILE* file, bool portable, int count) {
  const bool written = portable ? BF_fwrite_int(file, &count, 1) == 0
                                : CBF_fwrite64(&count, sizeof count, 1, file) == 1;
  if (!written) fail(CannotWrite);
}

int writeError(bool portable) {
  return portable ? CannotWrite : CannotWriteRaw;
}

template <class T>
void writeElements(FILE* file, bool portable, T const* values, int count) {
  const auto all = static_cast<std::size_t>(count);
  const bool written = portable ? T_BF_write<T>(file, values, count, false) == 0
                                : CBF_fwrite64(values, sizeof(T), all, file) == all;
  if (!written) fail(writeError(portable));
}

/** The bytes of a set by rows, in the 32 bits that the form reckons in; false if they do not fit.
 */
template <class T>
bool sizeByRows(int vectors, int length, int& bytes) {
  return !__builtin_mul_overflow(vectors, length, &bytes) &&
         !__builtin_mul_overflow(bytes, static_cast<int>(sizeof(T)), &bytes);
}

} // namespace

// By vectors.

template <class T>
int C_VSTRUCT<T>::Write(FILE* file) {
  return Write(file, true);
}

template <class T>
int C_VSTRUCT<T>::Dump(FILE* file) {
  return Write(file, false);
}

template <class T>
int C_VSTRUCT<T>::Write(FILE* file, bool portable) {
  ZAREL_STEP("Write");
  const bool empty = this->columns_ < 1 || this->rows_ == 0;
  if (!empty) requireValid();
  settle(file);
  writeCount(file, portable, this->columns_);
  writeCount(file, portable, this->rows_);
  for (int j = 0; !empty && j < this->columns_; ++j)
    withVector(j, [&] { VectorSetFiles<T>::writeVector(*this, file, portable, j); });
  return 0;
}

/** In one piece, or window by window where no more is in memory. */
template <class T>
void VectorSetFiles<T>::writeVector(Set& set, FILE* file, bool portable, int j) {
  const int most = set.fileResident() ? windowLength : set.rows_;
  for (int first = 0, count = 0; first < set.rows_; first += count) {
    count = std::min(most, set.rows_ - first);
    writeElements(file, portable, rowsOf(set, file, j, first, count), count);
  }
}

// By rows.

/** Shows elements of a vector that can be used; the stream stays where it is. */
template <class T>
T const* VectorSetFiles<T>::rowsOf(Set& set, FILE* file, int j, int first, int count) {
  if (!set.fileResident()) return set.list_[j]->Adr(0) + first;
  T const* values = nullptr;
  withMemory([&] {
    keepPosition(file, [&] {
      values = set.list_[j]->Extract(first, first + count - 1, set.list_[j]->Adr(0));
    });
  });
  return values;
}

/** Puts the rows `first` to `end` (exclusive) of vector `j` into the buffer, which starts with row
 * `first`. */
template <class T>
void VectorSetFiles<T>::gather(Set& set, FILE* file, int j, int first, int end, T* buffer) {
  if (first >= end) return;
  T const* const values = rowsOf(set, file, j, first, end - first);
  const std::ptrdiff_t width = set.columns_;
  for (std::ptrdiff_t i = 0; i < end - first; ++i)
    buffer[i * width + j] = values[i];
}

/** Row after row. */
template <class T>
void VectorSetFiles<T>::writeRows(Set& set, FILE* file, bool portable, Vector& buffer) {
  const int most = buffer.Dim() / set.columns_;
  const unsigned int id = set.MapBlock(0, static_cast<unsigned int>(set.columns_));
  for (int first = 0; first < set.rows_; first += most) {
    const int end = first + std::min(most, set.rows_ - first);
    for (int j = 0; j < set.columns_; ++j)
      gather(set, file, j, first, end, buffer.Adr(0));
    writeElements(file, portable, buffer.Adr(0), (end - first) * set.columns_);
  }
  set.UnmapBlock(id, nullptr);
}

/**
 * The rows of a large set by chunks, of which each leaves its last row out and brings the whole
 * buffer: readers of such files know it that way. The buffer is not cleared between chunks.
 */
template <class T>
void VectorSetFiles<T>::writeChunks(Set& set, FILE* file, bool portable, int bytes,
                                    Vector& buffer) {
  const int rest = bytes % chunkLength;
  const int chunks = bytes / chunkLength + (rest != 0 ? 1 : 0);
  const int rows = set.rows_ / chunks;
  for (int c = 0; c < chunks; ++c) {
    const bool last = c == chunks - 1;
    const int first = c * rows;
    const int end = last ? set.rows_ : first + rows;
    for (int j = 0; j < set.columns_; ++j)
      set.withVector(j, [&] { gather(set, file, j, first, end - 1, buffer.Adr(0)); });
    const int whole = last && rest != 0 ? rest : chunkLength;
    writeElements(file, portable, buffer.Adr(0), portable ? whole : set.columns_);
  }
}

/** The elements of the buffer in which a set goes out; what it cannot hold ends as a failing write.
 */
template <class T>
int VectorSetFiles<T>::bufferLength(Set& set, bool portable, int bytes) {
  if (bytes <= chunkLength)
    return std::max(set.columns_, std::min(rowsLength, set.rows_ * set.columns_));
  const int chunks = bytes / chunkLength + (bytes % chunkLength != 0 ? 1 : 0);
  const __int64 lastRows = set.rows_ - static_cast<__int64>(set.rows_ / chunks) * (chunks - 1) - 1;
  if (lastRows * set.columns_ > chunkLength || set.columns_ > chunkLength)
    fail(writeError(portable));
  return chunkLength;
}

template <class T>
int C_VSTRUCT<T>::WriteT(FILE* file, bool portable) {
  ZAREL_STEP("WriteT");
  using Files = VectorSetFiles<T>;
  int bytes = 0;
  if (!sizeByRows<T>(this->columns_, this->rows_, bytes)) fail(writeError(portable));
  Vector buffer;
  if (bytes != 0) {
    requireValid();
    withMemory([&] { buffer.Resize(Files::bufferLength(*this, portable, bytes)); });
  }
  settle(file);
  writeCount(file, portable, portable ? this->rows_ : this->columns_);
  writeCount(file, portable, portable ? this->columns_ : this->rows_);
  if (bytes == 0) return 0;
  if (bytes <= chunkLength)
    Files::writeRows(*this, file, portable, buffer);
  else
    Files::writeChunks(*this, file, portable, bytes, buffer);
  return 0;
}

} // namespace Zarel

ZAREL_INSTANTIATE_VECTORSETS
