# BLAS and LAPACK come through the system's generic names, so the machine's alternatives decide
# which implementation is used; ARPACK is arpack-ng.
if(NOT DEFINED BLA_VENDOR)
  set(BLA_VENDOR Generic)
endif()
find_package(BLAS REQUIRED)
find_package(LAPACK REQUIRED)
find_library(ZAREL_ARPACK_LIBRARY arpack REQUIRED)
find_package(Threads REQUIRED)
find_package(Python3 3.9 REQUIRED COMPONENTS Interpreter)

add_library(zarel_numerics_deps INTERFACE)
target_link_libraries(zarel_numerics_deps INTERFACE
  ${ZAREL_ARPACK_LIBRARY} LAPACK::LAPACK BLAS::BLAS)
