zarel_bench(vectorset_bench SOURCES vectorset.cpp)
