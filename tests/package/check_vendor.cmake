# A vendor that declares everything in one file: with the host kit off, the module and its tests build and pass.
cmake_minimum_required(VERSION 3.25)
include(${SCRIPTS}/common.cmake)

# inline(<result> <file>): the text of a header with our other headers in place of their inclusions, each once.
set(inlined "")
function(inline result file)
  set(text "")
  if(NOT file IN_LIST inlined)
    list(APPEND inlined ${file})
    file(READ ${SOURCE}/include/${file} text)
    string(REGEX MATCHALL "#include <tq_mom/[a-z]+\\.h>\n" inclusions "${text}")
    foreach(inclusion IN LISTS inclusions)
      string(REGEX REPLACE "#include <(.*)>\n" "\\1" included "${inclusion}")
      inline(inlined_text ${included})
      string(REPLACE "${inclusion}" "${inlined_text}" text "${text}")
    endforeach()
  endif()
  set(inlined ${inlined} PARENT_SCOPE)
  set(${result} "${text}" PARENT_SCOPE)
endfunction()
inline(header tq_mom/tq_mom.h)
if(header MATCHES "#include <tq_mom/" OR NOT header MATCHES "tq_mom_zadd_sync")
  message(FATAL_ERROR "the one header is not whole")
endif()
file(WRITE ${WORK}/vendor/tq_mom/tq_mom.h "${header}")

run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE} -B ${WORK}/build -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0
    -DTQ_BUILD_HOSTKIT=OFF -DTQ_BUILD_BENCH=OFF -DTQ_REQUIRE_TESTS=ON -DTQ_MOM_INCLUDE_DIR=${WORK}/vendor)
run(${CMAKE_COMMAND} --build ${WORK}/build -j 2)
run(${CMAKE_CTEST_COMMAND} --test-dir ${WORK}/build --output-on-failure --no-tests=error -j 2
    --exclude-regex "fuzz|sweeps")
