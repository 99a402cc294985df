# Libraries, headers, CMake package and pkg-config file. Components: runtime, dev, python, tools; where the library is built
# on the simulated master also that (simulation, simulation_dev), and the library once more (sim) in a folder of its own, for
# machines where the real master's has the usual place.
include(CMakePackageConfigHelpers)

# The installed file finds the libraries beside it from its own place, so that a prefix can be moved; under /usr the loader
# finds them by itself. The link path is for the real master, which usually lives under a prefix of its own.
function(set_search_path target path)
  set_target_properties(${target} PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
  if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set_target_properties(${target} PROPERTIES INSTALL_RPATH ${path})
  endif()
endfunction()

function(install_library target component dev_component export path)
  set_search_path(${target} "${path}")
  install(TARGETS ${target} EXPORT ${export}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT ${dev_component}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endfunction()

set(library_path "\$ORIGIN")
if(TARGET ethercat_simulation)
  string(APPEND library_path ":\$ORIGIN/..") # from the folder of sim
endif()
install_library(igh_master runtime dev IghMasterTargets "${library_path}")
install(FILES ${PROJECT_SOURCE_DIR}/include/igh_master.h ${PROJECT_SOURCE_DIR}/include/igh_master.hpp
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)

set(platform_note "")
if(TARGET ethercat_simulation)
  set(platform_note " (built on the simulated master: drives no hardware)")
  # <ecrt.h> of the simulation stays in a folder of its own, where it cannot be taken for the real master's.
  set(simulation_headers ${CMAKE_INSTALL_INCLUDEDIR}/ethercat_simulation)
  set_target_properties(ethercat_simulation PROPERTIES EXPORT_NAME simulation)
  target_include_directories(ethercat_simulation INTERFACE $<INSTALL_INTERFACE:${simulation_headers}/platform>)
  install_library(ethercat_simulation simulation simulation_dev IghMasterSimulationTargets "\$ORIGIN")
  install(FILES ${PROJECT_SOURCE_DIR}/simulation/include/ethercat_simulation.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT simulation_dev)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/simulation/include/ethercat_simulation/ DESTINATION ${simulation_headers} COMPONENT simulation_dev)
  install(FILES ${PROJECT_SOURCE_DIR}/simulation/include/ecrt.h DESTINATION ${simulation_headers}/platform COMPONENT simulation_dev)
  set(IGH_MASTER_SIM_DIR igh-master-sim)
  install(TARGETS igh_master LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${IGH_MASTER_SIM_DIR}
    COMPONENT sim NAMELINK_COMPONENT simulation_dev)
endif()

if(TARGET igh_bus)
  file(RELATIVE_PATH libraries_from_programs ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_search_path(igh_bus "\$ORIGIN/${libraries_from_programs}")
  install(TARGETS igh_bus RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/IghMaster)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/IghMasterConfig.cmake.in ${PROJECT_BINARY_DIR}/IghMasterConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/IghMasterConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT IghMasterTargets NAMESPACE IghMaster:: DESTINATION ${package_dir} COMPONENT dev)
if(TARGET ethercat_simulation)
  file(RELATIVE_PATH includes_from_package ${CMAKE_INSTALL_FULL_LIBDIR}/cmake/IghMaster ${CMAKE_INSTALL_FULL_INCLUDEDIR})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/IghMasterSim.cmake.in ${PROJECT_BINARY_DIR}/IghMasterSim.cmake @ONLY)
  install(EXPORT IghMasterSimulationTargets NAMESPACE IghMaster:: DESTINATION ${package_dir} COMPONENT simulation_dev)
  install(FILES ${PROJECT_BINARY_DIR}/IghMasterSim.cmake DESTINATION ${package_dir} COMPONENT simulation_dev)
endif()
install(FILES ${PROJECT_BINARY_DIR}/IghMasterConfig.cmake ${PROJECT_BINARY_DIR}/IghMasterConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT dev)

# The prefix is where the file lies, so the file may be moved with it. Absolute folders, which some distributions
# configure, cannot move and stand as they are.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
cmake_path(APPEND pc_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND pc_includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(${CMAKE_CURRENT_LIST_DIR}/igh_master.pc.in ${PROJECT_BINARY_DIR}/igh_master.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/igh_master.pc DESTINATION ${pkgconfig_dir} COMPONENT dev)
if(TARGET ethercat_simulation)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/igh_master_sim.pc.in ${PROJECT_BINARY_DIR}/igh_master_sim.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/igh_master_sim.pc DESTINATION ${pkgconfig_dir} COMPONENT simulation_dev)
endif()

# Debian's place for packages, and below another prefix the same. From there it finds a library that the loader does not.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/python/igh_master DESTINATION lib/python3/dist-packages COMPONENT python
  PATTERN __pycache__ EXCLUDE)

install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev PATTERN CMakeLists.txt EXCLUDE)
# Debian packages carry the licence in a form of their own.
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT license)
