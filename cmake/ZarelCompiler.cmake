# Flags that every target of the project shares; they reach targets through zarel_flags.
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(ZAREL_CCACHE ccache)
if(ZAREL_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER ${ZAREL_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ZAREL_CCACHE})
endif()

# Source locations in exceptions are paths as they stand in the repository, whichever way the compiler
# is given them: whole, generated in the build folder, or seen from the folder where it runs, as ccache
# does when it has a base_dir. (It takes no notice of what the maps say, only of how many there are.)
set(ZAREL_PATH_MAPS -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/= -fmacro-prefix-map=${PROJECT_BINARY_DIR}/=)
file(RELATIVE_PATH from_build ${CMAKE_BINARY_DIR} ${PROJECT_SOURCE_DIR})
if(from_build) # empty where the build is in the source tree; with or without a "/" at its end
  string(REGEX REPLACE "/+$" "" from_build "${from_build}")
  list(APPEND ZAREL_PATH_MAPS -fmacro-prefix-map=${from_build}/=)
endif()

add_library(zarel_flags INTERFACE)
target_compile_options(zarel_flags INTERFACE
  -Wall -Wextra -Wshadow -Wpedantic -Wno-long-long
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Wno-overloaded-virtual>
  # googletest's typed suites leave a variadic argument out, which only clang finds pedantic.
  $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wno-gnu-zero-variadic-macro-arguments>
  ${ZAREL_PATH_MAPS}
  $<$<BOOL:${ZAREL_WERROR}>:-Werror>)
if(ZAREL_SANITIZE)
  target_compile_options(zarel_flags INTERFACE -fsanitize=${ZAREL_SANITIZE}
    -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  target_link_options(zarel_flags INTERFACE -fsanitize=${ZAREL_SANITIZE})
endif()
if(ZAREL_COVERAGE)
  target_compile_options(zarel_flags INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(zarel_flags INTERFACE --coverage)
endif()
