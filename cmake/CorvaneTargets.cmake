# What nearly every source reads, precompiled where that saves time.
set(CORVANE_COMMON_HEADERS <algorithm> <array> <atomic> <chrono> <cstdint> <cstring> <filesystem>
    <functional> <map> <memory> <mutex> <optional> <span> <string> <string_view> <utility> <vector>)

# corvane_precompile(TARGET headers...)
function(corvane_precompile target)
  if(CORVANE_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${CORVANE_COMMON_HEADERS} ${ARGN})
  endif()
endfunction()

# corvane_unity(TARGET)
# Compiles up to eight sources of a folder as one, which takes less than half the time. A name in an
# unnamed namespace is therefore unique within its folder.
function(corvane_unity target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${CORVANE_UNITY} UNITY_BUILD_MODE GROUP)
  get_target_property(sources ${target} SOURCES)
  foreach(source ${sources})
    cmake_path(GET source PARENT_PATH folder)
    cmake_path(RELATIVE_PATH folder BASE_DIRECTORY "${CMAKE_SOURCE_DIR}")
    string(MAKE_C_IDENTIFIER "${folder}" folder)
    math(EXPR number "${count_${folder}} + 0")
    math(EXPR group "${number} / 8")
    math(EXPR count_${folder} "${number} + 1")
    set_source_files_properties("${source}" PROPERTIES UNITY_GROUP ${folder}_${group})
  endforeach()
endfunction()

# What corvane_library does for each of its targets, with its arguments.
macro(corvane_objects target)
  add_library(${target} ${ARGN})
  target_include_directories(${target} PUBLIC "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${target} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
  corvane_precompile(${target} ${ARG_PRECOMPILE})
  corvane_unity(${target})
endmacro()

# corvane_library(NAME FOLDER dirs... [EXCEPT dir] [SMALL dirs...] [PUBLIC libs...]
#                 [PRIVATE libs...] [PRECOMPILE headers...])
# A static library of every .cpp below the folders, but for a program's main.cpp; includes start at
# the root of the tree. In the SMALL ones nothing waits for the code, so its size goes before its
# speed.
function(corvane_library name)
  cmake_parse_arguments(ARG "" "EXCEPT" "FOLDER;SMALL;PUBLIC;PRIVATE;PRECOMPILE" ${ARGN})
  list(TRANSFORM ARG_FOLDER REPLACE "(.+)" "${CMAKE_SOURCE_DIR}/\\1/*.cpp" OUTPUT_VARIABLE patterns)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${patterns})
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  if(ARG_EXCEPT)
    list(FILTER sources EXCLUDE REGEX "^${CMAKE_SOURCE_DIR}/${ARG_EXCEPT}/")
  endif()
  if(ARG_SMALL AND CMAKE_BUILD_TYPE STREQUAL "Release")
    set(small ${sources})
    list(JOIN ARG_SMALL "|" folders)
    list(FILTER small INCLUDE REGEX "^${CMAKE_SOURCE_DIR}/(${folders})/")
    list(REMOVE_ITEM sources ${small})
    corvane_objects(${name}_small OBJECT ${small})
    target_compile_options(${name}_small PRIVATE -Os)
    set(objects $<TARGET_OBJECTS:${name}_small>)
  endif()
  corvane_objects(${name} STATIC ${sources} ${objects})
endfunction()

# corvane_program(NAME SOURCE file LIBRARIES libs...)
function(corvane_program name)
  cmake_parse_arguments(ARG "" "SOURCE" "LIBRARIES" ${ARGN})
  add_executable(${name} "${CMAKE_SOURCE_DIR}/${ARG_SOURCE}")
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES})
  target_compile_definitions(${name} PRIVATE CORVANE_VERSION="${PROJECT_VERSION}")
  target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-Os>)
endfunction()

# corvane_tests(NAME FOLDER dirs... LIBRARIES libs... [PARTS n])
# One test program of every .cpp below the folders. CTest runs it in `n` parts, each a process with
# its share of the cases.
function(corvane_tests name)
  cmake_parse_arguments(ARG "" "PARTS" "FOLDER;LIBRARIES" ${ARGN})
  list(TRANSFORM ARG_FOLDER REPLACE "(.+)" "${CMAKE_CURRENT_SOURCE_DIR}/\\1/*.cpp"
       OUTPUT_VARIABLE patterns)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${patterns})
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} test_support GTest::gtest GTest::gmock)
  if(CORVANE_PRECOMPILE)
    target_precompile_headers(${name} REUSE_FROM test_support)
  endif()
  corvane_unity(${name})
  if(NOT ARG_PARTS)
    set(ARG_PARTS 1)
  endif()
  math(EXPR last "${ARG_PARTS} - 1")
  # Random cases a property; a sanitizer, which is slower by far, looks at other things.
  set(rounds 100)
  if(CORVANE_SANITIZE)
    set(rounds 20)
  endif()
  foreach(part RANGE ${last})
    add_test(NAME ${name}_${part} COMMAND ${name} --gtest_brief=1)
    set_tests_properties(${name}_${part} PROPERTIES TIMEOUT 900 ENVIRONMENT
      "GTEST_TOTAL_SHARDS=${ARG_PARTS};GTEST_SHARD_INDEX=${part};RC_PARAMS=max_success=${rounds}")
  endforeach()
endfunction()
