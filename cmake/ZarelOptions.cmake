# What a build contains. A project that adds Zarel as a subdirectory gets the library alone.
option(ZAREL_BUILD_APPS "Build the zarel program" ${PROJECT_IS_TOP_LEVEL})
option(ZAREL_BUILD_EXAMPLES "Build the example studies" ${PROJECT_IS_TOP_LEVEL})
option(ZAREL_BUILD_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(ZAREL_BUILD_BENCH "Build the benchmarks" OFF)
option(ZAREL_BUILD_FUZZ "Build the fuzz targets (clang only)" OFF)
option(ZAREL_WERROR "Turn warnings into errors" ${PROJECT_IS_TOP_LEVEL})
option(ZAREL_COVERAGE "Instrument for line coverage" OFF)
set(ZAREL_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize takes them (address,undefined or thread)")
