zarel_bench(kriging_bench SOURCES kriging.cpp)
zarel_bench(kriging_memory SOURCES kriging_memory.cpp)
