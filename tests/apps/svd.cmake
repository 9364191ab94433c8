# Tests of zarel svd; included by CMakeLists.txt of this folder.
zarel_test(app_svd_test ROOM apps LIBRARIES zarel_app
  SOURCES npy_test.cpp snapshots_test.cpp)
zarel_test(app_svd_program_test ROOM apps LIBRARIES zarel_app
  SOURCES program_support.cpp svd_program_test.cpp svd_fault_test.cpp)
target_compile_definitions(app_svd_program_test PRIVATE
  ZAREL_PROGRAM="$<TARGET_FILE:zarel_program>"
  ZAREL_FAILING_CALLS="$<TARGET_FILE:zarel_failing_calls>")
# Makes system calls of the program fail, from outside.
add_library(zarel_failing_calls MODULE failing_calls.cpp)
target_link_libraries(zarel_failing_calls PRIVATE zarel_flags ${CMAKE_DL_LIBS})
add_dependencies(app_svd_program_test zarel_program zarel_failing_calls)
