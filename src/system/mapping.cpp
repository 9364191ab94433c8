#include "system/mapping.h"

#include <sys/mman.h>
#include <unistd.h>

#include "system/calls.h"

namespace Zarel {

Mapping::Mapping(Mapping&& other) noexcept : _bytes(other._bytes) {
  _address = other.release();
}

Mapping& Mapping::operator=(Mapping&& other) noexcept {
  if (this != &other) {
    unmap();
    _bytes = other._bytes;
    _address = other.release();
  }
  return *this;
}

void* Mapping::release() {
  void* const address = _address;
  _address = nullptr;
  _bytes = 0;
  return address;
}

int Mapping::unmap() {
  if (!_address) return 0;
  if (systemCalls().munmap(_address, _bytes) != 0) return -1;
  release();
  return 0;
}

size_t pageSize() {
  static const auto size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

Mapping mapFile(int fd, off_t offset, size_t bytes, bool writable) {
  const int protection = writable ? PROT_READ | PROT_WRITE : PROT_READ;
  void* const address = systemCalls().mmap(nullptr, bytes, protection, MAP_SHARED, fd, offset);
  return address == MAP_FAILED ? Mapping() : Mapping(address, bytes);
}

} // namespace Zarel
