# luarocks make: builds a copy of the sources and installs the module into a tree of its own.
cmake_minimum_required(VERSION 3.25)
include(${SCRIPTS}/common.cmake)
file(COPY ${SOURCE}/ DESTINATION ${WORK}/source PATTERN build EXCLUDE PATTERN build.luarocks EXCLUDE PATTERN .git EXCLUDE)
execute_process(
  COMMAND ${LUAROCKS} --lua-version 5.3 --tree ${WORK}/tree make
  WORKING_DIRECTORY ${WORK}/source
  RESULT_VARIABLE result
  OUTPUT_VARIABLE output
  ERROR_VARIABLE output)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "luarocks make failed:\n${output}")
endif()
run(${LUAROCKS} --lua-version 5.3 --tree ${WORK}/tree show --rock-dir tq_mom_sync)
# The rock keeps the module in its own directory or in the tree's; "luarocks path" knows.
run(${LUAROCKS} --lua-version 5.3 --tree ${WORK}/tree path --lr-cpath)
string(REGEX MATCH "${WORK}/tree/[^;]*/\\?\\.so" pattern "${RUN_OUTPUT}")
cmake_path(GET pattern PARENT_PATH directory)
expect_file(${directory}/tq_mom_sync.so)
run_module(${directory})
