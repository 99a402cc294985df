# Every target of the project links igh_warnings; it adds flags and nothing else.
add_library(igh_warnings INTERFACE)
target_compile_options(igh_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wformat=2)
if(IGH_MASTER_WERROR)
  target_compile_options(igh_warnings INTERFACE -Werror)
endif()
