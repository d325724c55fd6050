# The stripped module stays within the recorded number of bytes.
cmake_minimum_required(VERSION 3.25)
file(STRINGS ${BUDGET} budget REGEX "^[0-9]+$")
execute_process(COMMAND ${STRIP} --strip-unneeded -R .comment -o ${STRIPPED} ${MODULE} COMMAND_ERROR_IS_FATAL ANY)
file(SIZE ${STRIPPED} size)
message(STATUS "${size} of ${budget} bytes")
if(size GREATER budget)
  message(FATAL_ERROR "The stripped module has ${size} bytes, more than the ${budget} of cmake/size_budget. "
                      "scripts/footprint shows where they are.")
endif()
