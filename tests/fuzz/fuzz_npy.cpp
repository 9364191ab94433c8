// Feeds bytes to the reader of .npy heads. A head that is taken must say where its numbers begin
// within the bytes, have counts that are none below 0, and be the same when it is written anew in
// the form that NumPy writes; anything else must end with the failure that bad input has.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "failure.h"
#include "svd/npy.h"

#include "fuzz/input.h"

using app::NpyHead;
using fuzz::require;

namespace {

/** A head of version 2, which has room for any text. */
std::string written(const NpyHead& head) {
  const char quote = head.type.find('\'') == std::string::npos ? '\'' : '"';
  std::string text = "{'descr': " + (quote + head.type) + quote +
                     ", 'fortran_order': " + (head.columnOrder ? "True" : "False") + ", 'shape': (";
  for (const long long count : head.shape)
    text += std::to_string(count) + ", ";
  text += ")}\n";
  std::string bytes = std::string("\x93NUMPY\x02") + '\0';
  for (int shift = 0; shift < 32; shift += 8)
    bytes.push_back(static_cast<char>((text.size() >> shift) & 0xff));
  return bytes + text;
}

void comesBack(const NpyHead& head) {
  const std::string bytes = written(head);
  const NpyHead again = app::parseNpyHead(bytes, "again");
  require(again.type == head.type && again.columnOrder == head.columnOrder &&
          again.shape == head.shape && again.dataOffset == bytes.size());
}

void use(std::string_view bytes) {
  const NpyHead head = app::parseNpyHead(bytes, "input");
  require(app::isNpy(bytes) && head.dataOffset <= bytes.size());
  for (const long long count : head.shape)
    require(count >= 0);
  comesBack(head);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    use({reinterpret_cast<const char*>(data), size});
  } catch (const app::Failure& failure) {
    require(failure.code == app::ExitCode::badInput && failure.place.file == "input");
  }
  return 0;
}
