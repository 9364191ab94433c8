zarel_bench(bench_memory SOURCES memory.cpp)
