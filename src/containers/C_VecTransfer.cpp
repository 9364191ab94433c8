#include <climits>

#include <zarel/C_Vec.h>

#include "runtime/fail.h"

namespace {

/** The installed transfers of one scalar and index; empty in a run of one process. */
template <class T, class I>
C_VecTransfer<T, I>& transferOf() {
  static C_VecTransfer<T, I> transfer;
  return transfer;
}

} // namespace

template <class T, class I>
void Zarel::setVecTransfer(const C_VecTransfer<T, I>& transfer) {
  transferOf<T, I>() = transfer;
}

template <class T, class I>
int C_Vec_Send(C_Vec<T, I>* v, int handle, int destination) {
  if (v->Dim() > INT_MAX) Zarel::fail(2880);
  const auto send = transferOf<T, I>().send;
  return send == nullptr ? 0 : send(v, handle, destination);
}

template <class T, class I>
int C_Vec_Recv(C_Vec<T, I>* v, int handle, int source) {
  const auto recv = transferOf<T, I>().recv;
  return recv == nullptr ? 0 : recv(v, handle, source);
}

template <class T, class I>
int C_Vec_Bcast(C_Vec<T, I>& v, int root) {
  const auto bcast = transferOf<T, I>().bcast;
  return bcast == nullptr ? 0 : bcast(v, root);
}

#define ZAREL_INSTANTIATE(T, I)                                                                    \
  template void Zarel::setVecTransfer<T, I>(const C_VecTransfer<T, I>&);                           \
  template int C_Vec_Send<T, I>(C_Vec<T, I>*, int, int);                                           \
  template int C_Vec_Recv<T, I>(C_Vec<T, I>*, int, int);                                           \
  template int C_Vec_Bcast<T, I>(C_Vec<T, I>&, int);
ZAREL_VECTOR_SCALARS(ZAREL_INSTANTIATE)
