# The header's version is what programs compare with: it must be this project's.
set(header ${PROJECT_SOURCE_DIR}/include/igh_master.h)
file(STRINGS ${header} parts REGEX "^#define IGH_MASTER_VERSION_(MAJOR|MINOR|PATCH) [0-9]+$")
list(TRANSFORM parts REPLACE ".* " "")
list(JOIN parts "." header_version)
if(NOT header_version STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "${header} is of version ${header_version}, the project of ${PROJECT_VERSION}")
endif()
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
