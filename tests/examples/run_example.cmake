# cmake "-DLUA=<command>;..." [-DWATCH_LIBRARY=<file>] -DCLIENT_LIBRARY=<file> -DSCRIPT=<file> -DEXPECTED=<file> -P run_example.cmake
#
# Runs the script with the client library's symbols visible to the modules. It must end well, print exactly the expected
# text and nothing on the standard error stream.
cmake_minimum_required(VERSION 3.25)

set(libraries "")
foreach(library IN LISTS WATCH_LIBRARY CLIENT_LIBRARY)
  list(APPEND libraries -e "assert(package.loadlib([[${library}]], '*'))")
endforeach()
execute_process(
  COMMAND ${LUA} ${libraries} ${SCRIPT}
  RESULT_VARIABLE result
  OUTPUT_VARIABLE output
  ERROR_VARIABLE errors)
file(READ ${EXPECTED} expected)
if(NOT result EQUAL 0 OR NOT errors STREQUAL "" OR NOT output STREQUAL expected)
  message("-- printed:\n${output}-- expected:\n${expected}-- errors:\n${errors}")
  message(FATAL_ERROR "${SCRIPT} ended with ${result} or printed something else")
endif()
