// Writes the seeds of fuzz_kernel into a folder: one small record of every form, behind the byte
// that chooses its reader.
#include <cstdio>
#include <string>

#include <zarel/lm.h>

#include "fuzz/corpus.h"

using fuzz::Corpus;

namespace {

VEC* sample() {
  VEC* const v = LM_v_get("seed", 0, 7, 0, nullptr, nullptr);
  for (const int i : {0, 1, 4, 6})
    v->ve[i] = i + 0.5;
  return v;
}

void addTexts(Corpus& corpus) {
  VEC* const v = sample();
  MAT* const A = LM_m_ident(LM_m_get("seed", 0, 2, 6, 0, nullptr, nullptr), 0, nullptr, nullptr);
  PERM* const px = LM_px_get("seed", 0, 3, 0, nullptr, nullptr);
  IVEC* const iv = LM_iv_get("seed", 0, 3, 0, nullptr, nullptr);
  LVEC* const lv = LM_lv_get("seed", 0, 3, 0, nullptr, nullptr);
  corpus.addWritten("v", 0, [v](FILE* f) { v_foutput(f, v); });
  corpus.addWritten("m", 1, [A](FILE* f) { m_foutput(f, A); });
  corpus.addWritten("px", 2, [px](FILE* f) { px_foutput(f, px); });
  corpus.addWritten("iv", 3, [iv](FILE* f) { iv_foutput(f, iv); });
  corpus.addWritten("lv", 4, [lv](FILE* f) { lv_foutput(f, lv); });
  v_free(v);
  m_free(A);
  px_free(px);
  iv_free(iv);
  lv_free(lv);
}

void addSparse(Corpus& corpus) {
  VEC* const v = sample();
  VECM* const tree = LM_vec2vecm(v, nullptr);
  VECMP* const packed = LM_vec2vecmp(v, nullptr);
  VECMW* const windows = LM_vec2vecmw(v, nullptr);
  corpus.addWritten("vecm", 5, [tree](FILE* f) { vecm_boutput(f, tree, nullptr); });
  corpus.addWritten("vecmp", 6, [packed](FILE* f) { vecmp_boutput(f, packed, nullptr); });
  corpus.addWritten("vecmw", 7, [windows](FILE* f) { vecmw_boutput(f, windows, nullptr); });
  v_free(v);
  vecm_free(tree);
  vecmp_free(packed);
  vecmw_free(windows);
}

void addSets(Corpus& corpus) {
  BVEC* bv = LM_bv_get("seed", 0, LM_BV_CODAGE, 40, 0, nullptr, nullptr);
  for (const int i : {0, 1, 5, 33, 39})
    LM_bv_set_on(bv, i);
  for (int kind = LM_BV_BLOC; kind <= LM_BV_TOUT; ++kind) {
    BVEC* const other = kind == LM_BV_TOUT ? LM_bv_get_tout("seed", 0, 9, 0, nullptr, nullptr)
                                           : LM_bv_to_bv(bv, kind, nullptr, 0, nullptr, nullptr);
    corpus.addWritten("bv-" + std::to_string(kind), 8,
                      [other](FILE* f) { LM_bv_boutput(f, other, nullptr); });
    LM_bv_free(other);
  }
  LM_bv_free(bv);
}

} // namespace

int main(int argc, char** argv) {
  return fuzz::writeCorpus(argc, argv, [](Corpus& corpus) {
    addTexts(corpus);
    addSparse(corpus);
    addSets(corpus);
  });
}
