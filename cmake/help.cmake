# Makes the help of the example installation: each language folder gets the pages HtmlHelp/*.htm from
# examples/help/LANGUAGE/*.md, and the context table KVcontext.txt. The install rule of the folder lang/ installs them.
find_program(KV_CMARK NAMES cmark REQUIRED)
set(help_source ${PROJECT_SOURCE_DIR}/examples/help)
set(help_code_English en)
set(help_code_German de)
set(help_code_French fr)

set(help_files)
foreach(language English German French)
  set(folder ${PROJECT_BINARY_DIR}/${KV_LIBRARY_FOLDER}/lang/${language})
  file(MAKE_DIRECTORY ${folder}/HtmlHelp)
  add_custom_command(OUTPUT ${folder}/KVcontext.txt
    COMMAND ${CMAKE_COMMAND} -E copy ${help_source}/KVcontext.txt ${folder}/KVcontext.txt
    DEPENDS ${help_source}/KVcontext.txt COMMENT "Copying lang/${language}/KVcontext.txt")
  list(APPEND help_files ${folder}/KVcontext.txt)
  file(GLOB pages CONFIGURE_DEPENDS ${help_source}/${language}/*.md)
  foreach(page ${pages})
    cmake_path(GET page STEM name)
    set(out ${folder}/HtmlHelp/${name}.htm)
    add_custom_command(OUTPUT ${out}
      COMMAND ${CMAKE_COMMAND} -D CMARK=${KV_CMARK} -D SOURCE=${page} -D OUT=${out} -D LANGUAGE=${help_code_${language}}
        -P ${PROJECT_SOURCE_DIR}/cmake/help_page.cmake
      DEPENDS ${page} ${PROJECT_SOURCE_DIR}/cmake/help_page.cmake COMMENT "Making lang/${language}/HtmlHelp/${name}.htm")
    list(APPEND help_files ${out})
  endforeach()
endforeach()
add_custom_target(kv_help ALL DEPENDS ${help_files})
add_dependencies(kv_languages kv_help)
