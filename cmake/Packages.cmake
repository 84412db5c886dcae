# SPDX-License-Identifier: MIT
# Configures `cpack` for the .zip of the Windows programs. The packages for Debian are built from
# debian/ by scripts/package.
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR ZIP)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(CPACK_SYSTEM_NAME win64)
endif()
include(CPack)
