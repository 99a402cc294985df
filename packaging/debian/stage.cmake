# Run by cpack between installation and packing: symbols, licence, change log, compressed manual pages, what lintian objects to.
file(READ ${CPACK_IGH_MASTER_SOURCE}/LICENSE licence)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)\n\n(.*[^\n])" ignored "${licence}")
set(holder ${CMAKE_MATCH_1})
set(terms "\n${CMAKE_MATCH_2}")
string(REPLACE "\n\n" "\n.\n" terms "${terms}")
string(REPLACE "\n" "\n " terms "${terms}")

function(run output)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE text OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(${output} "${text}" PARENT_SCOPE)
endfunction()
run(day date -u -R -d ${CPACK_IGH_MASTER_DATE})

# dpkg-shlibdeps looks for libraries, and dpkg-gensymbols into them, as on the machine that they are for.
set(gensymbols_options "")
if(CPACK_IGH_MASTER_ARCHITECTURE)
  set(ENV{DEB_HOST_ARCH} ${CPACK_IGH_MASTER_ARCHITECTURE})
  set(gensymbols_options -a${CPACK_IGH_MASTER_ARCHITECTURE})
endif()

# The exported names, in the order of Debian's file: the rules for a library's names stand in this folder under its package.
# A name that no rule has, or a rule without a name, ends the packing.
function(list_symbols component package library)
  set(work ${CPACK_IGH_MASTER_BUILD}/debian/${component})
  file(MAKE_DIRECTORY ${work}/debian)
  file(WRITE ${work}/debian/control "Source: ${CPACK_PACKAGE_NAME}\n\nPackage: ${package}\nArchitecture: any\n")
  set(rules ${CPACK_IGH_MASTER_SOURCE}/packaging/debian/${package}.symbols)
  execute_process(WORKING_DIRECTORY ${work} COMMAND_ERROR_IS_FATAL ANY
    COMMAND dpkg-gensymbols -c4 -p${package} -v${CPACK_PACKAGE_VERSION} -I${rules} -e${library} -O${work}/symbols ${gensymbols_options})
endfunction()

function(write_overrides root package)
  set(overrides "")
  if(package MATCHES "^libigh-master(-sim)?1$")
    file(READ ${CPACK_IGH_MASTER_SOURCE}/packaging/debian/library.lintian-overrides overrides)
  endif()
  if(CPACK_IGH_MASTER_MASTER_DIR AND package MATCHES "libigh-master1|igh-master-tools")
    string(APPEND overrides "# The IgH master is no part of Debian: nothing else finds its library under the prefix where it was installed.\n"
      "${package}: custom-library-search-path *RUNPATH ${CPACK_IGH_MASTER_MASTER_DIR}*\n")
  endif()
  if(overrides)
    file(WRITE ${root}/share/lintian/overrides/${package} "${overrides}")
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
  run(ignored gzip -9n ${documents}/changelog ${pages})
  file(GLOB_RECURSE binaries LIST_DIRECTORIES OFF ${root}/bin/* ${root}/lib/*.so.*.*.*)
  if(binaries)
    run(ignored ${CPACK_IGH_MASTER_STRIP} --remove-section=.comment --remove-section=.note ${binaries})
  endif()
  write_overrides(${root} ${package})
  if(package MATCHES "^libigh-master1$|^libethercat-simulation1$")
    file(GLOB library ${root}/${CPACK_IGH_MASTER_LIBDIR}/*.so.*.*.*)
    list_symbols(${component} ${package} ${library})
  endif()
endforeach()
