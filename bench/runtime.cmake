zarel_bench(bench_runtime SOURCES runtime.cpp)
