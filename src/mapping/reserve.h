// Place on the disk, asked for before it is written through a map: a store into a page that the
// file system cannot place kills the process.
#ifndef ZAREL_MAPPING_RESERVE_H
#define ZAREL_MAPPING_RESERVE_H

#include <cstdint>

namespace Zarel {

// Both return false and set errno when the disk is full or the system refuses.

// Gives every hole between `from` and `to` its place. What the file holds stays.
bool reserveRange(int fd, std::uint64_t from, std::uint64_t to);

// The position at or behind `from` where the next hole of a file starts; its end if there is none.
// Reserved bytes that were never written may count as a hole.
std::uint64_t nextHole(int fd, std::uint64_t from, std::uint64_t size);

// Sets a file's size; what it grows by has its place. A failure leaves the former size.
bool setFileSize(int fd, std::uint64_t size);

} // namespace Zarel

#endif
