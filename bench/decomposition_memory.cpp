// The memory that the decomposition of a mapped set of 2 GB keeps for itself, the pages of files
// not counted, against 64 MiB and a few vectors.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "decompositionData.h"

namespace {

/** Resident memory that no file stands behind, in bytes. */
double anonymousBytes() {
  std::FILE* const file = std::fopen("/proc/self/status", "r");
  char line[256];
  double kibibytes = 0;
  while (file != nullptr && std::fgets(line, sizeof line, file) != nullptr)
    if (std::strncmp(line, "RssAnon:", 8) == 0) kibibytes = std::atof(line + 8);
  if (file != nullptr) std::fclose(file);
  return 1024 * kibibytes;
}

/** Looks at each product, and while the vectors are made. */
class Watched : public bench::Counted {
public:
  using Counted::Counted;
  int ProdAtAV(C_Vec<double, int>& x, C_Vec<double, int>& y) override {
    look();
    return Counted::ProdAtAV(x, y);
  }
  int ProdAMat(C_MatMGe<double>& X, C_MatMGe<double>& Y) override {
    look();
    const int result = Counted::ProdAMat(X, Y);
    look();
    return result;
  }
  double peak = 0;

private:
  void look() { peak = std::max(peak, anonymousBytes()); }
};

} // namespace

int main() {
  constexpr int rows = 1000000, columns = 250;
  bench::Set set(2, columns, rows, nullptr);
  bench::fill(set);
  Watched problem(set);
  C_AlgoSvdArpack svd;
  int wanted = 5;
  svd.SetNbEigenValuesToFind(wanted);
  svd.SetThresholdValue(0);
  if (svd.Run(problem) != 0) return 1;
  const double vectors = 4.0 * sizeof(double) * rows;
  std::printf("svd-arpack-memory-1000000x250\t%.0f\t%.0f\n", problem.peak,
              64.0 * 1024 * 1024 + vectors);
  return 0;
}
