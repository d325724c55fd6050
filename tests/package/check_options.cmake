# TQ_MOM_INCLUDE_DIR takes the declarations from elsewhere, TQ_MOM_IMPL links the client library.
cmake_minimum_required(VERSION 3.25)
include(${SCRIPTS}/common.cmake)
file(COPY ${SOURCE}/include/tq_mom DESTINATION ${WORK}/vendor)
run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE} -B ${WORK}/build -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0
    -DTQ_BUILD_HOSTKIT=OFF -DTQ_BUILD_TESTS=OFF -DTQ_BUILD_BENCH=OFF -DTQ_MOM_INCLUDE_DIR=${WORK}/vendor
    -DTQ_MOM_IMPL=${IMPL})
run(${CMAKE_COMMAND} --build ${WORK}/build -j 2)
run_module(${WORK}/build LINKED)
run(ninja -C ${WORK}/build -t deps)
if(RUN_OUTPUT MATCHES "${SOURCE}/include/tq_mom" OR NOT RUN_OUTPUT MATCHES "${WORK}/vendor/tq_mom/tq_mom.h")
  message(FATAL_ERROR "the build read the module's own declarations:\n${RUN_OUTPUT}")
endif()
run(${READELF} --dynamic --wide ${WORK}/build/tq_mom_sync.so)
if(NOT RUN_OUTPUT MATCHES "Shared library: \\[libtq_mom_impl\\.so")
  message(FATAL_ERROR "the module does not need the client library:\n${RUN_OUTPUT}")
endif()
