# Installation and packages. The module goes where Lua 5.3 looks for modules under the prefix.
include(CMakePackageConfigHelpers)

set(tq_cmod_default lib/lua/5.3)
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND AND NOT CMAKE_CROSSCOMPILING)
  pkg_get_variable(tq_lua_prefix lua5.3 prefix)
  pkg_get_variable(tq_lua_cmod lua5.3 INSTALL_CMOD)
  # Under another prefix than Lua's own the usual place is right.
  if(tq_lua_cmod AND tq_lua_prefix STREQUAL CMAKE_INSTALL_PREFIX)
    file(RELATIVE_PATH tq_cmod_default ${tq_lua_prefix} ${tq_lua_cmod})
  endif()
endif()
set(TQ_LUA_CMOD_DIR ${tq_cmod_default}
    CACHE STRING "Where the module is installed, absolute or from the prefix")

set(tq_deb_name lua-tq-mom-sync)
set(tq_cmake_dir lib/cmake/tq_mom_sync)

install(TARGETS tq_mom_sync EXPORT tq_mom_sync LIBRARY DESTINATION ${TQ_LUA_CMOD_DIR} COMPONENT module)
install(FILES LICENSE DESTINATION share/doc/${tq_deb_name} RENAME copyright COMPONENT module)
option(TQ_INSTALL_DEVELOPMENT "Install the headers and the CMake package too" ON)
if(TQ_INSTALL_DEVELOPMENT)
  install(TARGETS tq_mom EXPORT tq_mom_sync)
  install(DIRECTORY ${TQ_MOM_INCLUDE_DIR}/tq_mom DESTINATION include COMPONENT development)
  install(EXPORT tq_mom_sync NAMESPACE tq_mom_sync:: DESTINATION ${tq_cmake_dir} FILE tq_mom_syncTargets.cmake
          COMPONENT development)
  configure_package_config_file(cmake/tq_mom_syncConfig.cmake.in tq_mom_syncConfig.cmake INSTALL_DESTINATION ${tq_cmake_dir})
  write_basic_package_version_file(tq_mom_syncConfigVersion.cmake COMPATIBILITY SameMajorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/tq_mom_syncConfig.cmake ${PROJECT_BINARY_DIR}/tq_mom_syncConfigVersion.cmake
          DESTINATION ${tq_cmake_dir} COMPONENT development)
  install(DIRECTORY editor DESTINATION share/${tq_deb_name} COMPONENT development)
  install(FILES LICENSE DESTINATION share/doc/${tq_deb_name}-dev RENAME copyright COMPONENT development)
endif()

# The host kit is no part of a device. Its libraries lie where nothing looks for the device's own; tq-lua knows the place.
if(CMAKE_CROSSCOMPILING OR NOT TQ_BUILD_HOSTKIT)
  set(tq_install_hostkit OFF)
else()
  set(tq_install_hostkit ON)
endif()
option(TQ_INSTALL_HOSTKIT "Install the host kit too" ${tq_install_hostkit})
set(tq_hostkit_dir lib/tq_mom_sync)

# tq_install_hostkit_library(<target>): installs a library or Lua module as a part of the host kit.
function(tq_install_hostkit_library target)
  if(TQ_INSTALL_HOSTKIT)
    install(TARGETS ${target} LIBRARY DESTINATION ${tq_hostkit_dir} COMPONENT hostkit)
  endif()
endfunction()

if(TQ_INSTALL_HOSTKIT)
  cmake_path(ABSOLUTE_PATH TQ_LUA_CMOD_DIR BASE_DIRECTORY "\$prefix" OUTPUT_VARIABLE tq_launcher_modules)
  configure_file(cmake/tq-lua.in tq-lua @ONLY)
  install(PROGRAMS ${PROJECT_BINARY_DIR}/tq-lua DESTINATION bin COMPONENT hostkit)
  install(DIRECTORY include/tq_kit DESTINATION include COMPONENT hostkit)
  install(FILES LICENSE DESTINATION share/doc/${tq_deb_name}-hostkit RENAME copyright COMPONENT hostkit)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The tq_mom_sync authors <tq-mom-sync@localhost>" CACHE STRING "Maintainer of the packages")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL module)
if(TQ_INSTALL_DEVELOPMENT)
  list(APPEND CPACK_COMPONENTS_ALL development)
endif()
if(TQ_INSTALL_HOSTKIT)
  list(APPEND CPACK_COMPONENTS_ALL hostkit)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
if(CMAKE_LIBRARY_ARCHITECTURE STREQUAL arm-linux-gnueabi)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armel)
elseif(CMAKE_LIBRARY_ARCHITECTURE STREQUAL arm-linux-gnueabihf)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
endif()
set(CPACK_DEBIAN_MODULE_PACKAGE_NAME ${tq_deb_name})
set(CPACK_DEBIAN_MODULE_PACKAGE_SECTION interpreters)
set(CPACK_DEBIAN_MODULE_PACKAGE_RECOMMENDS lua5.3)
set(CPACK_COMPONENT_MODULE_DESCRIPTION
    "Key-value, hash, list, set and sorted-set commands, publishing and scans of the
store, called synchronously from Lua scripts. The process that loads the module
provides Lua and the client library of the store.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${tq_deb_name}-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${tq_deb_name} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Declarations of the store's client library that the module binds, and a CMake
package.")
set(CPACK_DEBIAN_HOSTKIT_PACKAGE_NAME ${tq_deb_name}-hostkit)
set(CPACK_DEBIAN_HOSTKIT_PACKAGE_SECTION interpreters)
set(CPACK_DEBIAN_HOSTKIT_PACKAGE_DEPENDS "${tq_deb_name} (= ${PROJECT_VERSION}), lua5.3")
set(CPACK_DEBIAN_HOSTKIT_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_HOSTKIT_DESCRIPTION
    "Stand-in for the client library of a device's data store, the Lua module tq_obj
that makes value objects, and tq-lua, which runs scripts with both.")
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/PackageDepends.cmake)
set(CPACK_READELF ${CMAKE_READELF})
set(CPACK_TQ_MODULE ${PROJECT_BINARY_DIR}/tq_mom_sync.so)
include(CPack)
