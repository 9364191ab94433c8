// Feeds bytes to the readers of vector sets. The first byte chooses scalar, storage, encoding and
// which counts the caller gives, the second one the gap, the third one these counts; the rest is
// the file. Whatever was read is then used, written in both encodings and by rows, and read again;
// what the set owns is resized too. A crash, a leak, a hang or a set that does not come back is a
// finding.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <zarel/C_vstruct.h>
#include <zarel/bf.h>
#include <zarel/erreur.h>

#include "fuzz/input.h"

using fuzz::fileOf;
using fuzz::require;

namespace {

struct Choice {
  int coreMode;
  bool mapFile;
  bool byName; ///< restored by name: such a set owns its file
  bool portable;
  __int64 gap;
  int vectors; ///< 0: the file says
  int length;
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
  if (choice.byName) {
    std::wstring name = L"/proc/self/fd/" + std::to_wstring(fileno(file));
    set.Restore(name.data(), 0ULL, choice.coreMode, choice.vectors, choice.length);
  } else if (choice.portable) {
    set.Read(file, choice.coreMode, choice.mapFile, choice.vectors, choice.length, choice.gap);
  } else {
    set.Restore(nullptr, file, choice.coreMode, choice.vectors, choice.length);
  }
}

/** Closes what a set that was restored by name leaves to its caller. */
template <class T>
class DescriptorOf {
public:
  DescriptorOf(Zarel::C_VSTRUCT<T>& set, const Choice& choice)
      : descriptor_(choice.byName && set.isValid() ? set.getDataFileDescriptor() : -1) {}
  DescriptorOf(const DescriptorOf&) = delete;
  DescriptorOf& operator=(const DescriptorOf&) = delete;
  ~DescriptorOf() {
    if (descriptor_ >= 0) CBF_close64(descriptor_);
  }

private:
  int descriptor_;
};

/** New vectors are zeros, whatever the file held. Files that promise much are left alone. */
template <class T>
void resize(Zarel::C_VSTRUCT<T>& set) {
  constexpr __int64 most = 10000;
  if (!set.getMemOwner() || set.NbVal() > most || set.getDim1() > most) return;
  const int former = set.getDim();
  set.Resize(former + 2, nullptr);
  for (int i = 0; i < set.getDim1(); ++i)
    require(set.GetVal(i, former + 1) == T(0));
  set.Resize(former / 2, nullptr);
  set.Resize(former, nullptr);
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
    readAs(again, copy, {1, false, false, portable, 0, 0, 0});
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
  const DescriptorOf<T> descriptor(set, choice);
  done([&] { set.MapBlock(0, 1); });
  done([&] { set.GetVal(set.getDim1() - 1, set.getDim() - 1); });
  done([&] {
    Zarel::C_VSTRUCT<T> link(set, set.getDim() / 2, -1, set.getDim1() / 2, -1);
    link.FirstNotFinite();
  });
  writeAndReadAgain(set, true);
  writeAndReadAgain(set, false);
  done([&] { resize(set); });
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

/**
 * Bits 3 and 4: in core, mapped, file-resident, or restored by name; bit 5: the raw encoding; bits
 * 6 and 7: the counts that the caller gives.
 */
Choice choiceOf(std::uint8_t how, std::uint8_t gap, std::uint8_t counts) {
  const int storage = (how >> 3) & 3;
  Choice choice{};
  choice.coreMode = storage == 0 ? 1 : 2;
  choice.mapFile = storage == 1;
  choice.byName = storage == 3;
  choice.portable = (how & 32) == 0;
  choice.gap = gap;
  choice.vectors = (how & 64) != 0 ? counts & 15 : 0;
  choice.length = (how & 128) != 0 ? counts >> 4 : 0;
  return choice;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  zarel_setErrorBox(zarel_silentErrorBox);
  FILE* const file = fileOf(data + 3, size - 3);
  if (!file) return 0;
  choose(data[0] & 7, file, choiceOf(data[0], data[1], data[2]));
  std::fclose(file);
  return 0;
}
