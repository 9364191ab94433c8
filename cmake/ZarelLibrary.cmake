# The shared and the static library, from the same objects, with their headers, as they are
# built, exported and installed.
include(CMakePackageConfigHelpers)

file(GLOB ZAREL_HEADERS CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/include
     ${PROJECT_SOURCE_DIR}/include/zarel/*.h)
list(SORT ZAREL_HEADERS)

# zarel/zarel.h includes every public header; it is made from the list of them.
get_property(generated_headers GLOBAL PROPERTY ZAREL_GENERATED_HEADERS)
set(ZAREL_INCLUDES "")
foreach(header ${ZAREL_HEADERS} ${generated_headers})
  string(APPEND ZAREL_INCLUDES "#include <${header}>\n")
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/zarel.h.in ${PROJECT_BINARY_DIR}/include/zarel/zarel.h @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/cmake/version.h.in ${PROJECT_BINARY_DIR}/include/zarel/version.h @ONLY)

set(generated_paths ${generated_headers} zarel/zarel.h zarel/version.h)
list(TRANSFORM generated_paths PREPEND ${PROJECT_BINARY_DIR}/include/)
set(header_paths ${ZAREL_HEADERS})
list(TRANSFORM header_paths PREPEND ${PROJECT_SOURCE_DIR}/include/)

add_library(zarel SHARED $<TARGET_OBJECTS:zarel_objects>)
add_library(zarel_static STATIC $<TARGET_OBJECTS:zarel_objects>)
add_library(zarel::zarel ALIAS zarel)
add_library(zarel::zarel_static ALIAS zarel_static)
set_target_properties(zarel PROPERTIES VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set_target_properties(zarel_static PROPERTIES OUTPUT_NAME zarel)
foreach(lib zarel zarel_static)
  target_compile_features(${lib} PUBLIC cxx_std_17)
  target_sources(${lib} PUBLIC FILE_SET HEADERS
    BASE_DIRS ${PROJECT_SOURCE_DIR}/include ${PROJECT_BINARY_DIR}/include
    FILES ${header_paths} ${generated_paths})
  target_link_libraries(${lib} PRIVATE $<BUILD_INTERFACE:zarel_flags>)
endforeach()
if(NOT ZAREL_SANITIZE)
  target_link_options(zarel PRIVATE -Wl,--no-undefined)
endif()
target_link_libraries(zarel PRIVATE
  ${ZAREL_ARPACK_LIBRARY} LAPACK::LAPACK BLAS::BLAS Threads::Threads)
target_link_libraries(zarel_static PUBLIC
  $<BUILD_INTERFACE:${ZAREL_ARPACK_LIBRARY}> $<INSTALL_INTERFACE:arpack>
  LAPACK::LAPACK BLAS::BLAS Threads::Threads)

# Installation: find_package(zarel) and pkg-config zarel.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zarel)
install(TARGETS zarel zarel_static EXPORT zarel-targets FILE_SET HEADERS)
install(EXPORT zarel-targets NAMESPACE zarel:: DESTINATION ${package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/zarel-config.cmake.in
  ${PROJECT_BINARY_DIR}/zarel-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zarel-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zarel-config.cmake ${PROJECT_BINARY_DIR}/zarel-config-version.cmake
  DESTINATION ${package_dir})
# Relative, so that the installed tree may be moved.
file(RELATIVE_PATH ZAREL_PC_PREFIX /p/${CMAKE_INSTALL_LIBDIR}/pkgconfig /p)
configure_file(${PROJECT_SOURCE_DIR}/cmake/zarel.pc.in ${PROJECT_BINARY_DIR}/zarel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zarel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
