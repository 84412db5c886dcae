# SPDX-License-Identifier: MIT
# install_documents(COMPONENT FILE...): installs Markdown documents into one folder. Links between them
# are adapted to it; links to files that are not installed become plain text.
function(install_documents component)
  set(documents)
  foreach(file IN LISTS ARGN)
    get_filename_component(name "${file}" NAME)
    set(document "${PROJECT_BINARY_DIR}/documents/${name}")
    list(APPEND documents "${document}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${file}")
    file(READ "${PROJECT_SOURCE_DIR}/${file}" text)
    # "@" marks the links that remain.
    foreach(target IN LISTS ARGN)
      get_filename_component(name "${target}" NAME)
      string(REGEX REPLACE "\\]\\((\\.\\./|docs/)?${name}" "](@${name}" text "${text}")
    endforeach()
    string(REGEX REPLACE "\\[([^]]+)\\]\\([^@#h)][^)]*\\)" "\\1" text "${text}")
    string(REPLACE "](@" "](" text "${text}")
    file(WRITE "${document}" "${text}")
  endforeach()
  install(FILES ${documents} DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT ${component})
endfunction()
