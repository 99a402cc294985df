# Chooses the EtherCAT master that the library is built for and defines the target igh_platform: the include
# directory of <ecrt.h>, the library behind it and the link flags that route the device-file calls.
set(IGH_MASTER_PLATFORM "auto" CACHE STRING "simulation, ethercat or auto (the real master where it is found, else the simulation)")
set_property(CACHE IGH_MASTER_PLATFORM PROPERTY STRINGS auto simulation ethercat)
set(ETHERCAT_ROOT "" CACHE PATH "Prefix under which the IgH EtherCAT Master is installed")

if(NOT IGH_MASTER_PLATFORM MATCHES "^(auto|simulation|ethercat)$")
  message(FATAL_ERROR "IGH_MASTER_PLATFORM is '${IGH_MASTER_PLATFORM}': use auto, simulation or ethercat")
endif()

add_library(igh_platform INTERFACE)
set(IGH_MASTER_PLATFORM_RESOLVED "simulation")

if(NOT IGH_MASTER_PLATFORM STREQUAL "simulation")
  find_path(ETHERCAT_INCLUDE_DIR ecrt.h HINTS ${ETHERCAT_ROOT}/include /opt/etherlab/include /usr/local/etherlab/include)
  find_library(ETHERCAT_LIBRARY ethercat HINTS ${ETHERCAT_ROOT}/lib /opt/etherlab/lib /usr/local/etherlab/lib)
  if(ETHERCAT_INCLUDE_DIR AND ETHERCAT_LIBRARY)
    set(IGH_MASTER_PLATFORM_RESOLVED "ethercat")
  elseif(IGH_MASTER_PLATFORM STREQUAL "ethercat")
    message(FATAL_ERROR "The IgH EtherCAT Master was not found (header: ${ETHERCAT_INCLUDE_DIR}, library: ${ETHERCAT_LIBRARY}); set ETHERCAT_ROOT to its prefix")
  endif()
endif()

if(IGH_MASTER_PLATFORM_RESOLVED STREQUAL "ethercat")
  target_include_directories(igh_platform SYSTEM INTERFACE ${ETHERCAT_INCLUDE_DIR})
  target_link_libraries(igh_platform INTERFACE ${ETHERCAT_LIBRARY})
  message(STATUS "EtherCAT platform: IgH EtherCAT Master, ${ETHERCAT_LIBRARY}")
else()
  # The wrapped calls are served by libethercat_simulation.so; only /dev/EtherCAT<n> stays there.
  target_link_libraries(igh_platform INTERFACE ethercat_simulation)
  target_link_options(igh_platform INTERFACE -Wl,--wrap=open,--wrap=close,--wrap=ioctl)
  message(STATUS "EtherCAT platform: simulated master (no hardware is driven)")
endif()
