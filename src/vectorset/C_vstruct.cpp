// Vector sets: making, linking, ending, state.
#include <zarel/C_vstruct.h>

#include <algorithm>

#include <zarel/C_MessageTool.h>

#include "containers/scalars.h"
#include "system/text.h"
#include "vectorset/instantiate.h"
#include "vectorset/steps.h"

namespace Zarel {

namespace {

/** Tells a failure to the message tool: a full disk in words, all others by their number. */
void tell(C_ZarelException& failure, const std::wstring& file) {
  if (failure.getExceptionCode() == FileSizeNotSet) {
    const std::string text = "Temporary File : " + toUtf8(file) +
                             "\nFails to be created. Probably due to insufficient disk space.";
    C_MessageTool::HandleMessage(C_ZarelMessage("ZarelCore", __FILE__, __LINE__, E_MsgError, text));
  } else {
    C_MessageTool::HandleMessage(failure, E_MsgError, 0);
  }
}

} // namespace

template <class T>
C_FInnerProd<T>::~C_FInnerProd() = default;

template <class T>
T C_FInnerProd<T>::operator()(C_Vec<T, int>& a, C_Vec<T, int>& b) {
  return a * b;
}

template <class T>
int C_VectorSetShape<T>::Resize(int rows, int columns) {
  if (rows != this->rows_) fail(WrongLength);
  if (columns != this->columns_) resizeTo(columns);
  return 0;
}

// Making and ending.

template <class T>
C_VSTRUCT<T>::C_VSTRUCT() = default;

// The delegating constructors let the destructor clean up after a failure.

template <class T>
C_VSTRUCT<T>::C_VSTRUCT(int CoreMode, int NbVec, int DimVec, char const* prefix) : C_VSTRUCT() {
  Allocate(CoreMode, NbVec, DimVec, prefix);
}

template <class T>
C_VSTRUCT<T>::C_VSTRUCT(int NbVec, int DimVec, T* data) : C_VSTRUCT() {
  LinkTo(NbVec, DimVec, data);
}

template <class T>
C_VSTRUCT<T>::C_VSTRUCT(C_VSTRUCT& other, int firstVec, int lastVec, int firstRow, int lastRow)
    : C_VSTRUCT() {
  LinkTo(other, firstVec, lastVec, firstRow, lastRow);
}

template <class T>
C_VSTRUCT<T>::~C_VSTRUCT() {
  try {
    Release(!fileResident());
  } catch (...) {
    abandon();
  }
}

template <class T>
void C_VSTRUCT<T>::_Initialize(int CoreMode, bool MemOwner, int NbVec, int DimVec, int lead,
                               int* mask) {
  ZAREL_STEP("_Initialize");
  letGo();
  masterDof_ = mask;
  valid_ = false;
  coreMode_ = CoreMode;
  memOwner_ = MemOwner;
  mapFile_ = true;
  this->columns_ = std::max(NbVec, 0);
  this->rows_ = std::max(DimVec, 0);
  withMemory([&] { flags_.Resize(this->columns_); });
  leadDimension_ = lead != 0 ? lead : this->rows_;
  initialOffSet_ = 0;
  blockGap_ = 0;
  fileSize_ = 0;
  base_ = nullptr;
  lastBlockId_ = 0;
  highestMapped_ = -1;
  shared_ = false;
}

/** Gives back what an earlier life left: its range, its file, its vectors. */
template <class T>
void C_VSTRUCT<T>::letGo() {
  while (!blocks_.empty())
    _UnmapBlock(blocks_.back());
  const bool ownFile = fileOpenedHere_;
  _CloseDataFile(true);
  if (ownFile) _RemoveDataFile(true);
  leaveFileBehind();
  _DeallocateList();
  fileDescriptor_ = -1;
  stream_ = nullptr;
  fileOpenedHere_ = false;
}

template <class T>
int C_VSTRUCT<T>::Allocate(int CoreMode, int NbVec, int DimVec, char const* prefix) {
  ZAREL_STEP("Allocate");
  if (this->columns_ != 0) Release(true);
  _Initialize(CoreMode, true, NbVec, DimVec, 0, nullptr);
  if (CoreMode != 1 && CoreMode != 2) fail(BadCoreMode);
  _AllocateList();
  if (CoreMode == 2) {
    try {
      withMemory([&] { _CreateDataFile(namePreset_ ? fileName_ : std::wstring(), prefix); });
    } catch (C_ZarelException& e) {
      tell(e, presentName());
      _CloseDataFile(false);
      _RemoveDataFile(false);
      _DeallocateList();
      throw;
    }
  }
  valid_ = true;
  return 0;
}

template <class T>
void C_VSTRUCT<T>::Release(bool removeFile) {
  ZAREL_STEP("Release");
  if (coreMode_ == 2) {
    while (!blocks_.empty())
      _UnmapBlock(blocks_.back());
    _CloseDataFile(true);
    if (removeFile)
      _RemoveDataFile(true);
    else
      leaveFileBehind();
  }
  _DeallocateList();
  valid_ = false;
  this->rows_ = 0;
  this->columns_ = 0;
  leadDimension_ = 0;
}

template <class T>
void C_VSTRUCT<T>::Resize(int n, int* err) {
  Resize(n, "unknown", __FILE__, __LINE__, err);
}

template <class T>
void C_VSTRUCT<T>::Resize(int n, char const* name, char const* file, int line, int* err) {
  ZAREL_STEP("Resize");
  clear(err);
  requireValid();
  if (n < 0) fail(OutOfRange);
  if (n == this->columns_) return;
  if (!memOwner_) fail(NotOwner);
  try {
    if (coreMode_ == 1)
      _ResizeIncore(n, name, file, line);
    else if (coreMode_ == 2)
      _ResizeOutofcore(n, name, file, line);
  } catch (C_ZarelException& e) {
    tell(e, presentName());
    throw;
  }
}

// Links.

template <class T>
void C_VSTRUCT<T>::LinkTo(int NbVec, int DimVec, T* data) {
  ZAREL_STEP("LinkTo");
  _Initialize(1, false, NbVec, DimVec, 0, nullptr);
  reserveList(this->columns_);
  growList(this->columns_);
  base_ = data;
  attachAll(data, strideBytes(), this->columns_);
  valid_ = true;
}

template <class T>
void C_VSTRUCT<T>::LinkTo(C_VSTRUCT& other, int firstVec, int lastVec, int firstRow, int lastRow) {
  ZAREL_STEP("LinkTo");
  if (&other == this) fail(OutOfRange);
  other.requireValid();
  if (lastVec == -1) lastVec = other.columns_;
  if (lastRow == -1) lastRow = other.rows_;
  if (firstVec < 0 || lastVec < firstVec || lastVec > other.columns_) fail(OutOfRange);
  if (firstRow < 0 || lastRow < firstRow || lastRow > other.rows_) fail(OutOfRange);
  _Initialize(other.coreMode_, false, lastVec - firstVec, lastRow - firstRow, other.leadDimension_,
              other.masterDof_ != nullptr ? other.masterDof_ + firstRow : nullptr);
  reserveList(this->columns_);
  if (coreMode_ == 1)
    linkInCore(other, firstVec, firstRow);
  else if (coreMode_ == 2)
    linkOutOfCore(other, firstVec, firstRow);
  else
    fail(BadCoreMode);
  valid_ = true;
}

template <class T>
void C_VSTRUCT<T>::linkInCore(C_VSTRUCT& other, int firstVec, int firstRow) {
  growList(this->columns_);
  if (other.base_ != nullptr)
    base_ = other.base_ + static_cast<std::ptrdiff_t>(firstVec) * leadDimension_ + firstRow;
  attachAll(base_, strideBytes(), this->columns_);
}

// State.

template <class T>
void C_VSTRUCT<T>::requireValid() const {
  if (!valid_) fail(NotValid);
}

template <class T>
void C_VSTRUCT<T>::requireVector(int i) const {
  if (i < 0 || i >= this->columns_) fail(OutOfRange);
}

template <class T>
void C_VSTRUCT<T>::Info(FILE* file) {
  if (file == nullptr) return;
  std::fprintf(file, "\tValid\t:\t\t%d\n", valid_);
  std::fprintf(file, "\tNbVec\t:\t\t%d\n", this->columns_);
  std::fprintf(file, "\tDimVec\t:\t\t%d\n", this->rows_);
  if (leadDimension_ != this->rows_)
    std::fprintf(file, "\tLead Dimension\t:\t\t%d\n", leadDimension_);
  std::fprintf(file, "\tFileDescriptor\t:\t%d\n", fileDescriptor_);
  std::fprintf(file, "\tInitialOffSet\t:\t%llu\n", initialOffSet_);
  std::fprintf(file, "\tFileName\t:\t\t%s\n", toUtf8(fileName_).c_str());
  std::fprintf(file, "\tFileSize\t:\t\t%llu\n", fileSize_);
  std::fprintf(file, "\tMemOwner\t:\t%d\n", memOwner_);
  std::fprintf(file, "\tMapFile\t:\t\t%d\n", mapFile_);
  std::fprintf(file, "\tCoreMode\t:\t%d\n", coreMode_);
  std::fprintf(file, "\tBase\t:\t\t%p\n", static_cast<void*>(base_));
}

template <class T>
int C_VSTRUCT<T>::MemSize() const {
  if (coreMode_ != 1) return 0;
  return static_cast<int>(static_cast<unsigned>(this->columns_) *
                          static_cast<unsigned>(leadDimension_) * static_cast<unsigned>(sizeof(T)));
}

template <class T>
__int64 C_VSTRUCT<T>::NbVal() {
  return static_cast<__int64>(this->rows_) * this->columns_;
}

template <class T>
char* C_VSTRUCT<T>::AffType() const {
  static char name[] = "C_VSTRUCT";
  return name;
}

template <class T>
char const* C_VSTRUCT<T>::Version() const {
  return "0.1";
}

#define ZAREL_SET_PARTS(T)                                                                         \
  template class C_FInnerProd<T>;                                                                  \
  template class C_VectorSetShape<T>;
ZAREL_MATRIX_SCALARS(ZAREL_SET_PARTS)

} // namespace Zarel

ZAREL_INSTANTIATE_VECTORSETS
