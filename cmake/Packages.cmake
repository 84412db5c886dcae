# Configures `cpack`: two .deb packages, or a .zip for Windows.
set(CERTBRIDGE_CONTACT "certbridge authors <maintainers@certbridge.example>" CACHE STRING
  "Maintainer that the packages name")
set(CPACK_PACKAGE_CONTACT "${CERTBRIDGE_CONTACT}")
set(CPACK_PACKAGE_VENDOR "certbridge authors")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/debian_files.cmake")
  set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
  set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
  set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)

  set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME certbridge)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION utils)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "bridge between JSON and a certificate plugin
 Reads one JSON request from standard input, hands it to a certificate plugin
 in a dynamic library, and writes the answer as one line of JSON to standard
 output.")
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME certbridge-dev)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "headers and static library of certbridge
 What it takes to write a certificate plugin for certbridge, and the support
 library vexil: JSON, Unicode strings, byte streams and dynamic libraries.")
endif()
include(CPack)
