# Makes a page of the help: cmake -D CMARK=program -D SOURCE=x.md -D OUT=x.htm -D LANGUAGE=de -P help_page.cmake. The title
# is the first heading.
execute_process(COMMAND ${CMARK} --to html ${SOURCE} OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
if(NOT body MATCHES "<h1>([^<]*)</h1>")
  message(FATAL_ERROR "${SOURCE} has no heading: begin it with a line such as # Toolpaths")
endif()
file(WRITE ${OUT} "<!DOCTYPE html>
<html lang=\"${LANGUAGE}\">
<head>
<meta charset=\"utf-8\">
<meta name=\"viewport\" content=\"width=device-width\">
<title>${CMAKE_MATCH_1}</title>
<style>
body { font-family: sans-serif; line-height: 1.5; max-width: 42em; margin: 2em auto; padding: 0 1em; }
code { background: #eee; padding: 0 0.2em; }
@media (prefers-color-scheme: dark) { body { background: #1c1c1c; color: #ddd; } code { background: #333; } a { color: #8bf; } }
</style>
</head>
<body>
${body}</body>
</html>
")
