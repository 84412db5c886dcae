# SPDX-License-Identifier: MIT
# Three components: runtime, the programs; plugins; and development, the files needed to write a plugin
# or to use the library.
include(CMakePackageConfigHelpers)
include(Documents)

# install_manual_pages(COMPONENT FILE...): as plain text on Windows.
function(install_manual_pages component)
  if(NOT WIN32)
    foreach(page IN LISTS ARGN)
      string(REGEX MATCH "[0-9]$" section "${page}")
      install(FILES ${page} DESTINATION "${CMAKE_INSTALL_MANDIR}/man${section}" COMPONENT ${component})
    endforeach()
    return()
  endif()
  find_program(GROFF groff NO_CMAKE_FIND_ROOT_PATH)
  if(NOT GROFF)
    message(STATUS "groff not found: the manual pages are not installed")
    return()
  endif()
  foreach(page IN LISTS ARGN)
    get_filename_component(name "${page}" NAME_WLE)
    set(text "${PROJECT_BINARY_DIR}/${name}.txt")
    execute_process(COMMAND "${GROFF}" -Tascii -P-cbou -man "${PROJECT_SOURCE_DIR}/${page}"
      OUTPUT_FILE "${text}" COMMAND_ERROR_IS_FATAL ANY)
    install(FILES "${text}" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT ${component})
  endforeach()
endfunction()

# install_converted_pages(COMPONENT DOCUMENT...): docs/DOCUMENT.md as the manual page
# certbridge-DOCUMENT(7). The conversion needs Python; without it the page is not installed.
function(install_converted_pages component)
  find_package(Python3 3.9 COMPONENTS Interpreter)
  if(WIN32 OR NOT Python3_FOUND)
    return()
  endif()
  list(TRANSFORM ARGN REPLACE "(.+)" "\\1.md=certbridge-\\1" OUTPUT_VARIABLE links)
  foreach(name IN LISTS ARGN)
    set(document "${PROJECT_SOURCE_DIR}/docs/${name}.md")
    set(page "${PROJECT_BINARY_DIR}/documents/certbridge-${name}.7")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${document}")
    execute_process(COMMAND "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/scripts/make_manual_page.py"
      "${document}" certbridge-${name} ${PROJECT_VERSION} "${page}" ${links}
      COMMAND_ERROR_IS_FATAL ANY)
    install(FILES "${page}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man7" COMPONENT ${component})
  endforeach()
endfunction()

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/certbridge")

install(TARGETS certbridge certbridge_check EXPORT certbridge-targets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)
# One component for all documents: links must not lead into a component that is not installed.
install_documents(runtime
  CHANGELOG.md
  SECURITY.md
  docs/plugin-authors.md
  docs/plugins.md
  docs/protocol.md
  docs/reference.md
  docs/windows.md)
include(BillOfMaterials)
install_manual_pages(runtime docs/certbridge.1 docs/certbridge-check.1)
install_converted_pages(runtime protocol plugins plugin-authors)
if(NOT WIN32)
  install(FILES check/completions/certbridge-check.bash RENAME certbridge-check
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT runtime)
  install(FILES check/completions/_certbridge-check
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" COMPONENT runtime)
  install(FILES check/completions/certbridge-check.fish
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT runtime)
endif()

# Plugins are loaded by path. On Windows they are installed beside the program.
if(WIN32)
  set(plugin_folder "${CMAKE_INSTALL_BINDIR}")
else()
  set(plugin_folder "${CMAKE_INSTALL_LIBDIR}/certbridge")
endif()
if(CERTBRIDGE_PLUGINS)
  get_property(plugins DIRECTORY plugins PROPERTY BUILDSYSTEM_TARGETS)
  foreach(plugin IN LISTS plugins)
    get_target_property(type ${plugin} TYPE)
    if(type STREQUAL MODULE_LIBRARY)
      install(TARGETS ${plugin} LIBRARY DESTINATION "${plugin_folder}" COMPONENT plugins)
    endif()
  endforeach()
endif()

install(TARGETS ${vexil_library} EXPORT vexil-targets
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS certbridge_plugin EXPORT certbridge-targets
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
# The public headers; the others are private.
install(FILES certbridge/plugin.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/certbridge" COMPONENT development)
install(FILES
  vexil/assert.h
  vexil/dynamic_library.h
  vexil/exceptions.h
  vexil/export.h
  vexil/format_to_memory.h
  vexil/non_copyable.h
  vexil/streams.h
  vexil/unicode_strings.h
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/vexil" COMPONENT development)
install(FILES
  vexil/json/json_parser.h
  vexil/json/json_tokenizer.h
  vexil/json/json_value.h
  vexil/json/json_writer.h
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/vexil/json" COMPONENT development)

install(FILES
  vexil/numbers/big_unsigned.h
  vexil/numbers/decimal_conversion.h
  vexil/numbers/powers_of_five.h
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/vexil/numbers" COMPONENT development)

# Not with the documents, which minimal systems do not install.
install(DIRECTORY examples/plugin_template
  DESTINATION "${CMAKE_INSTALL_DATADIR}/certbridge" COMPONENT development)

install(EXPORT vexil-targets NAMESPACE vexil::
  DESTINATION "${package_folder}" COMPONENT development)
install(EXPORT certbridge-targets NAMESPACE certbridge::
  DESTINATION "${package_folder}" COMPONENT development)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/certbridge-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
configure_package_config_file(cmake/certbridge-config.cmake.in
  "${PROJECT_BINARY_DIR}/certbridge-config.cmake"
  INSTALL_DESTINATION "${package_folder}" PATH_VARS plugin_folder)
install(FILES
  "${PROJECT_BINARY_DIR}/certbridge-config.cmake"
  "${PROJECT_BINARY_DIR}/certbridge-config-version.cmake"
  DESTINATION "${package_folder}" COMPONENT development)

# A path relative to the file keeps the tree relocatable.
file(RELATIVE_PATH path_to_prefix
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
set(link_options "-lvexil")
foreach(library IN LISTS CMAKE_DL_LIBS)
  string(APPEND link_options " -l${library}")
endforeach()
configure_file(cmake/certbridge.pc.in certbridge.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/certbridge.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
