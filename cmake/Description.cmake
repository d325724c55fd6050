# tq_description: the header tq_description.h with the lists of functions, classes, constants and records that follow
# from api/, written at build time.
include_guard(GLOBAL)
find_program(TQ_LUA_INTERPRETER lua5.3 NO_CMAKE_FIND_ROOT_PATH REQUIRED DOC "The Lua 5.3 interpreter of this machine")

set(tq_description_header ${PROJECT_BINARY_DIR}/description/tq_description.h)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/description)
file(GLOB tq_description_files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/api/*.lua)
add_custom_command(
  OUTPUT ${tq_description_header}
  COMMAND ${TQ_LUA_INTERPRETER} ${PROJECT_SOURCE_DIR}/scripts/describe --native ${tq_description_header}
  DEPENDS ${tq_description_files} ${PROJECT_SOURCE_DIR}/scripts/describe)
add_custom_target(tq_description_written DEPENDS ${tq_description_header})
add_library(tq_description INTERFACE)
target_include_directories(tq_description INTERFACE ${PROJECT_BINARY_DIR}/description)
add_dependencies(tq_description tq_description_written)
