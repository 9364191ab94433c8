// Feeds bytes to the text and binary readers of the matrix kernel. The first byte chooses the
// reader, the rest is the file. What was read is used, written and read again; a crash, a leak, a
// hang or a record that does not come back is a finding.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <zarel/erreur.h>
#include <zarel/lm.h>

#include "fuzz/input.h"

using fuzz::fileOf;
using fuzz::require;

namespace {

// A record and what is done with it.
template <class R, class Read, class Write, class Free>
void roundTrip(FILE* file, Read read, Write writeTo, Free release) {
  int status = 0;
  R* const record = read(file, static_cast<R*>(nullptr), &status);
  require((record == nullptr) == (status == -1));
  if (!record) return;
  FILE* const copy = fileOf(nullptr, 0);
  if (copy) {
    writeTo(copy, record);
    std::rewind(copy);
    R* const again = read(copy, static_cast<R*>(nullptr), &status);
    require(again != nullptr);
    release(again);
    std::fclose(copy);
  }
  release(record);
}

template <class R, class Input, class Output, class Free>
void text(FILE* file, Input input, Output output, Free release) {
  roundTrip<R>(
      file, [input](FILE* f, R* r, int* status) { return input(f, r, 0, nullptr, status); },
      [output](FILE* f, R* r) {
        output(f, r);
        std::fflush(f);
      },
      release);
}

template <class R, class Input, class Output, class Free>
void binary(FILE* file, Input input, Output output, Free release) {
  int status = 0;
  roundTrip<R>(
      file, input, [output, &status](FILE* f, R* r) { require(output(f, r, &status) == 0); },
      release);
}

void walk(BVEC* bv) {
  if (bv->dim > 1 << 20) return;
  int count = 0;
  LM_bv_initialize(bv);
  while (LM_bv_on_suivant(bv) >= 0)
    ++count;
  require(count == LM_bv_nb_on(bv));
}

void choose(std::uint8_t reader, FILE* file) {
  switch (reader % 9) {
  case 0:
    return text<VEC>(file, LM_v_finput, v_foutput, v_free);
  case 1:
    return text<MAT>(file, LM_m_finput, m_foutput, m_free);
  case 2:
    return text<PERM>(file, LM_px_finput, px_foutput, px_free);
  case 3:
    return text<IVEC>(file, LM_iv_finput, iv_foutput, iv_free);
  case 4:
    return text<LVEC>(file, LM_lv_finput, lv_foutput, lv_free);
  case 5:
    return binary<VECM>(file, LM_vecm_binput, vecm_boutput, vecm_free);
  case 6:
    return binary<VECMP>(file, LM_vecmp_binput, vecmp_boutput, vecmp_free);
  case 7:
    return binary<VECMW>(file, LM_vecmw_binput, vecmw_boutput, vecmw_free);
  default:
    return binary<BVEC>(file, LM_bv_binput, LM_bv_boutput, [](BVEC* bv) {
      walk(bv);
      LM_bv_free(bv);
    });
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  zarel_setErrorBox(zarel_silentErrorBox);
  FILE* const file = fileOf(data + 1, size - 1);
  if (!file) return 0;
  choose(data[0], file);
  std::fclose(file);
  return 0;
}
