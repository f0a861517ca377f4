# Copies the files of examples/install and the example machines beside the shared library in the build folder, so that
# this folder is a complete small installation. Installs the same files.
set(install_source ${PROJECT_SOURCE_DIR}/examples/install)
set(machine_source ${PROJECT_SOURCE_DIR}/examples/machines)
file(GLOB_RECURSE install_files RELATIVE ${install_source} CONFIGURE_DEPENDS ${install_source}/*)
list(FILTER install_files EXCLUDE REGEX "strings\\.rc$|^TechDB/")
file(GLOB_RECURSE machine_files RELATIVE ${machine_source} CONFIGURE_DEPENDS
  ${machine_source}/*.xml ${machine_source}/*.stl ${machine_source}/*.xsd)

set(installed)
function(kv_install_beside_library source file target)
  set(out ${PROJECT_BINARY_DIR}/${KV_LIBRARY_FOLDER}/${target}${file})
  add_custom_command(OUTPUT ${out} COMMAND ${CMAKE_COMMAND} -E copy ${source}/${file} ${out} DEPENDS ${source}/${file}
    COMMENT "Copying ${target}${file}")
  list(APPEND installed ${out})
  set(installed ${installed} PARENT_SCOPE)
  cmake_path(GET file PARENT_PATH folder)
  install(FILES ${source}/${file} DESTINATION ${KV_LIBRARY_FOLDER}/${target}${folder})
endfunction()
foreach(file ${install_files})
  kv_install_beside_library(${install_source} ${file} "")
endforeach()
foreach(file ${machine_files})
  kv_install_beside_library(${machine_source} ${file} MachSim/Machines/)
endforeach()
add_custom_target(kv_installation ALL DEPENDS ${installed})
