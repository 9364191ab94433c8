// Counted words of binary files, for readers that trust nothing and writers that notice.
#ifndef ZAREL_KERNEL_BINARYFILE_H
#define ZAREL_KERNEL_BINARYFILE_H

#include <cstdio>

#include "kernel/growing.h"

namespace Zarel::kernel {

// Reads words one batch after the other; the first failure decides the error.
class BinaryReader {
public:
  explicit BinaryReader(FILE* stream) : _stream(stream) {}

  int error() const { return _error; }
  bool failed() const { return _error != 0; }
  // Fails for a content that can't be right, unless `holds`.
  void require(bool holds) {
    if (!holds) fail(WrongFormat);
  }

  int integer();
  // Appends `count` words to a list.
  void integers(int count, Growing<int>& to) { batches(count, to); }
  void reals(int count, Growing<double>& to) { batches(count, to); }

private:
  enum { WrongFormat = 6, InputEnded = 7, NoMemory = 3, Batch = 8192 };

  void fail(int number) {
    if (_error == 0) _error = number;
  }
  bool read(int* to, int count);
  bool read(double* to, int count);
  template <class T>
  void batches(int count, Growing<T>& to);

  FILE* _stream;
  int _error = 0;
};

// Writes words; a count of 0 writes nothing.
class BinaryWriter {
public:
  explicit BinaryWriter(FILE* stream) : _stream(stream) {}

  void integer(int value) { integers(&value, 1); }
  void integers(const int* values, int count);
  void reals(const double* values, int count);
  // Flushes; 0 if all words arrived, else -1. A failed flush is also reported by `Erreur`.
  int finish(const char* file = __builtin_FILE(), int line = __builtin_LINE());

private:
  FILE* _stream;
  bool _failed = false;
};

} // namespace Zarel::kernel

#endif
