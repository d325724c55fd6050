rockspec_format = "3.0"
package = "tq_mom_sync"
version = "1.0.0-1"
-- "luarocks make" builds the checkout it is run in; the archive is for those who publish one.
source = {
  url = "file://tq_mom_sync-1.0.0.tar.gz",
}
description = {
  summary = "Lua 5.3 module for a device's data store",
  detailed = [[
Key-value, hash, list, set and sorted-set commands, publishing and scans of the store, called synchronously from Lua
scripts. The process that loads the module provides the client library of the store.]],
  license = "MIT",
}
supported_platforms = { "linux" }
dependencies = {
  "lua >= 5.3, < 5.4",
}
build = {
  type = "cmake",
  variables = {
    CMAKE_BUILD_TYPE = "MinSizeRel",
    CMAKE_INSTALL_PREFIX = "$(PREFIX)",
    TQ_LUA_CMOD_DIR = "$(LIBDIR)",
    TQ_LUA_INCLUDE_DIR = "$(LUA_INCDIR)",
    TQ_INSTALL_DEVELOPMENT = "OFF",
    TQ_BUILD_HOSTKIT = "OFF",
    TQ_BUILD_TESTS = "OFF",
    TQ_BUILD_BENCH = "OFF",
  },
}
