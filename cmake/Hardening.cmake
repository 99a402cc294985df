# What Debian asks of packaged code. Symbols are bound at the start, which also spares a cycle the loader's search for the
# first call of a function. Fortified calls need optimisation, and sanitizers look closer by themselves.
option(IGH_MASTER_HARDENING "Bind symbols at the start; check the bounds of library calls in optimised builds" ON)

# For the targets of a folder.
macro(igh_harden)
  if(IGH_MASTER_HARDENING AND NOT (IGH_MASTER_SANITIZE OR IGH_MASTER_SANITIZE_THREAD OR IGH_MASTER_FUZZ))
    add_link_options(-Wl,-z,relro,-z,now)
    if(NOT "${CMAKE_C_FLAGS} ${CMAKE_CXX_FLAGS}" MATCHES "_FORTIFY_SOURCE") # a distribution's own choice stays
      add_compile_options($<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE> $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
    endif()
  endif()
endmacro()
