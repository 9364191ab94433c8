// How vectors travel between processes.
#include <climits>

#include <zarel/C_Communicator.h>
#include <zarel/C_Vec.h>

#include "containers/blocks.h"
#include "runtime/fail.h"

namespace {

// Messages count with an int.
template <class I>
int countOf(I dimension) {
  if (dimension > INT_MAX) Zarel::fail(2880);
  return static_cast<int>(dimension);
}

// The values of a vector in one piece: where they lie, or a copy of those that are elsewhere.
template <class T, class I>
class Values {
public:
  explicit Values(C_Vec<T, I>& v)
      : _v(v),
        _inPlace(v.InCore() && v.Full()),
        _copy(_inPlace ? nullptr : Zarel::newValues<T>(v.Dim())) {}

  T* get() const { return _inPlace ? _v.Adr(0) : _copy.get(); }
  void collect() {
    for (I i = 0; !_inPlace && i < _v.Dim(); ++i)
      _copy.get()[i] = _v.GetVal(i);
  }
  void putBack() {
    for (I i = 0; !_inPlace && i < _v.Dim(); ++i)
      _v.SetVal(i, _copy.get()[i]);
  }

private:
  C_Vec<T, I>& _v;
  bool _inPlace;
  Zarel::WorkBlock<T> _copy;
};

template <class T, class I>
void send(C_Communicator& world, C_Vec<T, I>& v, int handle, int destination) {
  I dimension = v.Dim();
  if (dimension < 0) Zarel::fail(2);
  Values<T, I> values(v);
  values.collect();
  world.send(handle, destination, &dimension, 1);
  world.send(handle, destination, values.get(), countOf(dimension));
}

template <class T, class I>
void receive(C_Communicator& world, C_Vec<T, I>& v, int handle, int source) {
  I dimension = 0;
  world.recv(handle, source, &dimension, 1);
  const int count = countOf(dimension);
  v.Resize(dimension);
  Values<T, I> values(v);
  world.recv(handle, source, values.get(), count);
  values.putBack();
}

// The count is tested behind the first message: all processes fail together or none does.
template <class T, class I>
void broadcast(C_Communicator& world, C_Vec<T, I>& v, int root) {
  I dimension = v.Dim();
  world.Bcast(&dimension, 1, root);
  const int count = countOf(dimension);
  v.Resize(dimension);
  Values<T, I> values(v);
  values.collect();
  world.Bcast(values.get(), count, root);
  values.putBack();
}

} // namespace

template <class T, class I>
int C_Vec_Send(C_Vec<T, I>* v, int handle, int destination) {
  countOf(v->Dim());
  if (C_Communicator* const world = C_Communicator::Instance())
    send(*world, *v, handle, destination);
  return 0;
}

template <class T, class I>
int C_Vec_Recv(C_Vec<T, I>* v, int handle, int source) {
  if (C_Communicator* const world = C_Communicator::Instance()) receive(*world, *v, handle, source);
  return 0;
}

template <class T, class I>
int C_Vec_Bcast(C_Vec<T, I>& v, int root) {
  if (C_Communicator* const world = C_Communicator::Instance()) broadcast(*world, v, root);
  return 0;
}

#define ZAREL_INSTANTIATE(T, I)                                                                    \
  template int C_Vec_Send<T, I>(C_Vec<T, I>*, int, int);                                           \
  template int C_Vec_Recv<T, I>(C_Vec<T, I>*, int, int);                                           \
  template int C_Vec_Bcast<T, I>(C_Vec<T, I>&, int);
ZAREL_VECTOR_SCALARS(ZAREL_INSTANTIATE)
