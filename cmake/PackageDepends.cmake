# Read by cpack: the module's package depends on the oldest C library that has all the symbol versions it needs.
execute_process(COMMAND ${CPACK_READELF} --version-info --wide ${CPACK_TQ_MODULE} OUTPUT_VARIABLE versions
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "Name: GLIBC_[0-9.]+" versions "${versions}")
set(oldest 2.4)
foreach(version IN LISTS versions)
  string(REPLACE "Name: GLIBC_" "" version ${version})
  if(version VERSION_GREATER oldest)
    set(oldest ${version})
  endif()
endforeach()
set(CPACK_DEBIAN_MODULE_PACKAGE_DEPENDS "libc6 (>= ${oldest})")
