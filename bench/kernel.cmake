zarel_bench(kernel_bench SOURCES kernel.cpp)
