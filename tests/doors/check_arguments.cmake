# What cannot be built is refused at configuration, with a sentence.
cmake_minimum_required(VERSION 3.25)
include(${SCRIPTS}/../package/common.cmake)
set(configure ${CMAKE_COMMAND} -G Ninja -S ${SOURCE} -DTQ_BUILD_TESTS=OFF -DTQ_BUILD_BENCH=OFF)
expect_refusal("/nope, the value of TQ_MOM_INCLUDE_DIR, has no tq_mom/tq_mom.h" ${configure} -B ${WORK}/headers
               -DTQ_MOM_INCLUDE_DIR=/nope)
expect_refusal("/nope, the value of TQ_MOM_IMPL, does not exist" ${configure} -B ${WORK}/library -DTQ_MOM_IMPL=/nope)
expect_refusal("tq_mom_sync needs C\\+\\+20, not C\\+\\+17" ${configure} -B ${WORK}/standard -DCMAKE_CXX_STANDARD=17)
expect_refusal("TQ_HASH_STYLE is gnu, sysv or both, not md5" ${configure} -B ${WORK}/hash -DTQ_HASH_STYLE=md5)
set(includes ${LUA_INCLUDE_DIR})
list(TRANSFORM includes PREPEND -I)
expect_refusal("tq_mom_sync needs C\\+\\+20, not C\\+\\+17" ${CXX} -std=c++17 -fsyntax-only -I${SOURCE} ${includes}
               ${SOURCE}/module/module.cpp)
