# Building for Windows with cmake/windows-toolchain.cmake. The sister of linux.cmake, with the same variables and
# functions.
#
# The libraries that are not packaged for this system are built from their sources in KV_WINDOWS_SOURCES, which
# scripts/windows.sh fetches. Packages that are headers only are used from this machine, through links in a folder of the
# build, because /usr/include itself has the headers of another system.

enable_language(C)  # for libdeflate and libpng
set(KV_LIBRARY_FOLDER bin)  # of an installation: a program finds its libraries in its own folder
set(KV_WINDOWS_SOURCES ${PROJECT_BINARY_DIR}/sources CACHE PATH "Folder with pugixml-*, libdeflate-* and libpng-*")

# ---- packages

set(headers ${PROJECT_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${headers})
foreach(package fmt CLI nlohmann rapidjson eigen3/Eigen)
  cmake_path(GET package FILENAME name)
  if(EXISTS /usr/include/${package})
    file(CREATE_LINK /usr/include/${package} ${headers}/${name} SYMBOLIC)
  elseif(NOT package STREQUAL "rapidjson" OR KV_TESTS)
    message(FATAL_ERROR "/usr/include/${package} is missing: run scripts/windows.sh, which installs it")
  endif()
endforeach()
foreach(package fmt::fmt CLI11::CLI11 nlohmann_json::nlohmann_json Eigen3::Eigen)
  add_library(${package} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${package} INTERFACE ${headers})
endforeach()
target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY)

# kv_source_package(NAME FILES): a static library of the newest folder NAME-* and of the files named relative to it.
function(kv_source_package name)
  file(GLOB folders ${KV_WINDOWS_SOURCES}/${name}-*/)
  list(SORT folders COMPARE NATURAL)
  if(NOT folders)
    message(FATAL_ERROR "${KV_WINDOWS_SOURCES} has no folder ${name}-*: run scripts/windows.sh, which fetches the sources")
  endif()
  list(GET folders -1 folder)
  list(TRANSFORM ARGN PREPEND ${folder}/ OUTPUT_VARIABLE patterns)
  file(GLOB files ${patterns})
  add_library(kv_${name} STATIC ${files})
  target_include_directories(kv_${name} SYSTEM PUBLIC ${folder} ${folder}/src)
endfunction()
kv_source_package(pugixml src/pugixml.cpp)
add_library(pugixml::pugixml ALIAS kv_pugixml)
kv_source_package(libdeflate lib/*.c lib/x86/*.c)
add_library(PkgConfig::DEFLATE ALIAS kv_libdeflate)
kv_source_package(libpng png.c pngerror.c pngget.c pngmem.c pngpread.c pngread.c pngrio.c pngrtran.c pngrutil.c pngset.c
  pngtrans.c pngwio.c pngwrite.c pngwtran.c pngwutil.c)
file(GLOB settings ${KV_WINDOWS_SOURCES}/libpng-*/scripts/pnglibconf.h.prebuilt)
list(GET settings -1 settings)
configure_file(${settings} ${PROJECT_BINARY_DIR}/libpng/pnglibconf.h COPYONLY)
target_include_directories(kv_libpng SYSTEM PUBLIC ${PROJECT_BINARY_DIR}/libpng)
target_link_libraries(kv_libpng PUBLIC -l:libz.a)  # of the compiler's package
add_library(PkgConfig::PNG ALIAS kv_libpng)

# Compiled once: the headers of platform/ include them.
set(KV_SYSTEM_HEADERS <windows.h> <oleauto.h>)
set(KV_SYSTEM_LIBRARIES ktmw32 ole32 oleaut32 uuid psapi dbghelp)
set(KV_ODBC_LIBRARIES odbc32 odbccp32)
set(KV_OPENGL_LIBRARIES opengl32 glu32)
set(KV_SYMBOL_LIBRARIES)  # stacks have modules and offsets only
set(KV_OTHER_SYMBOLS elf_symbols\\.cpp)

# False warnings about wmemcpy of the compiler's own wchar.h, where short texts are compared.
set(KV_TEST_WARNINGS -Wno-array-bounds -Wno-stringop-overread -Wno-stringop-overflow)

# The test framework, from the sources that its package contains.
macro(kv_find_test_framework)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  foreach(library gtest gmock)
    set_target_properties(${library} PROPERTIES CXX_VISIBILITY_PRESET default)
    if(NOT TARGET GTest::${library})
      add_library(GTest::${library} ALIAS ${library})
    endif()
  endforeach()
endmacro()

# ---- flags of every target

target_compile_definitions(kv_options INTERFACE UNICODE _UNICODE NOMINMAX _WIN32_WINNT=0x0A00)
option(KV_HARDENING "Stack protector, random addresses, no code in data" ON)
if(KV_HARDENING)
  target_compile_options(kv_options INTERFACE -fstack-protector-strong)
  target_link_libraries(kv_options INTERFACE -l:libssp.a)  # the protector's few lines, without a library to ship
  target_link_options(kv_options INTERFACE -Wl,--dynamicbase,--high-entropy-va,--nxcompat)
endif()

# ---- the shared library, its layers, programs

function(kv_layer_flags target layer)
endfunction()

function(kv_library_flags target)
  # A module must be compiled with the same definitions, because they choose the types of the system's headers.
  target_compile_definitions(${target} INTERFACE UNICODE _UNICODE NOMINMAX _WIN32_WINNT=0x0A00)
  # Its headers call the system.
  target_link_libraries(${target} INTERFACE ${KV_SYSTEM_LIBRARIES})
  set_target_properties(${target} PROPERTIES PREFIX "" IMPORT_PREFIX "lib")
endfunction()

function(kv_program_flags target)
endfunction()
# Documents with long chains of nodes need the stack that other systems give.
string(APPEND CMAKE_EXE_LINKER_FLAGS " -Wl,--stack,8388608")

# The compiler's runtime libraries lie beside the programs. They are not linked statically, because exceptions pass from
# the library to its users.
set(KV_RUNTIME_LIBRARIES)
foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name} OUTPUT_VARIABLE found
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  # Without symbols they are a tenth.
  execute_process(COMMAND ${CMAKE_STRIP} -o ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name} ${found}
    COMMAND_ERROR_IS_FATAL ANY)
  list(APPEND KV_RUNTIME_LIBRARIES ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name})
endforeach()
install(FILES ${KV_RUNTIME_LIBRARIES} DESTINATION bin)

# wine.sh PROGRAM ARGUMENTS... runs a program in Wine, with its system folder in this build.
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/wine.sh @ONLY CONTENT [=[#!/bin/sh
export WINEPREFIX=@PROJECT_BINARY_DIR@/wine WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe,winedbg.exe='
exec /usr/lib/wine/wine64 "$@"
]=])
file(CHMOD ${PROJECT_BINARY_DIR}/wine.sh PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
  WORLD_READ WORLD_EXECUTE)
