// A mapped range of a file that unmaps itself.
#ifndef ZAREL_SYSTEM_MAPPING_H
#define ZAREL_SYSTEM_MAPPING_H

#include <cstddef>

#include <sys/types.h>

namespace Zarel {

// Owns a range of addresses that mmap gave, or none.
class Mapping {
public:
  Mapping() = default;
  Mapping(void* address, size_t bytes) : _address(address), _bytes(bytes) {}
  ~Mapping() { unmap(); }
  Mapping(Mapping&& other) noexcept;
  Mapping& operator=(Mapping&& other) noexcept;
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;

  explicit operator bool() const { return _address != nullptr; }
  char* data() const { return static_cast<char*>(_address); }
  size_t size() const { return _bytes; }
  // Gives the range away; the caller unmaps it.
  void* release();
  // Unmaps it now: 0, also if there is none, or -1 and errno; then it is still there.
  int unmap();

private:
  void* _address = nullptr;
  size_t _bytes = 0;
};

// The unit of offsets and sizes of mappings.
size_t pageSize();

// Maps `bytes` bytes of an open file from `offset`, a multiple of pageSize(), shared, for reading
// or for both ways; none and errno on failure. Whoever touches bytes past the end of the file, or
// has a full disk under bytes that were not reserved, is killed: test and reserve before.
Mapping mapFile(int fd, off_t offset, size_t bytes, bool writable);

} // namespace Zarel

#endif
