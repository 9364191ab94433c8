zarel_bench(numerics_bench SOURCES numerics.cpp)
