# cmake -DWHAT=kit|examples "-DLUA=<command>;..." "-DFILES=<file>;..." [-DCLIENT_LIBRARY=<file> -DWATCH_LIBRARY=<file>
#       -DEXPECTED=<directory>]
#       -P each_on_store.cmake
#
# Runs each script on the server of TQ_MOM_STORE, with keys that are its own. All must end well.
cmake_minimum_required(VERSION 3.25)

set(store $ENV{TQ_MOM_STORE})
set(failed "")
foreach(file IN LISTS FILES)
  cmake_path(GET file STEM name)
  set(ENV{TQ_MOM_STORE} "${store}?prefix=${name}-")
  if(WHAT STREQUAL kit)
    set(command ${LUA} ${file})
  else()
    cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH tests)
    file(STRINGS ${file} watched REGEX "require \"tq_watch\"")
    if(watched)
      set(watched ${WATCH_LIBRARY})
    endif()
    set(command ${CMAKE_COMMAND} "-DLUA=${LUA}" "-DWATCH_LIBRARY=${watched}" -DCLIENT_LIBRARY=${CLIENT_LIBRARY} -DSCRIPT=${file}
                -DEXPECTED=${EXPECTED}/${name}.expected -P ${tests}/examples/run_example.cmake)
  endif()
  execute_process(COMMAND ${command} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message("-- ${name} ended with ${result}:\n${output}")
    list(APPEND failed ${name})
  endif()
endforeach()
if(NOT FILES OR failed)
  message(FATAL_ERROR "failed on ${store}: ${failed}")
endif()
