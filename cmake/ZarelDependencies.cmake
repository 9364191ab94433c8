# BLAS and LAPACK come through the system's generic names, so that the machine's alternatives decide
# which implementation is used; ARPACK is arpack-ng.
if(NOT DEFINED BLA_VENDOR)
  set(BLA_VENDOR Generic)
endif()
find_package(BLAS REQUIRED)
find_package(LAPACK REQUIRED)
find_library(ZAREL_ARPACK_LIBRARY arpack REQUIRED)
find_package(Threads REQUIRED)
find_package(Python3 3.9 REQUIRED COMPONENTS Interpreter)
