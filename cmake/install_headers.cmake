# Copies the public headers to include/kvshare. In the tree an include names the file from the repository's root. The
# installed headers use <kvshare/...> instead, so that a module needs only one include folder. Headers in an internal/
# folder are for one room of the library and are not installed. Each installed header first checks the language's version.
set(target $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/include/kvshare)
file(GLOB_RECURSE headers RELATIVE ${KV_SOURCE}
  ${KV_SOURCE}/platform/*.h ${KV_SOURCE}/framework/*.h ${KV_SOURCE}/companions/*.h ${KV_SOURCE}/share/*.h)
list(FILTER headers EXCLUDE REGEX "^platform/((linux|windows)/|(lock|odbc|opengl|private_file|probe_table|regular_expression|temporary_file|utf8)[.]h)|/internal/")
if(EXISTS ${KV_SOURCE}/platform/${KV_PLATFORM}/types.h)  # platform/types.h includes it
  list(APPEND headers platform/${KV_PLATFORM}/types.h)
endif()
file(REMOVE_RECURSE ${target})
foreach(header ${headers})
  file(READ ${KV_SOURCE}/${header} text)
  string(REGEX REPLACE "#include \"((platform|framework|companions|share)/[^\"]+)\"" "#include <kvshare/\\1>" text "${text}")
  if(NOT header STREQUAL "platform/cxx20.h")
    string(REPLACE "#pragma once\n" "#pragma once\n\n#include <kvshare/platform/cxx20.h>\n" text "${text}")
  endif()
  if(header STREQUAL "share/kvshare.h")
    set(header kvshare.h)
  endif()
  file(WRITE ${target}/${header} "${text}")
endforeach()
message(STATUS "Installing: ${target}")
