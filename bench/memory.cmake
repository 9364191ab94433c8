zarel_bench(memory_bench SOURCES memory.cpp)
