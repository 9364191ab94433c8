// Writes the seeds of fuzz_kernel into a folder: one small record of every form, behind the byte
// that chooses its reader.
#include <cstdio>
#include <filesystem>
#include <string>

#include <zarel/lm.h>

namespace {

// Makes a seed; `write` puts the record into the stream, which may be written past its buffer.
template <class Write>
bool seed(const std::filesystem::path& folder, int reader, const char* name, Write write) {
  FILE* const file = std::fopen((folder / name).c_str(), "wb");
  if (!file) return false;
  std::setvbuf(file, nullptr, _IONBF, 0);
  std::fputc(reader, file);
  write(file);
  return std::fclose(file) == 0;
}

VEC* sample() {
  VEC* const v = LM_v_get("seed", 0, 7, 0, nullptr, nullptr);
  for (const int i : {0, 1, 4, 6})
    v->ve[i] = i + 0.5;
  return v;
}

bool texts(const std::filesystem::path& folder) {
  VEC* const v = sample();
  MAT* const A = LM_m_ident(LM_m_get("seed", 0, 2, 6, 0, nullptr, nullptr), 0, nullptr, nullptr);
  PERM* const px = LM_px_get("seed", 0, 3, 0, nullptr, nullptr);
  IVEC* const iv = LM_iv_get("seed", 0, 3, 0, nullptr, nullptr);
  LVEC* const lv = LM_lv_get("seed", 0, 3, 0, nullptr, nullptr);
  const bool good = seed(folder, 0, "v", [v](FILE* f) { v_foutput(f, v); }) &&
                    seed(folder, 1, "m", [A](FILE* f) { m_foutput(f, A); }) &&
                    seed(folder, 2, "px", [px](FILE* f) { px_foutput(f, px); }) &&
                    seed(folder, 3, "iv", [iv](FILE* f) { iv_foutput(f, iv); }) &&
                    seed(folder, 4, "lv", [lv](FILE* f) { lv_foutput(f, lv); });
  v_free(v);
  m_free(A);
  px_free(px);
  iv_free(iv);
  lv_free(lv);
  return good;
}

bool sparse(const std::filesystem::path& folder) {
  VEC* const v = sample();
  VECM* const tree = LM_vec2vecm(v, nullptr);
  VECMP* const packed = LM_vec2vecmp(v, nullptr);
  VECMW* const windows = LM_vec2vecmw(v, nullptr);
  const bool good =
      seed(folder, 5, "vecm", [tree](FILE* f) { vecm_boutput(f, tree, nullptr); }) &&
      seed(folder, 6, "vecmp", [packed](FILE* f) { vecmp_boutput(f, packed, nullptr); }) &&
      seed(folder, 7, "vecmw", [windows](FILE* f) { vecmw_boutput(f, windows, nullptr); });
  v_free(v);
  vecm_free(tree);
  vecmp_free(packed);
  vecmw_free(windows);
  return good;
}

bool sets(const std::filesystem::path& folder) {
  bool good = true;
  BVEC* bv = LM_bv_get("seed", 0, LM_BV_CODAGE, 40, 0, nullptr, nullptr);
  for (const int i : {0, 1, 5, 33, 39})
    LM_bv_set_on(bv, i);
  for (int kind = LM_BV_BLOC; kind <= LM_BV_TOUT; ++kind) {
    BVEC* const other = kind == LM_BV_TOUT ? LM_bv_get_tout("seed", 0, 9, 0, nullptr, nullptr)
                                           : LM_bv_to_bv(bv, kind, nullptr, 0, nullptr, nullptr);
    good = good && seed(folder, 8, ("bv-" + std::to_string(kind)).c_str(),
                        [other](FILE* f) { LM_bv_boutput(f, other, nullptr); });
    LM_bv_free(other);
  }
  LM_bv_free(bv);
  return good;
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: kernel_seeds FOLDER\n", stderr);
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  std::filesystem::create_directories(folder);
  return texts(folder) && sparse(folder) && sets(folder) ? 0 : 1;
}
