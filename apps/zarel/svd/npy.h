/**
 * @file npy.h
 * The head of a .npy file: what array of numbers follows, and where. The format is that of NumPy's
 * enhancement proposal 1, versions 1 to 3.
 */
#ifndef ZAREL_APP_SVD_NPY_H
#define ZAREL_APP_SVD_NPY_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace app {

struct NpyHead {
  std::string type; ///< as the file has it: "<f8" are doubles with the low byte first
  bool columnOrder = false;
  std::vector<long long> shape;
  std::size_t dataOffset = 0;
};

/** Tells whether bytes begin as a .npy file does. */
bool isNpy(std::string_view bytes);

/**
 * Reads the head of a .npy file from its first bytes. Throws `badInput`, with `file` as the place,
 * where they are no such head or end before it does.
 */
NpyHead parseNpyHead(std::string_view bytes, const std::string& file);

/** Enough bytes for any head that parseNpyHead takes. */
constexpr std::size_t npyHeadLimit = 65536 + 12;

} // namespace app

#endif
