// A list of values that grows with what a file holds, not with what it claims.
#ifndef ZAREL_KERNEL_GROWING_H
#define ZAREL_KERNEL_GROWING_H

#include <algorithm>
#include <cstddef>

#include <zarel/zarelmem.h>

#include "kernel/call.h"

namespace Zarel::kernel {

template <class T>
class Growing {
public:
  explicit Growing(const Call& call) : _call(call) {}
  ~Growing() { zarelmem_free(_data, __FILE__, __LINE__); }
  Growing(const Growing&) = delete;
  Growing& operator=(const Growing&) = delete;

  std::size_t size() const { return _size; }
  const T* data() const { return _data; }
  const T& operator[](std::size_t i) const { return _data[i]; }

  // Room for `count` more values at the end; null if there is no memory for them.
  T* more(std::size_t count) {
    if (_size + count > _room && !grow(_size + count)) return nullptr;
    T* const place = _data + _size;
    _size += count;
    return place;
  }

  // Hands the block over to the caller.
  T* release() {
    T* const block = _data;
    _data = nullptr;
    _size = _room = 0;
    return block;
  }

private:
  bool grow(std::size_t needed) {
    const std::size_t room = std::max<std::size_t>(needed, 2 * _room);
    void* const block = zarelmem_realloc(_data, room * sizeof(T), _call.tag(), allocationFlag(),
                                         __FILE__, __LINE__);
    if (!block) return false;
    _data = static_cast<T*>(block);
    _room = room;
    return true;
  }

  const Call& _call;
  T* _data = nullptr;
  std::size_t _size = 0;
  std::size_t _room = 0;
};

} // namespace Zarel::kernel

#endif
