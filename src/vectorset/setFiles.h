// The steps of the files of a vector set.
#ifndef ZAREL_VECTORSET_SETFILES_H
#define ZAREL_VECTORSET_SETFILES_H

#include <cstdio>

#include <zarel/C_vstruct.h>
#include <zarel/bf.h>

namespace Zarel {

// What can go wrong with a file of a set, by the number of its text.
constexpr int CannotSeek = 20;
constexpr int CannotRead = 21;
constexpr int CannotWrite = 22;
constexpr int CannotWriteRaw = 35;

/** Values in the window of a file-resident vector. */
constexpr int windowLength = 4096;

/** What a set is read from, where it stands: a stream or, without one, a descriptor. */
struct SetSource {
  FILE* stream;
  int fd;
  bool portable;  ///< heads and values in the portable form
  int readReason; ///< reason of a failing read of values
  int seekReason; ///< reason of a failing seek
};

/** What a caller asks of a set to be read; counts of 0 stand in the file. */
struct SetRequest {
  int coreMode;
  bool mapFile;
  int vectors;
  int length;
  __int64 gap; ///< bytes between the vectors of the file; skips nothing in core
};

template <class T>
struct VectorSetFiles {
  using Set = C_VSTRUCT<T>;
  using Vector = typename Set::Vector;

  // Writing.
  static void writeVector(Set& set, FILE* file, bool portable, int j);
  static T const* rowsOf(Set& set, FILE* file, int j, int first, int count);
  static void gather(Set& set, FILE* file, int j, int first, int end, T* buffer);
  static void writeRows(Set& set, FILE* file, bool portable, Vector& buffer);
  static void writeChunks(Set& set, FILE* file, bool portable, int bytes, Vector& buffer);
  static int bufferLength(Set& set, bool portable, int bytes);

  // Reading.
  static void read(Set& set, const SetSource& source, SetRequest request, bool memOwner,
                   std::wstring name);
  static void begin(Set& set, const SetSource& source, SetRequest& request, bool memOwner,
                    std::wstring& name);
  static void takePreset(Set& set, std::wstring& name);
  static void takeShape(Set& set, const SetRequest& request, bool memOwner);
  static void requireHeld(const SetSource& source, const SetRequest& request);
  static __int64 extent(const SetRequest& request);
  static void readInCore(Set& set, const SetSource& source);
  static void adopt(Set& set, const SetSource& source, const SetRequest& request,
                    std::wstring const& name);
  static void attach(Set& set, const SetSource& source, __int64 start);
};

} // namespace Zarel

#endif
