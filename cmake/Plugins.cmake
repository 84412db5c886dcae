# SPDX-License-Identifier: MIT
# add_plugin(NAME SOURCE...): a library for certbridge to load, NAME.so or NAME.dll.
function(add_plugin name)
  add_library(${name} MODULE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "")
  target_link_libraries(${name} PRIVATE certbridge::plugin certbridge_warnings certbridge_hardening)
  if(WIN32)
    target_sources(${name} PRIVATE "${PROJECT_SOURCE_DIR}/examples/plugin.def")
  endif()
endfunction()
