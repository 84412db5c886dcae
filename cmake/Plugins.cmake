# SPDX-License-Identifier: MIT
# A unique symbol would keep a plugin mapped after it has been unloaded. All code is compiled without,
# because plugins contain the library.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT WIN32)
  add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>")
endif()

# add_plugin(NAME SOURCE...): a library for certbridge to load, NAME.so or NAME.dll.
function(add_plugin name)
  add_library(${name} MODULE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "")
  target_link_libraries(${name} PRIVATE certbridge::plugin certbridge_warnings certbridge_hardening)
  if(WIN32)
    target_sources(${name} PRIVATE "${PROJECT_SOURCE_DIR}/examples/plugin.def")
  endif()
endfunction()
