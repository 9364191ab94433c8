zarel_bench(containers_bench SOURCES containers.cpp)
zarel_bench(containers_file_bench SOURCES containers_file.cpp)
