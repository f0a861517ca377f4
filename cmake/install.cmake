# Install rules: bin/kestrova, lib/libKVSHAREu.so, the language libraries beside it, include/kvshare, a CMake package
# and kvshare.pc. installation.cmake has the other files beside the library.
include(CMakePackageConfigHelpers)

install(TARGETS KVSHAREu EXPORT KVShareTargets LIBRARY DESTINATION lib)
install(TARGETS kestrova RUNTIME DESTINATION bin)
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
install(DIRECTORY ${PROJECT_BINARY_DIR}/lib/lang DESTINATION lib)
install(FILES ${PROJECT_BINARY_DIR}/lib/TechDB/TechDB.kvdb ${PROJECT_SOURCE_DIR}/examples/install/TechDB/database.config
  DESTINATION lib/TechDB)
install(FILES ${PROJECT_BINARY_DIR}/etc/kestrova/odbcinst.ini DESTINATION etc/kestrova)
install(CODE "set(KV_SOURCE \"${PROJECT_SOURCE_DIR}\")" COMPONENT headers)
install(SCRIPT ${PROJECT_SOURCE_DIR}/cmake/install_headers.cmake COMPONENT headers)

install(EXPORT KVShareTargets NAMESPACE KVShare:: DESTINATION lib/cmake/KVShare)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/KVShareConfig.cmake.in
  ${PROJECT_BINARY_DIR}/KVShareConfig.cmake INSTALL_DESTINATION lib/cmake/KVShare)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KVShareConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KVShareConfig.cmake ${PROJECT_BINARY_DIR}/KVShareConfigVersion.cmake
  DESTINATION lib/cmake/KVShare)

configure_file(${PROJECT_SOURCE_DIR}/cmake/kvshare.pc.in ${PROJECT_BINARY_DIR}/kvshare.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kvshare.pc DESTINATION lib/pkgconfig)
