# The build stamp that the log's header shows: taken when a build directory is first configured, or
# from SOURCE_DATE_EPOCH.
string(TIMESTAMP stampDate "%b %d %Y" UTC)
string(REGEX REPLACE " 0([0-9]) " "  \\1 " stampDate "${stampDate}")
string(TIMESTAMP stampTime "%H:%M:%S" UTC)
set(CORVANE_BUILD_DATE "${stampDate}" CACHE STRING "Build date in the log's header")
set(CORVANE_BUILD_TIME "${stampTime}" CACHE STRING "Build time in the log's header")
set_source_files_properties("${CMAKE_SOURCE_DIR}/agent/log/build_stamp.cpp" PROPERTIES
  COMPILE_DEFINITIONS
  "CORVANE_BUILD_DATE=\"${CORVANE_BUILD_DATE}\";CORVANE_BUILD_TIME=\"${CORVANE_BUILD_TIME}\"")
