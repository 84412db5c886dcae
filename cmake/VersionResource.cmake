# SPDX-License-Identifier: MIT
# add_version_resource(TARGET DESCRIPTION): the version and description that Windows shows for the file of
# an executable. No effect on other systems.
if(WIN32)
  enable_language(RC)
endif()

function(add_version_resource target description)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(name ${target} OUTPUT_NAME)
  if(NOT name)
    set(name ${target})
  endif()
  set(resource "${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/version.rc.in" "${resource}" @ONLY)
  target_sources(${target} PRIVATE "${resource}")
endfunction()
