// Vector sets: reading, and adopting files without reading them.
#include <zarel/C_vstruct.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <memory>

#include "binary/exceptions.h"
#include "containers/files.h"
#include "vectorset/fileVectors.h"
#include "vectorset/instantiate.h"
#include "vectorset/setFiles.h"
#include "vectorset/steps.h"

namespace Zarel {

namespace {

/** Vectors that a head may promise however short the file is. */
constexpr int freeVectors = 65536;

/** Vectors that it may promise beyond these for each one that the file holds. */
constexpr int promisesPerVector = 16;

/** What the files are opened with. */
constexpr wchar_t updateMode[] = L"r+b";
constexpr int updateFlags = O_RDWR;

struct CloseStream {
  void operator()(FILE* stream) const { std::fclose(stream); }
};
using OwnStream = std::unique_ptr<FILE, CloseStream>;

/** A descriptor that is closed unless the set keeps it. */
class OwnDescriptor {
public:
  explicit OwnDescriptor(int fd) : fd_(fd) {}
  OwnDescriptor(const OwnDescriptor&) = delete;
  OwnDescriptor& operator=(const OwnDescriptor&) = delete;
  ~OwnDescriptor() {
    if (fd_ >= 0) CBF_close64(fd_);
  }
  void keep() { fd_ = -1; }

private:
  int fd_;
};

/** A stream as a source; what its buffer has read ahead is given back. */
SetSource sourceOf(FILE* file, bool portable) {
  if (file == nullptr || std::fflush(file) != 0) fail(CannotRead);
  return {file, fileno(file), portable, portable ? 0 : reasonInErrno, 0};
}

/** A count from the caller, or from the file if that is 0. The file's must not be negative. */
int countOf(int given, const SetSource& source) {
  if (given != 0) return given;
  int count = 0;
  const bool read = source.portable ? BF_fread_int(source.stream, &count, 1) == 0
                                    : CBF_read64(&count, sizeof count, 1, source.fd) == 1;
  if (!read || count < 0) fail(CannotRead);
  return count;
}

/** Tells of values that the file does not hold, which is no error of the system. */
[[noreturn]] void failShort(const SetSource& source) {
  errno = 0;
  fail(CannotRead, source.readReason);
}

/** Moves to a byte; -1 stands for one that no position can tell, which the system refuses. */
void moveTo(const SetSource& source, __int64 position) {
  if (CBF_lseek64(source.fd, position, SEEK_SET) < 0) fail(CannotSeek, source.seekReason);
}

std::wstring nameOf(wchar_t const* name) {
  return withMemory([&] { return name == nullptr ? std::wstring() : std::wstring(name); });
}

} // namespace

/** The bytes from the first vector to the end of the last one; -1 if no position can tell them. */
template <class T>
__int64 VectorSetFiles<T>::extent(const SetRequest& request) {
  if (request.vectors < 1) return 0;
  const __int64 data = static_cast<__int64>(sizeof(T)) * request.length;
  __int64 bytes = 0;
  if (__builtin_add_overflow(data, request.gap, &bytes) ||
      __builtin_mul_overflow(bytes, static_cast<__int64>(request.vectors - 1), &bytes) ||
      __builtin_add_overflow(bytes, data, &bytes))
    return -1;
  return bytes;
}

/**
 * Refuses what costs memory that the file does not stand for: values in core that are not there,
 * and lists that are long beyond all that a writer may have left out. So a large file of another
 * form, whose first bytes are no counts, does not end in a list of a billion vectors. Any other
 * file that is too short is adopted: the vectors that it holds can be used, and the others are
 * found out then. Of vectors without values no byte tells, so what follows must not either: a set
 * that was read can be written and read again.
 */
template <class T>
void VectorSetFiles<T>::requireHeld(const SetSource& source, const SetRequest& request) {
  const __int64 left = remainingBytes(source.fd);
  const __int64 data = static_cast<__int64>(sizeof(T)) * request.length;
  const __int64 vectors = request.vectors;
  if (request.coreMode == 1 && vectors > 0 && data > left / vectors) failShort(source);
  const __int64 held = std::min(data > 0 ? left / data : 0, vectors);
  if (vectors - freeVectors > promisesPerVector * held) failShort(source);
}

template <class T>
void VectorSetFiles<T>::takeShape(Set& set, const SetRequest& request, bool memOwner) {
  set._Initialize(request.coreMode, memOwner, request.vectors, request.length, 0, nullptr);
  set.mapFile_ = request.mapFile;
  set.blockGap_ = static_cast<unsigned __int64>(request.gap);
  set._AllocateList();
}

/**
 * Without a name of its own the file has the one that was preset. The set gets it back when the
 * file is adopted; after a failure it has none, so that it never makes the file anew.
 */
template <class T>
void VectorSetFiles<T>::takePreset(Set& set, std::wstring& name) {
  if (!name.empty() || !set.namePreset_) return;
  name.swap(set.fileName_);
  set.namePreset_ = false;
}

/**
 * Makes the vectors. A block that memory does not hold leaves them over the file instead: mapped
 * only if the file's words are the host's, so that the values are those of a set in core.
 */
template <class T>
void VectorSetFiles<T>::begin(Set& set, const SetSource& source, SetRequest& request, bool memOwner,
                              std::wstring& name) {
  set._Initialize(request.coreMode, false, 0, 0, 0, nullptr); // not valid, whatever happens
  if (request.coreMode == 2) takePreset(set, name);
  request.vectors = std::max(countOf(request.vectors, source), 0);
  request.length = std::max(countOf(request.length, source), 0);
  requireHeld(source, request);
  try {
    takeShape(set, request, memOwner);
  } catch (const C_ZarelException& e) {
    if (e.getExceptionCode() != NoMemory || request.coreMode == 2) throw;
    request.coreMode = 2;
    request.mapFile = request.mapFile && (!source.portable || isHostOrdered(source.stream));
    takePreset(set, name);
    takeShape(set, request, false);
  }
}

template <class T>
void VectorSetFiles<T>::readInCore(Set& set, const SetSource& source) {
  const __int64 count = static_cast<__int64>(set.columns_) * set.rows_;
  if (source.portable) {
    readValues(source.stream, set.base_, count);
    return;
  }
  const auto all = static_cast<std::size_t>(count);
  errno = 0; // a file that ends is no error of the system
  if (CBF_read64(set.base_, sizeof(T), all, source.fd) != all && all != 0)
    fail(CannotRead, source.readReason);
}

/** Leaves the vectors where they lie; the source then stands behind them. */
template <class T>
void VectorSetFiles<T>::adopt(Set& set, const SetSource& source, const SetRequest& request,
                              std::wstring const& name) {
  const __int64 start = CBF_tell64(source.fd);
  if (start < 0) fail(CannotSeek, source.seekReason);
  const __int64 bytes = extent(request);
  __int64 end = 0;
  if (bytes < 0 || __builtin_add_overflow(start, bytes, &end)) end = -1;
  if (!request.mapFile && end >= 0) attach(set, source, start);
  moveTo(source, end);
  withMemory([&] { set.bindFile(name); });
  if (!request.mapFile) return;
  set.initialOffSet_ = static_cast<unsigned __int64>(start);
  set.fileDescriptor_ = source.fd;
}

/** The vectors end where a position can tell, so that none of them begins beyond. */
template <class T>
void VectorSetFiles<T>::attach(Set& set, const SetSource& source, __int64 start) {
  const auto stride = static_cast<__int64>(set.strideBytes());
  for (int j = 0; j < set.columns_; ++j) {
    moveTo(source, start + j * stride);
    withMemory([&] { onFile<T>(set.list_[j]).Attach(set.rows_, source.stream, windowLength); });
  }
}

template <class T>
void VectorSetFiles<T>::read(Set& set, const SetSource& source, SetRequest request, bool memOwner,
                             std::wstring name) {
  if (request.coreMode != 1 && request.coreMode != 2) fail(BadCoreMode);
  if (request.gap < 0) fail(OutOfRange);
  begin(set, source, request, memOwner, name);
  if (request.coreMode == 1)
    readInCore(set, source);
  else
    adopt(set, source, request, name);
  set.valid_ = true;
}

// The portable form.

template <class T>
int C_VSTRUCT<T>::Read(FILE* file) {
  return Read(file, 1, false, 0, 0, 0);
}

template <class T>
int C_VSTRUCT<T>::Read(FILE* file, int CoreMode, bool MapFile, int NbVec, int DimVec, __int64 gap) {
  ZAREL_STEP("Read");
  VectorSetFiles<T>::read(*this, sourceOf(file, true), {CoreMode, MapFile, NbVec, DimVec, gap},
                          CoreMode == 1, std::wstring());
  return 0;
}

template <class T>
int C_VSTRUCT<T>::Read(wchar_t const* name, __int64 offset, int CoreMode, bool MapFile, int NbVec,
                       int DimVec, __int64 gap) {
  ZAREL_STEP("Read");
  OwnStream stream(withMemory([&] { return CBF_fopen64(name, updateMode); }));
  if (stream == nullptr) fail(FileNotOpened, reasonInErrno);
  const SetSource source = sourceOf(stream.get(), true);
  if (CBF_lseek64(source.fd, offset, SEEK_SET) < 0) fail(CannotSeek, reasonInErrno);
  VectorSetFiles<T>::read(*this, source, {CoreMode, MapFile, NbVec, DimVec, gap}, CoreMode == 1,
                          nameOf(name));
  if (coreMode_ == 1) {
    valid_ = false; // until nothing is left that can fail
    withMemory([&] { bindFile(nameOf(name)); });
    valid_ = true;
    return 0; // nothing more is read from the file
  }
  fileDescriptor_ = source.fd;
  stream_ = stream.release();
  fileOpenedHere_ = true;
  return 0;
}

// The raw form.

template <class T>
int C_VSTRUCT<T>::Restore(wchar_t* name, FILE* file, int CoreMode, int NbVec, int DimVec) {
  ZAREL_STEP("Restore");
  VectorSetFiles<T>::read(*this, sourceOf(file, false), {CoreMode, true, NbVec, DimVec, 0},
                          CoreMode == 1, nameOf(name));
  return 0;
}

template <class T>
int C_VSTRUCT<T>::Restore(wchar_t* name, unsigned __int64 offset, int CoreMode, int NbVec,
                          int DimVec) {
  ZAREL_STEP("Restore");
  const int fd = withMemory([&] { return CBF_open64(name, updateFlags); });
  if (fd < 0) fail(FileNotOpened, reasonInErrno);
  OwnDescriptor descriptor(fd);
  if (CBF_lseek64(fd, static_cast<__int64>(offset), SEEK_SET) < 0) fail(CannotSeek, reasonInErrno);
  const SetSource source = {nullptr, fd, false, reasonInErrno, reasonInErrno};
  VectorSetFiles<T>::read(*this, source, {CoreMode, true, NbVec, DimVec, 0}, true, nameOf(name));
  fileDescriptor_ = fd;
  descriptor.keep(); // the caller closes it: see getDataFileDescriptor
  return 0;
}

} // namespace Zarel

ZAREL_INSTANTIATE_VECTORSETS
