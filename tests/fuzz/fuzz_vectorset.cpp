// Feeds bytes to the readers of vector sets. The first byte chooses scalar, storage and encoding,
// the second one the gap; the rest is the file. Whatever was read is then used, written in both
// encodings and by rows, and read again; a crash, a leak, a hang or a set that does not come back
// is a finding.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <zarel/C_vstruct.h>
#include <zarel/erreur.h>

#include "fuzz/input.h"

using fuzz::fileOf;
using fuzz::require;

namespace {

struct Choice {
  int coreMode;
  bool mapFile;
  bool portable;
  __int64 gap;
};

/** Runs a step that may end with the library's exception; tells whether it got through. */
template <class Step>
bool done(Step step) {
  try {
    step();
    return true;
  } catch (const C_ZarelException&) {
    return false;
  }
}

template <class T>
void readAs(Zarel::C_VSTRUCT<T>& set, FILE* file, const Choice& choice) {
  if (choice.portable)
    set.Read(file, choice.coreMode, choice.mapFile, 0, 0, choice.gap);
  else
    set.Restore(nullptr, file, choice.coreMode, 0, 0);
}

/** The vectors of both sets have the same bytes. */
template <class T>
void requireSame(Zarel::C_VSTRUCT<T>& a, Zarel::C_VSTRUCT<T>& b) {
  require(a.getDim() == b.getDim() && a.getDim1() == b.getDim1());
  for (int j = 0; j < a.getDim(); ++j) {
    if (a.getDim1() == 0) continue;
    const std::size_t bytes = sizeof(T) * static_cast<std::size_t>(a.getDim1());
    require(std::memcmp(a.GetVector(j, nullptr)->Adr(0), b.GetVector(j, nullptr)->Adr(0), bytes) ==
            0);
  }
}

/** Only sets whose vectors are all there come this far. */
template <class T>
void writeAndReadAgain(Zarel::C_VSTRUCT<T>& set, bool portable) {
  FILE* const copy = fileOf(nullptr, 0);
  if (!copy) return;
  Zarel::C_VSTRUCT<T> again;
  const bool written = done([&] { set.Write(copy, portable); });
  lseek(fileno(copy), 0, SEEK_SET);
  if (written) {
    readAs(again, copy, {1, false, portable, 0});
    requireSame(set, again);
    done([&] { set.WriteT(copy, portable); });
  }
  std::fclose(copy);
}

template <class T>
void readAndUse(FILE* file, const Choice& choice) {
  Zarel::C_VSTRUCT<T> set;
  const bool read = done([&] { readAs(set, file, choice); });
  require(read == set.isValid());
  if (!read) return;
  done([&] { set.MapBlock(0, 1); });
  done([&] { set.GetVal(set.getDim1() - 1, set.getDim() - 1); });
  done([&] {
    Zarel::C_VSTRUCT<T> link(set, set.getDim() / 2, -1, set.getDim1() / 2, -1);
    link.FirstNotFinite();
  });
  writeAndReadAgain(set, true);
  writeAndReadAgain(set, false);
}

void choose(std::uint8_t scalar, FILE* file, const Choice& choice) {
  switch (scalar % 6) {
  case 0:
    return readAndUse<short int>(file, choice);
  case 1:
    return readAndUse<int>(file, choice);
  case 2:
    return readAndUse<float>(file, choice);
  case 3:
    return readAndUse<double>(file, choice);
  case 4:
    return readAndUse<std::complex<float>>(file, choice);
  default:
    return readAndUse<std::complex<double>>(file, choice);
  }
}

/** Bits 3 and 4: in core, mapped, or file-resident; bit 5: the raw encoding. Gaps keep values at
 * their alignment. */
Choice choiceOf(std::uint8_t how, std::uint8_t gap) {
  const int storage = (how >> 3) % 3;
  return {storage == 0 ? 1 : 2, storage == 1, (how & 32) == 0, 16 * static_cast<__int64>(gap)};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  zarel_setErrorBox(zarel_silentErrorBox);
  FILE* const file = fileOf(data + 2, size - 2);
  if (!file) return 0;
  choose(data[0] & 7, file, choiceOf(data[0], data[1]));
  std::fclose(file);
  return 0;
}
