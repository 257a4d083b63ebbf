# The page's HTML, CSS and JavaScript as a source of the library "page", made anew when one changes.
set(folder "${CMAKE_SOURCE_DIR}/common/page")
set(source "${CMAKE_BINARY_DIR}/page_text.cpp")
file(GLOB parts CONFIGURE_DEPENDS "${folder}/page.*" "${folder}/script/*.js")
add_custom_command(OUTPUT "${source}"
  COMMAND "${CMAKE_COMMAND}" -DFOLDER=${folder} -DOUTPUT=${source} -P "${CMAKE_SOURCE_DIR}/cmake/embed_page.cmake"
  DEPENDS ${parts} "${CMAKE_SOURCE_DIR}/cmake/embed_page.cmake" VERBATIM)
target_sources(page PRIVATE "${source}")
set_source_files_properties("${source}" PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
