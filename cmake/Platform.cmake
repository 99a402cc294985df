# Chooses the EtherCAT master that the library is built for and defines the target igh_platform: the include
# directory of <ecrt.h>, the library behind it and the link flags that route the device-file calls.
set(IGH_MASTER_PLATFORM "auto" CACHE STRING "simulation, ethercat, ethercat_rtdm (Xenomai) or auto (the real master where it is found, else the simulation)")
set_property(CACHE IGH_MASTER_PLATFORM PROPERTY STRINGS auto simulation ethercat ethercat_rtdm)
set(ETHERCAT_ROOT "" CACHE PATH "Prefix under which the IgH EtherCAT Master is installed")

if(NOT IGH_MASTER_PLATFORM MATCHES "^(auto|simulation|ethercat|ethercat_rtdm)$")
  message(FATAL_ERROR "IGH_MASTER_PLATFORM is '${IGH_MASTER_PLATFORM}': use auto, simulation, ethercat or ethercat_rtdm")
endif()

add_library(igh_platform INTERFACE)
set(IGH_MASTER_PLATFORM_RESOLVED "simulation")

if(NOT IGH_MASTER_PLATFORM STREQUAL "simulation")
  include(FindEthercatLibrary)
  set(ethercat_name ${IGH_MASTER_PLATFORM})
  if(IGH_MASTER_PLATFORM STREQUAL "auto")
    set(ethercat_name ethercat)
  endif()
  find_ethercat_library(${ethercat_name})
  if(ETHERCAT_INCLUDE_DIR AND ETHERCAT_LIBRARY)
    set(IGH_MASTER_PLATFORM_RESOLVED ${ethercat_name})
  elseif(NOT IGH_MASTER_PLATFORM STREQUAL "auto")
    message(FATAL_ERROR "The IgH EtherCAT Master was not found (ecrt.h: ${ETHERCAT_INCLUDE_DIR}, lib${ethercat_name}: ${ETHERCAT_LIBRARY}); looked in '${ETHERCAT_ROOT}' if that is set, else with CMake, pkg-config, in /opt/etherlab, /usr/local/etherlab and the system's folders. Install it, or set ETHERCAT_ROOT to its prefix (a patched release: the folder above include/ecrt.h)")
  endif()
endif()

if(IGH_MASTER_PLATFORM_RESOLVED STREQUAL "ethercat_rtdm")
  # The wrapping of open and ioctl must be applied where they are referenced: in libigh_master.so, too.
  find_program(XENO_CONFIG xeno-config HINTS ${XENOMAI_ROOT}/bin /usr/xenomai/bin)
  if(NOT XENO_CONFIG)
    message(FATAL_ERROR "xeno-config was not found; put it in the PATH, or set XENO_CONFIG or XENOMAI_ROOT")
  endif()
  execute_process(COMMAND ${XENO_CONFIG} --skin=rtdm --cflags OUTPUT_VARIABLE xeno_cflags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${XENO_CONFIG} --skin=rtdm --auto-init-solib --ldflags OUTPUT_VARIABLE xeno_ldflags RESULT_VARIABLE xeno_result OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT xeno_result EQUAL 0) # Xenomai 2 knows no --auto-init-solib
    execute_process(COMMAND ${XENO_CONFIG} --skin=rtdm --ldflags OUTPUT_VARIABLE xeno_ldflags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  endif()
  # A program starts Cobalt by itself, a library from its constructor.
  execute_process(COMMAND ${XENO_CONFIG} --skin=posix --ldflags OUTPUT_VARIABLE xeno_program_ldflags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(IGH_MASTER_XENO_CFLAGS UNIX_COMMAND "${xeno_cflags}")
  separate_arguments(IGH_MASTER_XENO_LDFLAGS UNIX_COMMAND "${xeno_ldflags}")
  separate_arguments(IGH_MASTER_XENO_PROGRAM_LDFLAGS UNIX_COMMAND "${xeno_program_ldflags}")
  target_compile_options(igh_platform INTERFACE ${IGH_MASTER_XENO_CFLAGS})
  set(for_program $<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>)
  target_link_options(igh_platform INTERFACE "$<${for_program}:${IGH_MASTER_XENO_PROGRAM_LDFLAGS}>" "$<$<NOT:${for_program}>:${IGH_MASTER_XENO_LDFLAGS}>")
  message(STATUS "Xenomai: ${XENO_CONFIG}")
endif()

if(IGH_MASTER_PLATFORM_RESOLVED STREQUAL "simulation")
  # The wrapped calls are served by libethercat_simulation.so; only /dev/EtherCAT<n> stays there.
  target_link_libraries(igh_platform INTERFACE ethercat_simulation)
  # __open_2 is what a fortified open without a mode becomes where its flags are not constant.
  set(IGH_MASTER_DEVICE_FILE_WRAPS -Wl,--wrap=open,--wrap=__open_2,--wrap=close,--wrap=ioctl)
  target_link_options(igh_platform INTERFACE ${IGH_MASTER_DEVICE_FILE_WRAPS})
  message(STATUS "EtherCAT platform: simulated master (no hardware is driven)")
else()
  check_ethercat_release()
  target_include_directories(igh_platform SYSTEM INTERFACE ${ETHERCAT_INCLUDE_DIR})
  target_link_libraries(igh_platform INTERFACE ${ETHERCAT_LIBRARY})
  message(STATUS "EtherCAT platform: IgH EtherCAT Master, ${ETHERCAT_LIBRARY}")
endif()
