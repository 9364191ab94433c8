# Tests of zarel refine; included by CMakeLists.txt of this folder.
add_executable(refine_simulation refine_simulation.cpp)
# Not measured for coverage: under a file size limit it would die of writing its own counters.
if(NOT ZAREL_COVERAGE)
  target_link_libraries(refine_simulation PRIVATE zarel_flags)
endif()

zarel_test(app_refine_test ROOM apps LIBRARIES zarel_app
  SOURCES refine_command_test.cpp refine_journal_test.cpp refine_report_test.cpp
          refine_runner_test.cpp refine_settings_test.cpp refine_study_test.cpp
          toml_config_test.cpp)
zarel_test(app_refine_program_test ROOM apps LIBRARIES zarel_app
  SOURCES program_support.cpp refine_program_test.cpp)
foreach(test app_refine_test app_refine_program_test)
  target_compile_definitions(${test} PRIVATE
    ZAREL_TEST_SIMULATION="$<TARGET_FILE:refine_simulation>"
    ZAREL_PROGRAM="$<TARGET_FILE:zarel_program>")
  add_dependencies(${test} refine_simulation)
endforeach()
add_dependencies(app_refine_program_test zarel_program)
