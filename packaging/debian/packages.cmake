# cpack -G DEB: one package per component. Names follow the sonames.
set(IGH_MASTER_MAINTAINER "The igh_master authors <igh-master@example.org>" CACHE STRING "Maintainer of the Debian packages")

set(deb_version ${PROJECT_VERSION})
set(CPACK_COMPONENTS_ALL runtime dev python)
set(simulation_depends "")
set(deb_platform "It drives the bus through the IgH EtherCAT Master.")
if(TARGET ethercat_simulation)
  # Older than the same version for the real master, which so replaces it.
  string(APPEND deb_version "~simulated")
  set(deb_platform "This build runs on the simulated master: it drives no hardware.")
  list(APPEND CPACK_COMPONENTS_ALL simulation simulation_dev sim)
  set(simulation_depends "libethercat-simulation1 (= ${deb_version})")
endif()
if(TARGET igh_bus)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(runtime_depends "libigh-master1 (= ${deb_version})")

set(CPACK_PACKAGE_NAME igh-master)
set(CPACK_PACKAGE_VERSION ${deb_version})
set(CPACK_PACKAGE_CONTACT ${IGH_MASTER_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_GENERATOR DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/simulation)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SOURCE igh-master)
set(CPACK_IGH_MASTER_ARCHITECTURE "") # of this machine
if(CMAKE_CROSSCOMPILING)
  execute_process(COMMAND dpkg-architecture -t${CMAKE_LIBRARY_ARCHITECTURE} -f -qDEB_HOST_ARCH ERROR_QUIET
    OUTPUT_VARIABLE CPACK_IGH_MASTER_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CPACK_IGH_MASTER_ARCHITECTURE})
endif()
# Each package has a summary of its own; without this the project's would stand before it.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

macro(describe component package summary text)
  set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${package})
  set(CPACK_COMPONENT_${component}_DESCRIPTION "${summary}\n${text}\n${deb_platform}")
endmacro()

describe(RUNTIME libigh-master1 "EtherCAT buses for real-time applications"
  "libigh_master.so loads device-description files, configures the slaves on\nan EtherCAT bus and exchanges process data once per call.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS ${simulation_depends})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/runtime/symbols ${CMAKE_CURRENT_LIST_DIR}/triggers)

describe(SIMULATION libethercat-simulation1 "Simulated IgH EtherCAT Master"
  "libethercat_simulation.so stands in for the user library of the IgH EtherCAT\nMaster, for tests and development without hardware.")
set(CPACK_DEBIAN_SIMULATION_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/simulation/symbols ${CMAKE_CURRENT_LIST_DIR}/triggers)

describe(SIMULATION_DEV libethercat-simulation-dev "Simulated IgH EtherCAT Master (development files)"
  "Headers of its control side, for tests that build buses of their own, and\nwhat links a program with libigh_master.so on the simulated master.")
set(CPACK_DEBIAN_SIMULATION_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_SIMULATION_DEV_PACKAGE_DEPENDS "${simulation_depends}, libigh-master-sim1 (= ${deb_version})")
set(CPACK_DEBIAN_SIMULATION_DEV_PACKAGE_RECOMMENDS libigh-master-dev) # of either kind; that of this one depends on it

describe(SIM libigh-master-sim1 "EtherCAT buses for real-time applications, on the simulated master"
  "libigh_master.so in a folder of its own, beside that of libigh-master1 for\nthe real master.")
set(CPACK_DEBIAN_SIM_PACKAGE_DEPENDS ${simulation_depends})

describe(DEV libigh-master-dev "EtherCAT buses for real-time applications (development files)"
  "Header, CMake package, pkg-config file, manual pages, documents and examples\nof libigh_master.so.")
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS ${runtime_depends})
if(TARGET ethercat_simulation)
  string(APPEND CPACK_DEBIAN_DEV_PACKAGE_DEPENDS ", libethercat-simulation-dev (= ${deb_version})")
endif()

describe(TOOLS igh-master-tools "EtherCAT buses from the command line"
  "igh_bus looks into device-description files, lists and runs EtherCAT buses,\nand reaches objects and registers of their slaves.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS ${runtime_depends})

describe(PYTHON python3-igh-master "EtherCAT buses from Python 3"
  "The Python package igh_master: buses of libigh_master.so for commissioning,\ntests and trying things out.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${runtime_depends}, python3 (>= 3.11)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/python/postinst ${CMAKE_CURRENT_LIST_DIR}/python/prerm)

# What Debian wants in every package is added behind the installation.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/stage.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/repack.cmake)
set(CPACK_IGH_MASTER_SOURCE ${PROJECT_SOURCE_DIR})
set(CPACK_IGH_MASTER_DATE ${IGH_MASTER_DATE})
set(CPACK_IGH_MASTER_DOCDIR ${CMAKE_INSTALL_DOCDIR})
set(CPACK_IGH_MASTER_LIBDIR ${CMAKE_INSTALL_LIBDIR})
set(CPACK_IGH_MASTER_BUILD ${PROJECT_BINARY_DIR})
set(CPACK_IGH_MASTER_STRIP ${CMAKE_STRIP})
# The real master under a prefix of its own.
set(CPACK_IGH_MASTER_MASTER_DIR "")
if(NOT TARGET ethercat_simulation)
  get_filename_component(master_dir ${ETHERCAT_LIBRARY} DIRECTORY)
  if(NOT master_dir IN_LIST CMAKE_C_IMPLICIT_LINK_DIRECTORIES)
    set(CPACK_IGH_MASTER_MASTER_DIR ${master_dir})
  endif()
endif()
include(CPack)
