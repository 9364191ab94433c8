# zarel_room(NAME SOURCES...) adds the sources of one room of src/ to the library.
# Every room is compiled once, position independent, and linked into both the shared and the
# static library.
add_library(zarel_objects OBJECT)
target_link_libraries(zarel_objects PRIVATE zarel_flags)
target_compile_definitions(zarel_objects PRIVATE ZAREL_BUILDING)
target_include_directories(zarel_objects PRIVATE
  ${PROJECT_SOURCE_DIR}/include ${PROJECT_BINARY_DIR}/include ${PROJECT_SOURCE_DIR}/src)

function(zarel_room name)
  list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ REGEX "^[^/$]")
  target_sources(zarel_objects PRIVATE ${ARGN})
endfunction()
