// Sets for the benchmarks of the decompositions: a few strong directions over a floor of noise, so
// that an iteration for the largest values has something to find and something to do.
#ifndef ZAREL_BENCH_DECOMPOSITIONDATA_H
#define ZAREL_BENCH_DECOMPOSITIONDATA_H

#include <cstdint>

#include <zarel/C_AlgoSvd.h>
#include <zarel/C_vstruct.h>

namespace bench {

using Set = Zarel::C_VSTRUCT<double>;

/** Cheap numbers between -1 and 1; the fill is no part of any measurement. */
class Numbers {
public:
  double next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return static_cast<double>(state_ >> 11) / 4503599627370496.0 - 1.0;
  }

private:
  std::uint64_t state_ = 0x9E3779B97F4A7C15ULL;
};

/** Vector j: noise, and a wave whose strength falls slowly with j. */
inline void fill(Set& set) {
  Numbers numbers;
  for (int j = 0; j < set.getDim(); ++j) {
    const auto id = static_cast<unsigned>(j);
    set.MapBlock(id, id);
    double* const values = set[j]->Adr(0);
    const double strength = 10.0 / (1 + j);
    for (int i = 0; i < set.getDim1(); ++i)
      values[i] = numbers.next() + ((i / (j + 1)) % 2 == 0 ? strength : -strength);
  }
  set.UnmapAllBlocks();
}

/** The set as a problem that stays as it is, and counts its products. */
class Counted : public C_ItfSvdArpackCVstruct {
public:
  explicit Counted(Set& set) : C_ItfSvdArpackCVstruct(set) {}
  int ProdAtAV(C_Vec<double, int>& x, C_Vec<double, int>& y) override {
    ++products;
    return C_ItfSvdArpackCVstruct::ProdAtAV(x, y);
  }
  int SetNewA(Set&) override { return 0; }
  int products = 0;
};

} // namespace bench

#endif
