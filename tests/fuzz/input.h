// What the fuzz targets share: bytes as a file, and findings.
#ifndef ZAREL_TESTS_FUZZ_INPUT_H
#define ZAREL_TESTS_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace fuzz {

/** Ends the run as a finding. */
inline void require(bool holds) {
  if (!holds) std::abort();
}

/** A file in memory that holds the bytes, to read and to write, at its start. */
inline FILE* fileOf(const std::uint8_t* bytes, std::size_t size) {
  const int descriptor = memfd_create("input", MFD_CLOEXEC);
  require(descriptor >= 0);
  require(write(descriptor, bytes, size) == static_cast<ssize_t>(size));
  lseek(descriptor, 0, SEEK_SET);
  FILE* const file = fdopen(descriptor, "r+b");
  require(file != nullptr);
  return file;
}

} // namespace fuzz

#endif
