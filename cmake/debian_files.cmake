# Runs in cpack between staging and packing: gives the documents the names and the compression that
# Debian wants of every package.
find_program(gzip gzip REQUIRED)

# The repository is the upstream; this entry is about the package made of it.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(version "${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
set(entry "certbridge (${version}) unstable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")

set(documents "${CPACK_PACKAGING_INSTALL_PREFIX}/share/doc")
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" upper)
  set(root "${CPACK_TEMPORARY_DIRECTORY}/${component}")
  set(folder "${root}${documents}/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
  file(MAKE_DIRECTORY "${folder}")
  file(REMOVE "${folder}/LICENSE")
  configure_file("${CPACK_RESOURCE_FILE_LICENSE}" "${folder}/copyright" COPYONLY)
  file(WRITE "${folder}/changelog.Debian" "${entry}")
  if(EXISTS "${folder}/CHANGELOG.md")
    file(RENAME "${folder}/CHANGELOG.md" "${folder}/changelog")
  endif()
  file(GLOB_RECURSE texts "${root}/*.1" "${folder}/changelog*")
  execute_process(COMMAND "${gzip}" -9n ${texts} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
