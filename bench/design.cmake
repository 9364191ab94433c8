zarel_bench(design_bench SOURCES design.cpp)
