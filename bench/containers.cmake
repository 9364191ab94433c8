zarel_bench(containers_bench SOURCES containers.cpp)
