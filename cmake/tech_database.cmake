# Builds the technology database of the example installation from its script, and copies "database.config" beside it.
# Both are in TechDB/ of the data folder, which is the folder of the shared library unless the registry names another.
# On Linux also registers the ODBC drivers under the names used in connection strings, in a file of the installation. The
# machine's registrations are not changed.
find_program(KV_SQLITE NAMES sqlite3 REQUIRED)

set(data ${PROJECT_SOURCE_DIR}/examples/install/TechDB)
set(out ${PROJECT_BINARY_DIR}/${KV_LIBRARY_FOLDER}/TechDB)
file(MAKE_DIRECTORY ${out})
add_custom_command(
  OUTPUT ${out}/TechDB.kvdb
  COMMAND ${CMAKE_COMMAND} -E rm -f ${out}/TechDB.kvdb
  COMMAND ${KV_SQLITE} -bail ${out}/TechDB.kvdb ".read ${data}/techdb.sql"
  DEPENDS ${data}/techdb.sql
  COMMENT "Building TechDB.kvdb"
  VERBATIM)
add_custom_command(
  OUTPUT ${out}/database.config
  COMMAND ${CMAKE_COMMAND} -E copy ${data}/database.config ${out}/database.config
  DEPENDS ${data}/database.config)
add_custom_target(kv_tech_database ALL DEPENDS ${out}/TechDB.kvdb ${out}/database.config)

if(NOT KV_PLATFORM STREQUAL "linux")
  return()
endif()
set(KV_ODBC_REGISTRATIONS "")
function(kv_register_driver library name)
  find_library(KV_ODBC_${library} NAMES ${library} PATH_SUFFIXES odbc)
  if(KV_ODBC_${library})
    string(APPEND KV_ODBC_REGISTRATIONS "[${name}]\nDriver=${KV_ODBC_${library}}\n\n")
    set(KV_ODBC_REGISTRATIONS "${KV_ODBC_REGISTRATIONS}" PARENT_SCOPE)
  else()
    message(WARNING "The ODBC driver ${library} is missing: \"${name}\" is not registered")
  endif()
endfunction()
kv_register_driver(sqlite3odbc "Kestrova SQLite3 ODBC Driver")
kv_register_driver(mdbodbc "Microsoft Access Driver (*.mdb, *.accdb)")
kv_register_driver(tdsodbc "SQL Server")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/etc/kestrova/odbcinst.ini CONTENT "${KV_ODBC_REGISTRATIONS}" @ONLY)
