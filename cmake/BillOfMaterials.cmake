# SPDX-License-Identifier: MIT
# Installs a software bill of materials in the format of SPDX 2.3: this project, the libraries of its
# plugins and the C++ runtime.

# The licences of the libraries, by the package that provides them.
set(licence_of_OpenSSL Apache-2.0)
set(licence_of_p11-kit BSD-3-Clause)

set(spdx_packages)
set(spdx_relationships)

# add_spdx_package(NAME VERSION LICENCE)
macro(add_spdx_package name version licence)
  string(MAKE_C_IDENTIFIER "${name}" id)
  string(REPLACE "_" "-" id "SPDXRef-${id}")
  list(APPEND spdx_packages "    {
      \"SPDXID\": \"${id}\", \"name\": \"${name}\", \"versionInfo\": \"${version}\",
      \"downloadLocation\": \"NOASSERTION\", \"filesAnalyzed\": false,
      \"licenseConcluded\": \"${licence}\", \"licenseDeclared\": \"${licence}\",
      \"copyrightText\": \"NOASSERTION\"
    }")
endmacro()

# add_spdx_relationship(FROM TYPE TO)
macro(add_spdx_relationship from type to)
  list(APPEND spdx_relationships "    {
      \"spdxElementId\": \"${from}\", \"relationshipType\": \"${type}\",
      \"relatedSpdxElement\": \"${to}\"
    }")
endmacro()

# add_spdx_library(PACKAGE): plugins/ has found the package, so its version is known there.
macro(add_spdx_library package)
  string(TOUPPER "${package}" upper)
  set(version NOASSERTION)
  foreach(variable ${package}_VERSION ${upper}_VERSION)
    get_directory_property(value DIRECTORY plugins DEFINITION ${variable})
    if(value)
      set(version "${value}")
    endif()
  endforeach()
  set(licence NOASSERTION)
  if(licence_of_${package})
    set(licence "${licence_of_${package}}")
  endif()
  add_spdx_package(${package} "${version}" "${licence}")
  add_spdx_relationship(SPDXRef-certbridge DYNAMIC_LINK ${id})
endmacro()

add_spdx_package(certbridge "${PROJECT_VERSION}" MIT)
add_spdx_relationship(SPDXRef-DOCUMENT DESCRIBES SPDXRef-certbridge)

add_spdx_package("C++ runtime of ${CMAKE_CXX_COMPILER_ID}" "${CMAKE_CXX_COMPILER_VERSION}" NOASSERTION)
if(WIN32)
  add_spdx_relationship(SPDXRef-certbridge STATIC_LINK ${id})
else()
  add_spdx_relationship(SPDXRef-certbridge DYNAMIC_LINK ${id})
endif()

if(CERTBRIDGE_PLUGINS)
  set(libraries)
  get_property(plugins DIRECTORY plugins PROPERTY BUILDSYSTEM_TARGETS)
  foreach(plugin IN LISTS plugins)
    get_target_property(linked ${plugin} LINK_LIBRARIES)
    list(FILTER linked INCLUDE REGEX "^[A-Za-z].*::")
    list(APPEND libraries ${linked})
  endforeach()
  list(FILTER libraries EXCLUDE REGEX "^(certbridge|vexil)::")
  # The targets are PACKAGE::NAME or PkgConfig::PACKAGE.
  list(TRANSFORM libraries REPLACE "^PkgConfig::|::.*" "")
  list(REMOVE_DUPLICATES libraries)
  foreach(library IN LISTS libraries)
    add_spdx_library("${library}")
  endforeach()
endif()

list(JOIN spdx_packages ",\n" spdx_packages)
list(JOIN spdx_relationships ",\n" spdx_relationships)
# SOURCE_DATE_EPOCH, if set, makes the document reproducible.
string(TIMESTAMP spdx_created "%Y-%m-%dT%H:%M:%SZ" UTC)
string(UUID spdx_namespace NAMESPACE 6ba7b810-9dad-11d1-80b4-00c04fd430c8 TYPE SHA1
  NAME "${spdx_packages}${CMAKE_SYSTEM_NAME}${CMAKE_SYSTEM_PROCESSOR}")
file(WRITE "${PROJECT_BINARY_DIR}/certbridge.spdx.json" "{
  \"spdxVersion\": \"SPDX-2.3\", \"dataLicense\": \"CC0-1.0\", \"SPDXID\": \"SPDXRef-DOCUMENT\",
  \"name\": \"certbridge-${PROJECT_VERSION}\", \"documentNamespace\": \"urn:uuid:${spdx_namespace}\",
  \"creationInfo\": {
    \"created\": \"${spdx_created}\", \"creators\": [\"Tool: CMake-${CMAKE_VERSION}\"]
  },
  \"packages\": [
${spdx_packages}
  ],
  \"relationships\": [
${spdx_relationships}
  ]
}
")
install(FILES "${PROJECT_BINARY_DIR}/certbridge.spdx.json"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)
