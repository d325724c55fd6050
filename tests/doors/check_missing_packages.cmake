# Without the packages that the tests need, the build does without tests, or says what is missing if tests are required.
cmake_minimum_required(VERSION 3.25)
include(${SCRIPTS}/../package/common.cmake)

# Hides Debian's copies of googletest and luaunit from find_path() and find_file().
set(configure ${CMAKE_COMMAND} -G Ninja -S ${SOURCE} -DCMAKE_IGNORE_PATH=/usr/src/googletest
    -DCMAKE_SYSTEM_IGNORE_PATH=/usr/share/lua/5.3)

run(${configure} -B ${WORK}/optional)
if(NOT RUN_OUTPUT MATCHES "Leaving out the tests; scripts/setup --tests installs what they need")
  message(FATAL_ERROR "the configuration does not say that it leaves out the tests:\n${RUN_OUTPUT}")
endif()
run(${CMAKE_CTEST_COMMAND} --test-dir ${WORK}/optional --show-only)
if(NOT RUN_OUTPUT MATCHES "Total Tests: 0")
  message(FATAL_ERROR "there are tests:\n${RUN_OUTPUT}")
endif()

expect_refusal(
  "The tests need what scripts/setup --tests installs; missing:.*TQ_GOOGLETEST_DIR is .*TQ_LUAUNIT_PATH is "
  ${configure} -B ${WORK}/required -DTQ_REQUIRE_TESTS=ON)
