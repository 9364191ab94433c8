// Vector sets: the data file of a set out of core.
#include <zarel/C_vstruct.h>

#include <cerrno>
#include <climits>
#include <memory>

#include <fcntl.h>

#include <zarel/C_MapManager.h>
#include <zarel/zarelmem.h>
#include <zarel/zarelsys.h>

#include "system/calls.h"
#include "system/descriptor.h"
#include "system/text.h"
#include "vectorset/instantiate.h"
#include "vectorset/steps.h"

namespace Zarel {

namespace {

constexpr mode_t ownerOnly = 0600;
constexpr int mostTemporaryNames = 100;
constexpr char defaultPrefix[] = "ZRLVS";

/** A file that is being made, under both forms of its name. */
struct NewFile {
  std::wstring name;
  std::string path;

  int open(int how) {
    path = toUtf8(name);
    return openDescriptor(path, O_RDWR | O_CREAT | how, ownerOnly).release();
  }
};

std::wstring temporaryName(const std::wstring& prefix) {
  const auto release = [](wchar_t* text) { zarelmem_free(text, __FILE__, __LINE__); };
  const std::unique_ptr<wchar_t, decltype(release)> name(zarel_tempnam(nullptr, prefix.c_str()),
                                                         release);
  if (name == nullptr) fail(NoFileName);
  return name.get();
}

/** A file that nobody else has: should the name be taken meanwhile, another one is tried. */
int openTemporary(const char* prefix, NewFile& file) {
  const std::wstring wide = toWide(prefix == nullptr ? defaultPrefix : prefix);
  if (hasStrayBytes(wide)) fail(NoFileName);
  int fd = -1;
  for (int trial = 0; fd < 0 && trial < mostTemporaryNames; ++trial) {
    file.name = temporaryName(wide);
    fd = file.open(O_EXCL);
    if (fd < 0 && errno != EEXIST) break;
  }
  return fd;
}

} // namespace

template <class T>
void C_VSTRUCT<T>::_CreateDataFile(std::wstring const& name, char const* prefix) {
  ZAREL_STEP("_CreateDataFile");
  NewFile file{name, {}};
  const int fd = name.empty() ? openTemporary(prefix, file) : file.open(O_TRUNC);
  if (fd < 0) fail(FileNotOpened, reasonInErrno);
  fileOpenedHere_ = true;
  fileDescriptor_ = fd;
  initialOffSet_ = 0;
  boundName_.swap(file.name); // which cannot fail, so that the file has an owner from here on
  boundPath_.swap(file.path);
  withMemory([&] { fileName_ = boundName_; });
  namePreset_ = false;
  _setDataFileSize(_ComputeDataFileSize());
}

template <class T>
unsigned __int64 C_VSTRUCT<T>::_ComputeDataFileSize() const {
  ZAREL_STEP("_ComputeDataFileSize");
  return dataFileSize(this->columns_);
}

/** The bytes up to the end of the last vector; a size that no file has when they overflow. */
template <class T>
unsigned __int64 C_VSTRUCT<T>::dataFileSize(int vectors) const {
  if (vectors == 0) return initialOffSet_;
  unsigned __int64 size = 0;
  const auto behind = static_cast<unsigned __int64>(vectors - 1);
  const auto data = static_cast<unsigned __int64>(this->rows_) * sizeof(T);
  const bool overflows = __builtin_mul_overflow(behind, strideBytes(), &size) ||
                         __builtin_add_overflow(size, data, &size) ||
                         __builtin_add_overflow(size, initialOffSet_, &size);
  return overflows ? ULLONG_MAX : size;
}

/** A size of 0 is also that of a file that was only adopted, so that it tells nothing. */
template <class T>
void C_VSTRUCT<T>::_setDataFileSize(unsigned __int64 size) {
  if (size == fileSize_ && size > 0) return;
  ZAREL_STEP("_setDataFileSize");
  getGlobalMapManager()->SetDataFileSize(fileDescriptor_, size);
  fileSize_ = size;
}

template <class T>
void C_VSTRUCT<T>::releaseFileHandle() {
  if (C_MapManager::IsInstanced()) getGlobalMapManager()->ReleaseFileHandle(fileDescriptor_);
}

/** A descriptor whose closing failed is gone all the same: a second try could close another file.
 */
template <class T>
void C_VSTRUCT<T>::_CloseDataFile(bool strict) {
  if (coreMode_ != 2 || fileDescriptor_ <= 0) return;
  ZAREL_STEP("_CloseDataFile");
  releaseFileHandle();
  if (!fileOpenedHere_) return;
  FILE* const stream = stream_;
  const int fd = fileDescriptor_;
  stream_ = nullptr;
  fileDescriptor_ = -1;
  fileOpenedHere_ = false;
  const int result = stream != nullptr ? std::fclose(stream) : systemCalls().close(fd);
  if (result != 0 && strict) fail(FileNotClosed, reasonInErrno);
}

template <class T>
void C_VSTRUCT<T>::_RemoveDataFile(bool strict) {
  if (!memOwner_ || coreMode_ != 2) return;
  ZAREL_STEP("_RemoveDataFile");
  if (!boundPath_.empty() && systemCalls().unlink(boundPath_.c_str()) != 0 && strict) return;
  if (fileName_ == boundName_ && !namePreset_) fileName_.clear();
  boundName_.clear();
  boundPath_.clear();
  fileSize_ = 0;
}

/** Lets go of the file's name. A file that was only read is not to be made anew under its name. */
template <class T>
void C_VSTRUCT<T>::leaveFileBehind() {
  const bool onlyRead = !memOwner_ || coreMode_ == 1;
  if (onlyRead && fileName_ == boundName_ && !namePreset_) fileName_.clear();
  boundName_.clear();
  boundPath_.clear();
}

/** Takes a file as the set's own; its name stands until the file is removed or left behind. Without
 * memory it has none of its names. */
template <class T>
void C_VSTRUCT<T>::bindFile(std::wstring const& name) {
  std::wstring shown = name;
  std::wstring bound = name;
  std::string path = toUtf8(name);
  fileName_.swap(shown);
  boundName_.swap(bound);
  boundPath_.swap(path);
  namePreset_ = false;
}

} // namespace Zarel

ZAREL_INSTANTIATE_VECTORSETS
