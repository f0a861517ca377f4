# Builds each language folder's KVRESu.DLL, a resource-only library, from examples/install/lang/*/*.rc: strings and
# dialogs. The file is the same for every platform. It is placed in lang/ beside the shared library.
find_program(KV_WINDRES NAMES x86_64-w64-mingw32-windres REQUIRED)
find_program(KV_PE_LD NAMES x86_64-w64-mingw32-ld REQUIRED)

file(GLOB folders CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/examples/install/lang/*)
set(KV_LANGUAGE_FILES)
foreach(folder ${folders})
  file(GLOB scripts CONFIGURE_DEPENDS ${folder}/*.rc)
  cmake_path(GET folder FILENAME language)
  set(out ${PROJECT_BINARY_DIR}/${KV_LIBRARY_FOLDER}/lang/${language})
  file(MAKE_DIRECTORY ${out})
  set(compile)
  set(objects)
  foreach(script ${scripts})
    cmake_path(GET script STEM name)
    list(APPEND compile COMMAND ${KV_WINDRES} --codepage=65001 -O coff -i ${script} -o ${out}/${name}.o)
    list(APPEND objects ${out}/${name}.o)
  endforeach()
  add_custom_command(
    OUTPUT ${out}/KVRESu.DLL
    ${compile}
    COMMAND ${KV_PE_LD} --dll --entry=0 --no-insert-timestamp -s -o ${out}/KVRESu.DLL ${objects}
    COMMAND ${CMAKE_COMMAND} -E rm ${objects}
    DEPENDS ${scripts}
    COMMENT "Building ${language}/KVRESu.DLL")
  list(APPEND KV_LANGUAGE_FILES ${out}/KVRESu.DLL)
endforeach()
add_custom_target(kv_languages ALL DEPENDS ${KV_LANGUAGE_FILES})
