# Building on Linux: the system's libraries and the flags of its compiler and linker. The root CMakeLists.txt includes the
# file with the system's name; another platform adds such a file and a folder in platform/.
#
# Finds the packages of all systems. Sets KV_LIBRARY_FOLDER, the folder of an installation that has the shared library and
# its data; KV_SYSTEM_HEADERS, more headers to compile once; KV_TEST_WARNINGS, more options of the tests;
# KV_SYSTEM_LIBRARIES for platform/; KV_ODBC_LIBRARIES for companions/database; KV_OPENGL_LIBRARIES for share/display;
# KV_SYMBOL_LIBRARIES for host/crash, and KV_OTHER_SYMBOLS, the source there that is for other systems;
# KV_SQLITE_LIBRARY for targets that read the registry's files directly. Defines kv_library_flags, kv_layer_flags,
# kv_program_flags and kv_find_test_framework.

set(KV_LIBRARY_FOLDER lib)
set(KV_SYSTEM_HEADERS)
set(KV_TEST_WARNINGS)
find_package(PkgConfig REQUIRED)
pkg_check_modules(DEFLATE REQUIRED IMPORTED_TARGET libdeflate)
pkg_check_modules(PNG REQUIRED IMPORTED_TARGET libpng)
find_package(Threads REQUIRED)
find_package(fmt REQUIRED)
find_package(pugixml REQUIRED)
find_package(Eigen3 REQUIRED NO_MODULE)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)
macro(kv_find_test_framework)
  find_package(GTest REQUIRED)
endmacro()

pkg_check_modules(SQLITE REQUIRED IMPORTED_TARGET sqlite3)
pkg_check_modules(ODBC REQUIRED IMPORTED_TARGET odbc odbcinst)
pkg_check_modules(OPENGL REQUIRED IMPORTED_TARGET opengl glu)
pkg_check_modules(ICU REQUIRED IMPORTED_TARGET icu-uc icu-i18n)
set(KV_SYSTEM_LIBRARIES PkgConfig::SQLITE PkgConfig::ICU Threads::Threads ${CMAKE_DL_LIBS})
set(KV_ODBC_LIBRARIES PkgConfig::ODBC)
set(KV_OPENGL_LIBRARIES PkgConfig::OPENGL)
set(KV_SQLITE_LIBRARY PkgConfig::SQLITE)
pkg_check_modules(DW REQUIRED IMPORTED_TARGET libdw libelf)
set(KV_SYMBOL_LIBRARIES PkgConfig::DW)
set(KV_OTHER_SYMBOLS no_symbols\\.cpp)

# ---- hardening, for every target

option(KV_HARDENING "Stack protector, checked library calls, read-only relocations" ON)
include(CheckCXXSourceCompiles)
include(CheckPIESupported)
check_pie_supported()
if(KV_HARDENING)
  target_compile_options(kv_options INTERFACE -fstack-protector-strong)
  target_link_options(kv_options INTERFACE -Wl,-z,relro -Wl,-z,now)
  # The checked calls need an optimised build. The sanitizers check these calls themselves.
  if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT KV_SANITIZE)
    set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
    check_cxx_source_compiles("#include <string.h>\nint main() { return 0; }" KV_HAS_FORTIFY_3)
    unset(CMAKE_REQUIRED_FLAGS)
    target_compile_options(kv_options INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=$<IF:$<BOOL:${KV_HAS_FORTIFY_3}>,3,2>)
  endif()
endif()

# ---- the shared library, its layers, programs

# The flags of one layer.
function(kv_layer_flags target layer)
  target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  if(layer STREQUAL "companions")
    target_compile_options(${target} PRIVATE -fno-plt)  # the XML parser's accessors are called millions of times
  endif()
endfunction()

function(kv_library_flags target)
  target_link_options(${target} PRIVATE -Wl,-Bsymbolic-functions)  # calls inside the library skip the import table
  if(NOT KV_SANITIZE)  # the sanitizers' runtime is linked only to the program
    target_link_options(${target} PRIVATE -Wl,-z,defs)
  endif()
endfunction()

# An installed program finds the library by RUNPATH; LD_LIBRARY_PATH has priority.
function(kv_program_flags target)
  set_target_properties(${target} PROPERTIES BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  target_link_options(${target} PRIVATE -Wl,--enable-new-dtags)
endfunction()
