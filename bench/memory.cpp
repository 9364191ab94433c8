// What the books of the memory manager cost over the process heap.
#include <cstdlib>

#include <benchmark/benchmark.h>

#include <zarel/zarelmem.h>

namespace {

constexpr size_t kBytes = 64;

void entryPoints(benchmark::State& state) {
  for (auto _ : state) {
    void* block = zarelmem_malloc(kBytes, "bench", 1, __FILE__, __LINE__);
    benchmark::DoNotOptimize(block);
    zarelmem_free(block, __FILE__, __LINE__);
  }
}

void heap(benchmark::State& state) {
  for (auto _ : state) {
    void* block = std::malloc(kBytes);
    benchmark::DoNotOptimize(block);
    std::free(block);
  }
}

BENCHMARK(entryPoints)->Name("Malloc Free 64 bytes/measured");
BENCHMARK(heap)->Name("Malloc Free 64 bytes/bound");

} // namespace
