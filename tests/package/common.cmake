# Runs a command, with its output in the failure; RUN_OUTPUT is what it printed.
macro(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE run_result OUTPUT_VARIABLE RUN_OUTPUT ERROR_VARIABLE run_error)
  if(NOT run_result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\nfailed (${run_result}):\n${RUN_OUTPUT}${run_error}")
  endif()
endmacro()

# expect_refusal(<regular expression> <command>...): runs a command that must fail and say why on standard error. Line
# breaks count as one space, as cmake breaks its messages.
function(expect_refusal reason)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE error)
  string(REGEX REPLACE "[ \n]+" " " error "${error}")
  if(result EQUAL 0 OR NOT error MATCHES "${reason}")
    message(FATAL_ERROR "${ARGN}\nended with ${result} and said, instead of ${reason}:\n${error}")
  endif()
endfunction()

function(expect_file path)
  if(NOT EXISTS ${path})
    message(FATAL_ERROR "missing: ${path}")
  endif()
endfunction()

# Loads the module of a directory, with the stand-in client library in the process unless it is linked, and uses it.
function(run_module directory)
  if(ARGV1 STREQUAL LINKED)
    set(client "")
  else()
    set(client ${IMPL})
  endif()
  run(${LUA} ${SCRIPTS}/use_module.lua ${directory} ${client})
  if(NOT RUN_OUTPUT MATCHES "module used")
    message(FATAL_ERROR "use_module.lua printed: ${RUN_OUTPUT}")
  endif()
endfunction()

# Runs an example with the launcher under a prefix, from a directory and with an environment that help nothing.
function(run_launcher prefix)
  file(READ ${SOURCE}/tests/examples/quickstart.expected expected)
  foreach(options IN ITEMS "" --watch=summary)
    execute_process(
      COMMAND env -i PATH=/usr/bin:/bin ${prefix}/bin/tq-lua ${options} ${SOURCE}/examples/quickstart.lua
      WORKING_DIRECTORY /
      RESULT_VARIABLE result
      OUTPUT_VARIABLE output
      ERROR_VARIABLE error)
    if(NOT result EQUAL 0 OR NOT output STREQUAL expected OR (options AND NOT error MATCHES "tq_global_init +1 +0 "))
      message(FATAL_ERROR "tq-lua ${options} ended with ${result} and printed:\n${output}${error}")
    endif()
  endforeach()
  file(WRITE ${WORK}/session.lua "tq_obj.new('k', 'v')\n")
  foreach(options IN ITEMS -i "--watch;-i")
    execute_process(COMMAND env -i PATH=/usr/bin:/bin ${prefix}/bin/tq-lua ${options} INPUT_FILE ${WORK}/session.lua
                    OUTPUT_VARIABLE output ERROR_VARIABLE error)
    if(NOT output MATCHES "tq_obj {key = \"k\", value = \"v\"}")
      message(FATAL_ERROR "tq-lua ${options} does not show an object:\n${output}${error}")
    endif()
  endforeach()
  expect_file(${prefix}/include/tq_kit/value_object.h)
endfunction()

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
