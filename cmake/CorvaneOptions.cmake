option(CORVANE_TESTS "Build the tests" ON)
option(CORVANE_BENCH "Build the benchmarks, which share the tests' wire support" ON)
option(CORVANE_FUZZ "Build the fuzz targets (Clang only)" OFF)
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
      CCACHE_NOHASHDIR=1 "${CORVANE_CCACHE}")
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wno-sign-conversion
                    -Wnon-virtual-dtor -Woverloaded-virtual)
add_compile_options(-fstack-protector-strong)
if(CORVANE_SANITIZE)
  # What a report needs, and no more: these builds are made for every check.
  set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g1 -DNDEBUG")
elseif(CMAKE_BUILD_TYPE MATCHES "Rel")
  add_compile_definitions(_FORTIFY_SOURCE=2)
  add_compile_options(-ffunction-sections -fdata-sections)
  add_link_options(-Wl,--gc-sections)
endif()
if(CORVANE_SANITIZE)
  add_compile_options(-fsanitize=${CORVANE_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  # Its look at an object takes a descriptor, and tests take them all.
  add_compile_options(-fno-sanitize=vptr)
  add_link_options(-fsanitize=${CORVANE_SANITIZE})
endif()
