# TQ_MOM_INCLUDE_DIR takes the declarations from elsewhere, TQ_MOM_IMPL links the client library, TQ_OBJ_ADAPTER builds
# tq_obj over a platform's objects.
cmake_minimum_required(VERSION 3.25)
include(${SCRIPTS}/common.cmake)
file(COPY ${SOURCE}/include/tq_mom DESTINATION ${WORK}/vendor)
file(WRITE ${WORK}/adapter.cmake "set(TQ_OBJ_ADAPTER \"${SOURCE}/tests/adapter/adapter.c;${PLATFORM}\" CACHE STRING \"\")\n")
run(${CMAKE_COMMAND} -C ${WORK}/adapter.cmake -G Ninja -S ${SOURCE} -B ${WORK}/build -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0
    -DTQ_BUILD_HOSTKIT=OFF -DTQ_BUILD_TESTS=OFF -DTQ_BUILD_BENCH=OFF -DTQ_MOM_INCLUDE_DIR=${WORK}/vendor
    -DTQ_MOM_IMPL=${IMPL} -DCMAKE_C_COMPILER_LAUNCHER= -DCMAKE_CXX_COMPILER_LAUNCHER=)
run(${CMAKE_COMMAND} --build ${WORK}/build -j 2)
cmake_path(GET IMPL PARENT_PATH impl_directory)
set(ENV{LD_LIBRARY_PATH} ${impl_directory})
run_module(${WORK}/build LINKED)
run(ninja -C ${WORK}/build -t deps)
if(RUN_OUTPUT MATCHES "${SOURCE}/include/tq_mom" OR NOT RUN_OUTPUT MATCHES "${WORK}/vendor/tq_mom/tq_mom.h")
  message(FATAL_ERROR "the build read the module's own declarations:\n${RUN_OUTPUT}")
endif()
run(${READELF} --dynamic --wide ${WORK}/build/tq_mom_sync.so)
if(NOT RUN_OUTPUT MATCHES "Shared library: \\[libtq_mom_impl\\.so")
  message(FATAL_ERROR "the module does not need the client library:\n${RUN_OUTPUT}")
endif()
foreach(file IN ITEMS tq_mom_sync.so device/tq_obj.so)
  run(${READELF} --dynamic --wide ${WORK}/build/${file})
  if(RUN_OUTPUT MATCHES "RPATH|RUNPATH")
    message(FATAL_ERROR "${file} names a directory of the build:\n${RUN_OUTPUT}")
  endif()
endforeach()

run(${CMAKE_COMMAND} --install ${WORK}/build --prefix ${WORK}/prefix --component module)
expect_file(${WORK}/prefix/lib/lua/5.3/tq_obj.so)
cmake_path(GET PLATFORM PARENT_PATH platform_directory)
cmake_path(GET RECORDER PARENT_PATH recorder_directory)
cmake_path(GET LUAUNIT PARENT_PATH luaunit_directory)
set(ENV{LD_LIBRARY_PATH} ${platform_directory}:${impl_directory})
set(ENV{LUA_CPATH} "${WORK}/prefix/lib/lua/5.3/?.so;${platform_directory}/?.so;${recorder_directory}/?.so")
set(ENV{LUA_PATH} "${SOURCE}/tests/adapter/?.lua;${luaunit_directory}/?.lua")
run(${LUA} ${SOURCE}/tests/kit/objects_test.lua)

find_program(DPKG_DEB dpkg-deb)
if(DPKG_DEB)
  run(${CPACK} --config ${WORK}/build/CPackConfig.cmake -B ${WORK}/packages)
  file(GLOB package ${WORK}/packages/lua-tq-mom-sync_*.deb)
  run(${DPKG_DEB} --contents ${package})
  if(NOT RUN_OUTPUT MATCHES "/tq_mom_sync\\.so\n" OR NOT RUN_OUTPUT MATCHES "/tq_obj\\.so\n")
    message(FATAL_ERROR "the package of the module lacks one:\n${RUN_OUTPUT}")
  endif()
endif()

execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -DTQ_OBJ_ADAPTER=${WORK}/nowhere.c
  RESULT_VARIABLE result
  OUTPUT_QUIET
  ERROR_VARIABLE refusal)
string(REGEX REPLACE "[ \n]+" " " refusal "${refusal}") # CMake breaks lines
if(result EQUAL 0 OR NOT refusal MATCHES "TQ_OBJ_ADAPTER names ${WORK}/nowhere.c, which is no")
  message(FATAL_ERROR "an adapter that is not there was taken: ${refusal}")
endif()
