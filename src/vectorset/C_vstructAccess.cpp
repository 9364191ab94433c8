// Vector sets: vectors, rows and elements.
#include <zarel/C_vstruct.h>

#include <algorithm>
#include <cstring>

#include <zarel/C_MapManager.h>

#include "containers/finite.h"
#include "vectorset/fileVectors.h"
#include "vectorset/instantiate.h"
#include "vectorset/steps.h"
#include "vectorset/walk.h"

namespace Zarel {

namespace {

/** Throws before memory is taken for a long vector that the file does not hold. */
template <class T>
void requireLastValue(FileVector<T>& v) {
  T last;
  if (v.Dim() > v.Storage().BufferSize()) v.Storage().Extract(v.Dim() - 1, 1, &last);
}

/** A view that is moved over a file and goes with its owner. */
class MovingView {
public:
  ~MovingView() { getGlobalMapManager()->UnMapPtr(&view_); }
  MovingView() = default;
  MovingView(const MovingView&) = delete;
  MovingView& operator=(const MovingView&) = delete;

  char* show(int fd, const wchar_t* name, unsigned __int64 offset, unsigned __int64 bytes) {
    getGlobalMapManager()->UnMapPtr(&view_);
    getGlobalMapManager()->MapPtr(&view_, fd, name, 0, offset, bytes);
    return view_.GetPtrUser();
  }

private:
  C_MapPtr view_;
};

} // namespace

template <class T>
C_Vec<T, int>* C_VSTRUCT<T>::newVector() const {
  if (fileResident()) return new FileVector<T>;
  return new Vector;
}

template <class T>
void C_VSTRUCT<T>::linkOutOfCore(C_VSTRUCT& other, int firstVec, int firstRow) {
  withMemory([&] { bindFile(other.boundName_); });
  fileSize_ = other.fileSize_;
  fileDescriptor_ = other.fileDescriptor_;
  mapFile_ = other.mapFile_;
  blockGap_ = other.blockGap_;
  initialOffSet_ = other.initialOffSet_ + static_cast<unsigned __int64>(firstVec) * strideBytes() +
                   static_cast<unsigned __int64>(firstRow) * sizeof(T);
  if (!mapFile_) {
    shared_ = other.shared_ = true;
    withMemory([&] {
      for (int j = 0; j < this->columns_; ++j) {
        list_[j] = onFile<T>(other.list_[firstVec + j]).Lnk(firstRow);
        if (this->rows_ > 0) list_[j]->Resize(this->rows_); // a vector on a file has no size 0
      }
    });
  }
  growList(this->columns_);
}

// Vectors.

template <class T>
typename C_VSTRUCT<T>::Vector* C_VSTRUCT<T>::operator[](int i) {
  requireValid();
  requireVector(i);
  if (!fileResident()) return dynamic_cast<Vector*>(list_[i]);
  withMemory([&] {
    requireLastValue(onFile<T>(list_[i]));
    work_.Resize(this->rows_);
    work_.Copy(*list_[i]);
  });
  return &work_;
}

/** Stores values as vector `i`, which the caller has mapped. */
template <class T>
void C_VSTRUCT<T>::store(int i, T const* values) {
  requireVector(i);
  if (fileResident())
    onFile<T>(list_[i]).Storage().Store(0, this->rows_, const_cast<T*>(values));
  else if (values != list_[i]->Adr(0))
    std::copy_n(values, this->rows_, list_[i]->Adr(0));
}

template <class T>
typename C_VSTRUCT<T>::Vector* C_VSTRUCT<T>::GetVector(int i, int* err) {
  clear(err);
  requireVector(i);
  MapBlock(static_cast<unsigned int>(i), static_cast<unsigned int>(i));
  return (*this)[i];
}

template <class T>
int C_VSTRUCT<T>::GetCol(int j, C_Vec<T, int>& v) {
  return v.Attach(this->rows_, GetVector(j, nullptr)->Adr(0));
}

template <class T>
T C_VSTRUCT<T>::GetVal(int row, int column) {
  if (row < 0 || row >= this->rows_) fail(OutOfRange);
  Vector v;
  GetCol(column, v);
  return v[row];
}

template <class T>
int C_VSTRUCT<T>::SetVal(int row, int column, T value) {
  requireValid();
  if (row < 0 || row >= this->rows_) fail(OutOfRange);
  requireVector(column);
  if (fileResident()) return onFile<T>(list_[column]).Storage().Store(row, 1, &value);
  Vector v;
  GetCol(column, v);
  v[row] = value;
  return 0;
}

template <class T>
int C_VSTRUCT<T>::Zero() {
  ZAREL_STEP("Zero");
  for (int j = 0; j < this->columns_; ++j)
    withVector(j, [&] {
      Vector& values = *(*this)[j];
      values.Zero(0, -1);
      store(j, values.Adr(0));
    });
  return 0;
}

template <class T>
int C_VSTRUCT<T>::ZeroNonMasterDof(int* mask) {
  if (mask == nullptr) mask = masterDof_;
  if (mask == nullptr) return 0;
  ZAREL_STEP("ZeroNonMasterDof");
  MapAllBlocks();
  for (int j = 0; j < this->columns_; ++j) {
    T* const values = (*this)[j]->Adr(0);
    for (int i = 0; i < this->rows_; ++i)
      if (mask[i] == 0) values[i] = T(0);
    store(j, values);
  }
  return 0;
}

template <class T>
int C_VSTRUCT<T>::FirstNotFinite(int first, int last) {
  if (last == -1) last = this->columns_ - 1;
  int found = -1;
  for (int j = first; j <= last && found < 0; ++j)
    withVector(j, [&] {
      if (!allFinite((*this)[j]->Adr(0), this->rows_)) found = j;
    });
  return found;
}

// Rows.

template <class T>
int C_VSTRUCT<T>::GetRow(int i, T* out) {
  ZAREL_STEP("GetRow");
  requireValid();
  if (i < 0 || i >= this->rows_) fail(OutOfRange);
  if (mapped() && base_ == nullptr) {
    readRow(i, out);
    return 0;
  }
  for (int j = 0; j < this->columns_; ++j)
    out[j] = fileResident() ? valueOnFile(i, j) : (*list_[j])[i];
  return 0;
}

/** What a window holds of a file may be out of date once others store in it, too. */
template <class T>
T C_VSTRUCT<T>::valueOnFile(int i, int j) {
  if (!shared_) return list_[j]->GetVal(i);
  T value;
  onFile<T>(list_[j]).Storage().Extract(i, 1, &value);
  return value;
}

/** One view of one element for each vector; the mapped range stays. */
template <class T>
void C_VSTRUCT<T>::readRow(int i, T* out) {
  forEachPiece(i, 1, 0, this->columns_,
               [&](int j, char const* value) { std::memcpy(out + j, value, sizeof(T)); });
}

/** Shows the bytes of `count` elements from row `row` on of one vector after the other through
 * short views. */
template <class T>
template <class Visit>
void C_VSTRUCT<T>::forEachPiece(int row, int count, int col0, int col1, Visit visit) {
  storeCopies();
  const wchar_t* const name = boundName_.empty() ? nullptr : boundName_.c_str();
  const unsigned __int64 start = initialOffSet_ + static_cast<unsigned __int64>(row) * sizeof(T);
  const unsigned __int64 bytes = static_cast<unsigned __int64>(count) * sizeof(T);
  MovingView view;
  for (int j = col0; j < col1; ++j) {
    const unsigned __int64 offset = start + static_cast<unsigned __int64>(j) * strideBytes();
    visit(j, view.show(fileDescriptor_, name, offset, bytes));
  }
}

template <class T>
int C_VSTRUCT<T>::GetRow(int i, Vector& v) {
  resize(v, this->columns_);
  return GetRow(i, v.Adr(0));
}

template <class T>
int C_VSTRUCT<T>::GetRows(C_MatMGe<T>& M, int row0, int row1, int col0, int col1) {
  ZAREL_STEP("GetRows");
  requireValid();
  if (row1 == -1) row1 = this->rows_;
  if (col1 == -1) col1 = this->columns_;
  if (row0 < 0 || row1 < row0 || row1 > this->rows_) fail(OutOfRange);
  if (col0 < 0 || col1 < col0 || col1 > this->columns_) fail(OutOfRange);
  const int rows = row1 - row0;
  resize(M, rows, col1 - col0);
  if (rows == 0) return 0;
  if (mapped() && base_ == nullptr) {
    const std::size_t bytes = static_cast<std::size_t>(rows) * sizeof(T);
    forEachPiece(row0, rows, col0, col1,
                 [&](int j, char const* piece) { std::memcpy(M[j - col0], piece, bytes); });
    return 0;
  }
  for (int j = col0; j < col1; ++j)
    std::copy_n((*this)[j]->Adr(0) + row0, rows, M[j - col0]);
  return 0;
}

} // namespace Zarel

ZAREL_INSTANTIATE_VECTORSETS
