// What the numerics of vector sets cost over the BLAS calls and the passes over the bytes that they
// cannot do without. The mapped rows work on 2 GB in the page cache, in a temporary file in TMPDIR;
// their bounds on the same file, mapped whole and touched before.
#include <cstdlib>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <sys/mman.h>

#include <zarel/C_vstruct.h>

extern "C" {
void dgemv_(const char*, const int*, const int*, const double*, const double*, const int*,
            const double*, const int*, const double*, double*, const int*, std::size_t);
void dsyrk_(const char*, const char*, const int*, const int*, const double*, const double*,
            const int*, const double*, double*, const int*, std::size_t, std::size_t);
void dgemm_(const char*, const char*, const int*, const int*, const int*, const double*,
            const double*, const int*, const double*, const int*, const double*, double*,
            const int*, std::size_t, std::size_t);
}

namespace {

using Set = Zarel::C_VSTRUCT<double>;
using Vec = Set::Vector;

constexpr double tolerance = 1e-10;
const double one = 1;
const double zero = 0;
const int step = 1;

void fill(Set& set) {
  std::mt19937_64 generator(20240901);
  for (int j = 0; j < set.getDim(); ++j) {
    double* const values = set.GetVector(j, nullptr)->Adr(0);
    for (int i = 0; i < set.getDim1(); ++i)
      values[i] = static_cast<double>(generator() >> 11) * 0x1p-52 - 1;
  }
  set.UnmapAllBlocks();
}

/** A set and all that its rows need. */
struct Data {
  Data(int mode, int vectors, int length) : n(vectors), m(length), set(mode, n, m, nullptr) {
    fill(set);
  }
  int n, m;
  Set set;
  Vec x{n, 1.5};
  Vec y{m, 0.5};
  Vec out;
  C_MatMGe<double> product;
  std::vector<double> gram = std::vector<double>(static_cast<std::size_t>(n) * n);
  std::vector<double> yOut = std::vector<double>(static_cast<std::size_t>(m));
};

Data& inCore() {
  static Data data(1, 200, 20000);
  return data;
}

/** 2 GB on a file, and a view of all of it that stays. */
struct Mapped : Data {
  Mapped() : Data(2, 250, 1000000) {
    void* const view = ::mmap(nullptr, set.getDataFileSize(), PROT_READ, MAP_SHARED,
                              set.getDataFileDescriptor(), 0);
    if (view == MAP_FAILED) std::abort();
    bytes = static_cast<const double*>(view);
  }
  ~Mapped() { ::munmap(const_cast<double*>(bytes), set.getDataFileSize()); }
  const double* bytes;
};

Mapped& mapped() {
  static Mapped data;
  return data;
}

/** Runs one side of a row. */
template <class Operation>
void timed(benchmark::State& state, Operation operation) {
  operation();
  for (auto _ : state) {
    operation();
    benchmark::ClobberMemory();
  }
}

void gemv(char op, Data& d, const double* x, double* y) {
  dgemv_(&op, &d.m, &d.n, &one, d.set.Adr(), &d.m, x, &step, &zero, y, &step, 1);
}
void syrk(Data& d, const double* a) {
  dsyrk_("U", "T", &d.n, &d.m, &one, a, &d.m, &zero, d.gram.data(), &d.n, 1, 1);
}

void plainMv(benchmark::State& state) {
  Data& d = inCore();
  timed(state, [&] { d.set.Mv(d.x, d.out, false, 0, -1); });
}
void plainGemv(benchmark::State& state) {
  Data& d = inCore();
  timed(state, [&] { gemv('N', d, d.x.Adr(0), d.yOut.data()); });
}
BENCHMARK(plainMv)->Name("set Mv 20000x200/measured");
BENCHMARK(plainGemv)->Name("set Mv 20000x200/bound");

void transposedMv(benchmark::State& state) {
  Data& d = inCore();
  timed(state, [&] { d.set.Mv(d.y, d.out, true, 0, -1); });
}
void transposedGemv(benchmark::State& state) {
  Data& d = inCore();
  timed(state, [&] { gemv('T', d, d.y.Adr(0), d.yOut.data()); });
}
BENCHMARK(transposedMv)->Name("set Mv transposed 20000x200/measured");
BENCHMARK(transposedGemv)->Name("set Mv transposed 20000x200/bound");

void gramInCore(benchmark::State& state) {
  Data& d = inCore();
  timed(state, [&] { d.set.MatQtQ(d.product); });
}
void syrkInCore(benchmark::State& state) {
  Data& d = inCore();
  timed(state, [&] { syrk(d, d.set.Adr()); });
}
BENCHMARK(gramInCore)->Name("MatQtQ 20000x200/measured");
BENCHMARK(syrkInCore)->Name("MatQtQ 20000x200/bound");

void mutual(benchmark::State& state) {
  Data& d = inCore();
  timed(state, [&] { d.set.MatQ1tQ(d.set, d.product, -1); });
}
void gemm(benchmark::State& state) {
  Data& d = inCore();
  timed(state, [&] {
    dgemm_("T", "N", &d.n, &d.n, &d.m, &one, d.set.Adr(), &d.m, d.set.Adr(), &d.m, &zero,
           d.gram.data(), &d.n, 1, 1);
  });
}
BENCHMARK(mutual)->Name("MatQ1tQ 20000x200/measured");
BENCHMARK(gemm)->Name("MatQ1tQ 20000x200/bound");

void gramSchmidtInCore(benchmark::State& state) {
  Data& d = inCore();
  const std::vector<double> source(d.set.Adr(), d.set.Adr() + d.set.NbVal());
  Set set(1, d.n, d.m, nullptr);
  for (auto _ : state) {
    state.PauseTiming();
    std::copy(source.begin(), source.end(), set.Adr());
    state.ResumeTiming();
    set.GramSchmidt(tolerance, 0, nullptr, nullptr);
  }
}
BENCHMARK(gramSchmidtInCore)->Name("GramSchmidt 20000x200/measured");
BENCHMARK(syrkInCore)->Name("GramSchmidt 20000x200/bound");

// Out of core.

void streamingSum(benchmark::State& state) {
  Mapped& d = mapped();
  const std::size_t count = d.set.getDataFileSize() / sizeof(double);
  timed(state, [&] {
    double sums[32] = {};
    for (std::size_t i = 0; i + 32 <= count; i += 32)
      for (int k = 0; k < 32; ++k)
        sums[k] += d.bytes[i + static_cast<std::size_t>(k)];
    benchmark::DoNotOptimize(sums);
  });
}

void mappedMv(benchmark::State& state) {
  Mapped& d = mapped();
  timed(state, [&] { d.set.Mv(d.x, d.out, false, 0, -1); });
}
BENCHMARK(mappedMv)->Name("set Mv mapped 2 GB/measured")->Unit(benchmark::kMillisecond);
BENCHMARK(streamingSum)->Name("set Mv mapped 2 GB/bound")->Unit(benchmark::kMillisecond);

void mappedTransposedMv(benchmark::State& state) {
  Mapped& d = mapped();
  timed(state, [&] { d.set.Mv(d.y, d.out, true, 0, -1); });
}
BENCHMARK(mappedTransposedMv)
    ->Name("set Mv transposed mapped 2 GB/measured")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(streamingSum)->Name("set Mv transposed mapped 2 GB/bound")->Unit(benchmark::kMillisecond);

void mappedGram(benchmark::State& state) {
  Mapped& d = mapped();
  timed(state, [&] { d.set.MatQtQ(d.product); });
}
void mappedSyrk(benchmark::State& state) {
  Mapped& d = mapped();
  timed(state, [&] { syrk(d, d.bytes); });
}
BENCHMARK(mappedGram)->Name("MatQtQ mapped 1000000x250/measured")->Unit(benchmark::kMillisecond);
BENCHMARK(mappedSyrk)->Name("MatQtQ mapped 1000000x250/bound")->Unit(benchmark::kMillisecond);

/** Vectors that are orthonormal already cost what random ones do, so the file stays as it is. */
void mappedGramSchmidt(benchmark::State& state) {
  Mapped& d = mapped();
  for (auto _ : state)
    d.set.GramSchmidt(tolerance, 0, nullptr, nullptr);
}
BENCHMARK(mappedGramSchmidt)
    ->Name("GramSchmidt mapped 1000000x250/measured")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(mappedSyrk)->Name("GramSchmidt mapped 1000000x250/bound")->Unit(benchmark::kMillisecond);

} // namespace
