// Typed transfers on a stream, with the rule of the file exceptions.
#include <zarel/bf.h>

#include <cstdint>
#include <cstring>
#include <set>

#include "binary/exceptions.h"
#include "binary/order.h"
#include "runtime/fail.h"

using namespace Zarel;

namespace {

// Streams whose words are big-endian; null while there is none.
std::set<std::int64_t>* exceptions = nullptr;

std::int64_t handleOf(FILE* file) {
  return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(file));
}

bool usable(FILE* file, const void* buffer, int count) {
  return file && buffer && count >= 1;
}

// Reads words of their width on disk to the head of `buffer`, in the host's order.
template <size_t width>
bool readWords(FILE* file, void* buffer, size_t count) {
  if (CBF_fread64(buffer, width, count, file) != count) return false;
  if (!isHostOrdered(file)) reverseWords(buffer, width, count);
  return true;
}

template <size_t width>
bool writeWords(FILE* file, const void* buffer, size_t count) {
  const auto write = [file](const void* words, size_t number) {
    return CBF_fwrite64(words, width, number, file);
  };
  if (isHostOrdered(file)) return write(buffer, count) == count;
  return writeReversed<width>(buffer, count, write);
}

template <class T>
int readPlain(FILE* file, T* buffer, int count) {
  if (!usable(file, buffer, count)) return traced();
  return readWords<sizeof(T)>(file, buffer, static_cast<size_t>(count)) ? 0 : -1;
}

template <class T>
int writePlain(FILE* file, const T* buffer, int count) {
  if (!usable(file, buffer, count)) return traced();
  return writeWords<sizeof(T)>(file, buffer, static_cast<size_t>(count)) ? 0 : -1;
}

// Words that are narrower on disk than in memory are read to the head of the caller's buffer and
// spread from the end, which needs no second buffer.
template <class Disk, class T>
int readNarrow(FILE* file, T* buffer, int count) {
  static_assert(sizeof(Disk) <= sizeof(T), "words are spread in place");
  if (!usable(file, buffer, count)) return traced();
  if (!readWords<sizeof(Disk)>(file, buffer, static_cast<size_t>(count))) return -1;
  const auto words = reinterpret_cast<char*>(buffer);
  for (size_t k = static_cast<size_t>(count); k-- > 0;) {
    Disk word;
    std::memcpy(&word, words + k * sizeof(Disk), sizeof(Disk));
    const T value = static_cast<T>(word);
    std::memcpy(words + k * sizeof(T), &value, sizeof(T));
  }
  return 0;
}

template <class Disk, class T>
int writeNarrow(FILE* file, const T* buffer, int count) {
  if (!usable(file, buffer, count)) return traced();
  const auto all = static_cast<size_t>(count);
  Disk stage[stageElements];
  for (size_t done = 0; done < all;) {
    const size_t now = std::min(stageElements, all - done);
    for (size_t k = 0; k < now; ++k)
      stage[k] = static_cast<Disk>(buffer[done + k]);
    if (!writeWords<sizeof(Disk)>(file, stage, now)) return -1;
    done += now;
  }
  return 0;
}

} // namespace

int BF_fread_char(FILE* file, char* buffer, int count) {
  return readPlain(file, buffer, count);
}
int BF_fread_tchar(FILE* file, wchar_t* buffer, int count) {
  return readNarrow<std::uint16_t>(file, buffer, count);
}
int BF_fread_int(FILE* file, int* buffer, int count) {
  return readPlain(file, buffer, count);
}
int BF_fread_long(FILE* file, long* buffer, int count) {
  return readNarrow<std::int32_t>(file, buffer, count);
}
int BF_fread_hyper(FILE* file, __int64* buffer, int count) {
  return readPlain(file, buffer, count);
}
int BF_fread_float(FILE* file, float* buffer, int count) {
  return readPlain(file, buffer, count);
}
int BF_fread_double(FILE* file, double* buffer, int count) {
  return readPlain(file, buffer, count);
}

int BF_fwrite_char(FILE* file, const char* buffer, int count) {
  return writePlain(file, buffer, count);
}
int BF_fwrite_tchar(FILE* file, const wchar_t* buffer, int count) {
  return writeNarrow<std::uint16_t>(file, buffer, count);
}
int BF_fwrite_int(FILE* file, const int* buffer, int count) {
  return writePlain(file, buffer, count);
}
int BF_fwrite_long(FILE* file, const long* buffer, int count) {
  return writeNarrow<std::int32_t>(file, buffer, count);
}
int BF_fwrite_hyper(FILE* file, const __int64* buffer, int count) {
  return writePlain(file, buffer, count);
}
int BF_fwrite_float(FILE* file, const float* buffer, int count) {
  return writePlain(file, buffer, count);
}
int BF_fwrite_double(FILE* file, const double* buffer, int count) {
  return writePlain(file, buffer, count);
}

bool Zarel::isHostOrdered(FILE* file) {
  return (IsFileException(file) != 0) == hostIsBigEndian();
}

int BF_EndianIsCorrect(void) {
  return isHostOrdered(nullptr);
}

void AddFileException(FILE* file) {
  if (hostIsBigEndian()) return;
  if (!exceptions) exceptions = new std::set<std::int64_t>;
  exceptions->insert(handleOf(file));
}

void RemFileException(FILE* file) {
  if (!exceptions) return;
  exceptions->erase(handleOf(file));
  if (!exceptions->empty()) return;
  delete exceptions;
  exceptions = nullptr;
}

int IsFileException(FILE* file) {
  return exceptions && exceptions->count(handleOf(file)) != 0;
}

void SwapBytes(void* p, size_t n) {
  if (p && n >= 2) reverseBytes(p, n);
}
