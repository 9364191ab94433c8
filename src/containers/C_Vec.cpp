// The abstract vector: defaults, text and files. The arithmetic stands in C_VecArith.tpp.
#include <zarel/C_Vec.h>

#include "containers/blas.h"
#include "containers/files.h"
#include "containers/scalars.h"
#include "runtime/fail.h"

using Zarel::fail;
using Zarel::ScalarTraits;

namespace {

char kVecName[] = "C_Vec";

/** The head, then the values in one piece or, without an address, one at a time. */
template <class T, class I, class Handle>
int writeVector(C_Vec<T, I>& v, Handle handle) {
  v.C_BaseVec<I>::Write(handle);
  if (T* values = v.Adr(0)) {
    Zarel::writeValues(handle, values, v.Dim());
    return 0;
  }
  for (I i = 0; i < v.Dim(); ++i) {
    const T value = v.GetVal(i);
    Zarel::writeValues(handle, &value, 1);
  }
  return 0;
}

} // namespace

template <class T, class I>
C_Vec<T, I>::C_Vec(const C_Vec& other) : C_Counter<C_Vec<T, I>>(other), C_BaseVec<I>(other) {}

template <class T, class I>
C_Vec<T, I>::~C_Vec() = default;

// What only a concrete vector offers.

template <class T, class I>
T* C_Vec<T, I>::Adr(I) {
  return nullptr;
}
template <class T, class I>
T C_Vec<T, I>::GetVal(I) {
  fail(2871);
}
template <class T, class I>
int C_Vec<T, I>::SetVal(I, T) {
  fail(2871);
}
template <class T, class I>
T& C_Vec<T, I>::operator[](I) {
  fail(2871);
}
template <class T, class I>
int C_Vec<T, I>::FirstVal(T&) {
  fail(2871);
}
template <class T, class I>
int C_Vec<T, I>::NextVal(T&) {
  fail(2871);
}
template <class T, class I>
T* C_Vec<T, I>::Extract(I, I, T*) {
  fail(2871);
}
template <class T, class I>
int C_Vec<T, I>::Init(T, I, I) {
  fail(2871);
}
template <class T, class I>
int C_Vec<T, I>::Attach(I, T*) {
  fail(2871);
}
template <class T, class I>
int C_Vec<T, I>::Resize(I) {
  return -1;
}

template <class T, class I>
int C_Vec<T, I>::MemSizeOf() const {
  return static_cast<int>(static_cast<long long>(this->dim_) * static_cast<long long>(sizeof(T)));
}

// Text.

template <class T, class I>
char* C_Vec<T, I>::AffType() const {
  return kVecName;
}

template <class T, class I>
C_Type::E_Type C_Vec<T, I>::Type() {
  return ScalarTraits<T>::type;
}

template <class T, class I>
int C_Vec<T, I>::GetVal(I i, std::string& text) {
  text = Zarel::scalarText(GetVal(i));
  return 0;
}

template <class T, class I>
int C_Vec<T, I>::FirstVal(std::string& text) {
  T value(0);
  const int index = FirstVal(value);
  if (index != -1) text = Zarel::scalarText(value);
  return index;
}

template <class T, class I>
int C_Vec<T, I>::NextVal(std::string& text) {
  T value(0);
  const int index = NextVal(value);
  if (index != -1) text = Zarel::scalarText(value);
  return index;
}

template <class T, class I>
int C_Vec<T, I>::Print(FILE* file) {
  if (file == nullptr) return 0;
  std::fprintf(file, "- Object : %s\n", this->AffType());
  std::fprintf(file, "- Scalar : %s\n", ScalarTraits<T>::name);
  std::fprintf(file, "- Dim : %lld\n", static_cast<long long>(this->dim_));
  std::fprintf(file, "- In Core : %d\n", this->InCore());
  return 0;
}

template <class T, class I>
int C_Vec<T, I>::WriteMatlab(FILE* file) {
  Zarel::requireHandle(file);
  std::fprintf(file, "%s\n", this->AffType());
  std::fprintf(file, "%s\n", ScalarTraits<T>::name);
  std::fprintf(file, "%lld\n", static_cast<long long>(this->dim_));
  return 0;
}

// Files.

template <class T, class I>
int C_Vec<T, I>::Write(int handle) {
  return writeVector(*this, handle);
}
template <class T, class I>
int C_Vec<T, I>::Write(FILE* file) {
  return writeVector(*this, file);
}
template <class T, class I>
int C_Vec<T, I>::Read(int handle) {
  return C_BaseVec<I>::Read(handle);
}
template <class T, class I>
int C_Vec<T, I>::Read(FILE* file) {
  return C_BaseVec<I>::Read(file);
}
template <class T, class I>
int C_Vec<T, I>::Read(int handle, int) {
  return C_BaseVec<I>::Read(handle);
}
template <class T, class I>
int C_Vec<T, I>::Read(FILE* file, int) {
  return C_BaseVec<I>::Read(file);
}

// Processes.

template <class T, class I>
int C_Vec<T, I>::Send(int handle, int destination) {
  return C_Vec_Send(this, handle, destination);
}
template <class T, class I>
int C_Vec<T, I>::Recv(int handle, int source) {
  return C_Vec_Recv(this, handle, source);
}
template <class T, class I>
int C_Vec<T, I>::Bcast(int root) {
  return C_Vec_Bcast(*this, root);
}

#include "containers/C_VecArith.tpp"

#define ZAREL_INSTANTIATE(T, I)                                                                    \
  template class C_Counter<C_Vec<T, I>>;                                                           \
  template class C_Vec<T, I>;
ZAREL_VECTOR_SCALARS(ZAREL_INSTANTIATE)
