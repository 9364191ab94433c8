# The shared and the static library, from the same objects.
add_library(zarel SHARED $<TARGET_OBJECTS:zarel_objects>)
add_library(zarel_static STATIC $<TARGET_OBJECTS:zarel_objects>)
add_library(zarel::zarel ALIAS zarel)
add_library(zarel::zarel_static ALIAS zarel_static)
set_target_properties(zarel PROPERTIES VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set_target_properties(zarel_static PROPERTIES OUTPUT_NAME zarel EXPORT_NAME zarel_static)
foreach(lib zarel zarel_static)
  target_compile_features(${lib} PUBLIC cxx_std_17)
  target_include_directories(${lib} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${lib} PRIVATE $<BUILD_INTERFACE:zarel_flags>)
endforeach()
target_compile_definitions(zarel_static PUBLIC ZAREL_STATIC)
target_link_libraries(zarel PRIVATE
  ${ZAREL_ARPACK_LIBRARY} LAPACK::LAPACK BLAS::BLAS Threads::Threads)
target_link_libraries(zarel_static PUBLIC
  ${ZAREL_ARPACK_LIBRARY} LAPACK::LAPACK BLAS::BLAS Threads::Threads)
