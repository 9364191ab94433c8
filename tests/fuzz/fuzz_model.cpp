// Feeds bytes to the readers of models and lists. The first byte chooses the reader, the rest is
// the file. Whatever was read is then used in every way; only a crash, a leak, a hang or an answer
// that is neither 0 nor 1 is a finding.

#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "kriging/exercise.h"

#include "fuzz/input.h"

using fuzz::fileOf;

namespace {

template <class Object>
void readAndUse(FILE* file) {
  Object object;
  kriging_test::answered(object.Read(file));
  kriging_test::exercise(object);
}

template <class T>
void readOldAndUse(FILE* file) {
  Kriging<T> model;
  kriging_test::answered(model.ReadOld(file));
  kriging_test::exercise(model);
}

using Complex = std::complex<double>;

void choose(std::uint8_t reader, FILE* file) {
  switch (reader % 6) {
  case 0:
    return readAndUse<Kriging<double>>(file);
  case 1:
    return readAndUse<Kriging<Complex>>(file);
  case 2:
    return readAndUse<KrigingList<double>>(file);
  case 3:
    return readAndUse<KrigingList<Complex>>(file);
  case 4:
    return readOldAndUse<double>(file);
  default:
    return readOldAndUse<Complex>(file);
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size < 1) return 0;
  FILE* file = fileOf(data + 1, size - 1);
  if (file == nullptr) return 0;
  choose(data[0], file);
  std::fclose(file);
  return 0;
}
