# The pages of section 3 come from the comments of the header and bus-file(5) from the document, so neither can fall behind.
set(manual_dir ${CMAKE_CURRENT_BINARY_DIR}/man)
file(MAKE_DIRECTORY ${manual_dir}/man3)
set(page_source "igh_master ${PROJECT_VERSION}")
configure_file(man/igh_bus.1.in ${manual_dir}/igh_bus.1 @ONLY)
if(TARGET igh_bus)
  install(FILES ${manual_dir}/igh_bus.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()

find_package(Python3 COMPONENTS Interpreter)
if(NOT Python3_FOUND)
  message(STATUS "Without Python 3 the manual pages of section 3 and bus-file(5) are left out")
  return()
endif()

set(man_scripts ${CMAKE_CURRENT_SOURCE_DIR}/man)
add_custom_command(OUTPUT ${manual_dir}/man3/igh_master.3
  COMMAND Python3::Interpreter -B ${man_scripts}/header_page.py ${PROJECT_SOURCE_DIR}/include/igh_master.h ${manual_dir}/man3
    ${IGH_MASTER_DATE} ${page_source}
  DEPENDS ${man_scripts}/header_page.py ${man_scripts}/roff.py ${PROJECT_SOURCE_DIR}/include/igh_master.h VERBATIM)
install(DIRECTORY ${manual_dir}/man3 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT dev)
set(pages ${manual_dir}/man3/igh_master.3)

if(TARGET ethercat_simulation)
  set(document ${PROJECT_SOURCE_DIR}/docs/simulated-master.md)
  add_custom_command(OUTPUT ${manual_dir}/bus-file.5
    COMMAND Python3::Interpreter -B ${man_scripts}/markdown_page.py ${document} ${manual_dir}/bus-file.5 bus-file 5
      ${IGH_MASTER_DATE} ${page_source} "description of a simulated EtherCAT bus" "A bus from a file" "A bus in C++" "What it does not do"
    DEPENDS ${man_scripts}/markdown_page.py ${man_scripts}/roff.py ${document} VERBATIM)
  install(FILES ${manual_dir}/bus-file.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT tools)
  list(APPEND pages ${manual_dir}/bus-file.5)
endif()
add_custom_target(manual ALL DEPENDS ${pages})
