# One executable per source file matching <dir>/*<SUFFIX>.cpp, named after the
# file. A file whose name does not start with "host" or with one of the
# subsystems being built is skipped, so a partial build keeps its own tests.
# Files of the layers above the library (offscreen_*, plot_*) link their own
# target as well and are skipped when that target is not built.
#   qvgui_add_per_file_targets(SUFFIX _test LIBRARIES ... [INCLUDES ...]
#                              [OPTIONS ...] [DISCOVER_TESTS])
function(qvgui_add_per_file_targets)
  cmake_parse_arguments(ARG "DISCOVER_TESTS" "SUFFIX" "LIBRARIES;INCLUDES;OPTIONS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*${ARG_SUFFIX}.cpp)
  foreach(src IN LISTS sources)
    get_filename_component(name ${src} NAME_WE)
    string(REGEX MATCH "^[a-z]+" prefix ${name})
    set(layer_target "")
    if(prefix STREQUAL "offscreen" OR prefix STREQUAL "plot")
      set(layer_target qvgui_${prefix})
      if(NOT TARGET ${layer_target})
        continue()
      endif()
    elseif(NOT prefix STREQUAL "host" AND NOT prefix IN_LIST QVGUI_SUBSYSTEMS)
      continue()
    endif()
    add_executable(${name} ${src})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${ARG_INCLUDES})
    target_link_libraries(${name} PRIVATE ${layer_target} ${ARG_LIBRARIES})
    if(ARG_OPTIONS)
      target_compile_options(${name} PRIVATE ${ARG_OPTIONS})
      target_link_options(${name} PRIVATE ${ARG_OPTIONS})
    endif()
    if(ARG_DISCOVER_TESTS)
      gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600)
    endif()
  endforeach()
endfunction()
