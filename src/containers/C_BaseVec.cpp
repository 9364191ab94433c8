#include <zarel/C_Vec.h>

#include "containers/files.h"
#include "runtime/fail.h"

using Zarel::fail;

namespace {

char kBaseVecName[] = "C_BaseVec";

template <class I, class Handle>
int writeHead(Handle handle, I dimension) {
  Zarel::requireHandle(handle);
  Zarel::writeValues(handle, &dimension, 1);
  return 0;
}

template <class I, class Handle>
int readHead(Handle handle, I& dimension) {
  Zarel::requireHandle(handle);
  dimension = Zarel::readOne<I>(handle);
  return 0;
}

} // namespace

template <class I>
C_BaseVec<I>::~C_BaseVec() = default;

template <class I>
char* C_BaseVec<I>::AffType() const {
  return kBaseVecName;
}
template <class I>
C_Type::E_Type C_BaseVec<I>::Type() {
  return C_Type::E_TypeUnknown;
}
template <class I>
int C_BaseVec<I>::Write(int handle) {
  return writeHead(handle, dim_);
}
template <class I>
int C_BaseVec<I>::Write(FILE* file) {
  return writeHead(file, dim_);
}
template <class I>
int C_BaseVec<I>::Read(int handle) {
  return readHead(handle, dim_);
}
template <class I>
int C_BaseVec<I>::Read(FILE* file) {
  return readHead(file, dim_);
}
template <class I>
int C_BaseVec<I>::WriteMatlab(FILE*) {
  fail(2871);
}
template <class I>
int C_BaseVec<I>::Zero(I, I) {
  fail(2871);
}
template <class I>
int C_BaseVec<I>::Release() {
  return 0;
}
template <class I>
int C_BaseVec<I>::Resize(I) {
  return -1;
}

template <class I>
int C_BaseVec<I>::WriteMatlab(char const* name) {
  const Zarel::TextFile file(name, "w");
  return WriteMatlab(file.get());
}

template <class I>
int C_BaseVec<I>::Print(char const* name, bool append) {
  const Zarel::TextFile file(name, append ? "a" : "w");
  return file.get() == nullptr ? 0 : Print(file.get());
}

template class C_BaseVec<int>;
template class C_BaseVec<__int64>;
