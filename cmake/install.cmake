# Install rules: bin/kestrova, the shared library with its languages and data beside it (lib/ on Linux, bin/ on Windows),
# include/kvshare and a CMake package; on Linux also kvshare.pc, the ODBC drivers and the completions of shells.
# installation.cmake has the other files beside the library.
include(CMakePackageConfigHelpers)

install(TARGETS KVSHAREu EXPORT KVShareTargets LIBRARY DESTINATION lib RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(TARGETS kestrova RUNTIME DESTINATION bin)
install(DIRECTORY ${PROJECT_BINARY_DIR}/${KV_LIBRARY_FOLDER}/lang DESTINATION ${KV_LIBRARY_FOLDER})
install(FILES ${PROJECT_BINARY_DIR}/${KV_LIBRARY_FOLDER}/TechDB/TechDB.kvdb
  ${PROJECT_SOURCE_DIR}/examples/install/TechDB/database.config DESTINATION ${KV_LIBRARY_FOLDER}/TechDB)
install(CODE "set(KV_SOURCE \"${PROJECT_SOURCE_DIR}\")\nset(KV_PLATFORM ${KV_PLATFORM})" COMPONENT headers)
install(SCRIPT ${PROJECT_SOURCE_DIR}/cmake/install_headers.cmake COMPONENT headers)

install(EXPORT KVShareTargets NAMESPACE KVShare:: DESTINATION lib/cmake/KVShare)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/KVShareConfig.cmake.in
  ${PROJECT_BINARY_DIR}/KVShareConfig.cmake INSTALL_DESTINATION lib/cmake/KVShare)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KVShareConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KVShareConfig.cmake ${PROJECT_BINARY_DIR}/KVShareConfigVersion.cmake
  DESTINATION lib/cmake/KVShare)

if(NOT KV_PLATFORM STREQUAL "linux")
  return()
endif()

install(TARGETS kvshare-crash RUNTIME DESTINATION lib)
configure_file(${PROJECT_SOURCE_DIR}/cmake/kvshare.pc.in ${PROJECT_BINARY_DIR}/kvshare.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kvshare.pc DESTINATION lib/pkgconfig)
install(FILES ${PROJECT_BINARY_DIR}/etc/kestrova/odbcinst.ini DESTINATION etc/kestrova)

set(completions)
function(kv_completion shell file folder)
  set(out ${PROJECT_BINARY_DIR}/completion/${file})
  add_custom_command(OUTPUT ${out} COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/completion
    COMMAND $<TARGET_FILE:kestrova> completion ${shell} > ${out} DEPENDS kestrova)
  set(completions ${completions} ${out} PARENT_SCOPE)
  install(FILES ${out} DESTINATION share/${folder})
endfunction()
kv_completion(bash kestrova bash-completion/completions)
kv_completion(zsh _kestrova zsh/site-functions)
kv_completion(fish kestrova.fish fish/vendor_completions.d)
add_custom_target(kv_completion ALL DEPENDS ${completions})
