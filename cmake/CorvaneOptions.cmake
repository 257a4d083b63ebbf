option(CORVANE_TESTS "Build the tests" ON)
option(CORVANE_BENCH "Build the benchmarks, which share the tests' wire support" OFF)
option(CORVANE_FUZZ "Build the fuzz targets (Clang only)" OFF)
option(CORVANE_UNITY "Compile the sources of a folder together" OFF)
set(CORVANE_SANITIZE "" CACHE STRING "Value for -fsanitize=, empty for none")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

find_program(CORVANE_CCACHE ccache)
if(CORVANE_CCACHE)
  # One cache for every checkout: what is compiled does not depend on where the tree lies.
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}"
      CCACHE_NOHASHDIR=1 CCACHE_DEPEND=1
      CCACHE_SLOPPINESS=pch_defines,time_macros "${CORVANE_CCACHE}")
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wno-sign-conversion
                    -Wnon-virtual-dtor -Woverloaded-virtual)
add_compile_options(-fstack-protector-strong)
# No debug information but in the debug preset, and what a sanitizer's report needs: a third of the
# time to build is in it.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  add_compile_definitions(_FORTIFY_SOURCE=2)
  add_compile_options(-ffunction-sections -fdata-sections)
  add_link_options(-Wl,--gc-sections)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # Reads its precompiled headers as it needs them, which halves the time to build; GCC's cost more
  # than they save.
  set(CORVANE_PRECOMPILE ON)
  add_compile_options(-Xclang -fno-pch-timestamp)
  add_link_options(-fuse-ld=lld)
endif()
if(CORVANE_SANITIZE)
  add_compile_options(-fsanitize=${CORVANE_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  # Its look at an object takes a descriptor, and tests take them all.
  add_compile_options(-fno-sanitize=vptr)
  add_link_options(-fsanitize=${CORVANE_SANITIZE})
endif()
