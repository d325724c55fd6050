# cpack: Debian packages whose module runs from where they are unpacked.
cmake_minimum_required(VERSION 3.25)
include(${SCRIPTS}/common.cmake)
run(${CPACK} --config ${BUILD}/CPackConfig.cmake -B ${WORK})
set(module_package ${WORK}/lua-tq-mom-sync_${VERSION}_${ARCHITECTURE}.deb)
set(development_package ${WORK}/lua-tq-mom-sync-dev_${VERSION}_${ARCHITECTURE}.deb)
expect_file(${module_package})
expect_file(${development_package})

run(dpkg-deb --field ${module_package})
foreach(field IN ITEMS "Package: lua-tq-mom-sync\n" "Architecture: ${ARCHITECTURE}\n" "Version: ${VERSION}\n"
                       "Depends: libc6 \\(>= 2\\.[0-9.]+\\)\n" "Maintainer: .+ <.+@.+>\n" "Section: interpreters\n"
                       "Description: Lua 5.3 module")
  if(NOT "\n${RUN_OUTPUT}" MATCHES "\n${field}")
    message(FATAL_ERROR "no ${field} in:\n${RUN_OUTPUT}")
  endif()
endforeach()
run(dpkg-deb --field ${development_package} Depends)
if(NOT RUN_OUTPUT STREQUAL "lua-tq-mom-sync (= ${VERSION})\n")
  message(FATAL_ERROR "the development package depends on: ${RUN_OUTPUT}")
endif()

run(dpkg -x ${module_package} ${WORK}/root)
expect_file(${WORK}/root/usr/share/doc/lua-tq-mom-sync/copyright)
# Debian's Lua looks here.
run_module(${WORK}/root/usr/lib/lua/5.3)
run(${READELF} --sections --wide ${WORK}/root/usr/lib/lua/5.3/tq_mom_sync.so)
if(RUN_OUTPUT MATCHES "\\.symtab")
  message(FATAL_ERROR "the packaged module is not stripped")
endif()
run(dpkg -x ${development_package} ${WORK}/root)
expect_file(${WORK}/root/usr/include/tq_mom/tq_mom.h)
expect_file(${WORK}/root/usr/share/lua-tq-mom-sync/editor/tq_mom_sync.lua)
expect_file(${WORK}/root/usr/lib/cmake/tq_mom_sync/tq_mom_syncConfig.cmake)
