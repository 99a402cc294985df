# Run by cpack between installation and packing: licence, change log, compressed manual pages.
file(READ ${CPACK_IGH_MASTER_SOURCE}/LICENSE licence)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)\n\n(.*[^\n])" ignored "${licence}")
set(holder ${CMAKE_MATCH_1})
set(terms "\n${CMAKE_MATCH_2}")
string(REPLACE "\n\n" "\n.\n" terms "${terms}")
string(REPLACE "\n" "\n " terms "${terms}")
execute_process(COMMAND date -u -R -d ${CPACK_IGH_MASTER_DATE} OUTPUT_VARIABLE day OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

function(gzip)
  if(ARGN)
    execute_process(COMMAND gzip -9n ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
  endif()
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr)
  set(documents ${root}/share/doc/${package})
  if(EXISTS ${root}/${CPACK_IGH_MASTER_DOCDIR})
    file(RENAME ${root}/${CPACK_IGH_MASTER_DOCDIR} ${documents})
  endif()

  file(WRITE ${documents}/copyright
    "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n\nFiles: *\nCopyright: ${holder}\nLicense: Expat${terms}\n")
  file(WRITE ${documents}/changelog
    "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
    "  * What changed in this version stands in CHANGELOG.md of libigh-master-dev.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${day}\n")
  file(GLOB_RECURSE pages ${root}/share/man/*)
  gzip(${documents}/changelog ${pages})
endforeach()
