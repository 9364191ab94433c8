# Tests of zarel doe; included by CMakeLists.txt of this folder.
zarel_test(app_doe_test ROOM apps LIBRARIES zarel_app
  SOURCES variable_test.cpp space_filling_test.cpp doe_design_test.cpp doe_picture_test.cpp)
zarel_test(app_doe_program_test ROOM apps LIBRARIES zarel_app
  SOURCES program_support.cpp doe_program_test.cpp)
target_compile_definitions(app_doe_program_test PRIVATE ZAREL_PROGRAM="$<TARGET_FILE:zarel_program>")
add_dependencies(app_doe_program_test zarel_program)
