-- The variables TQ_WATCH and TQ_WATCH_CLIENT, and loading the library.
local luaunit = require "luaunit"
local stage = require "stage"

TestEnvironment = {}

local client = os.getenv "TQ_WATCH_CLIENT"
-- A sanitizer's library must come first in a process, so nothing can be preloaded there; an emulator takes the variable
-- of its guest as an option.
local command = os.getenv "TQ_LUA"
local can_preload = not command:find("lua_host", 1, true) and not command:find("qemu", 1, true)

local function preload(settings)
  return "LD_PRELOAD=" .. package.searchpath("libtq_mom_watch", package.cpath) .. " " .. settings
end

local script = [[
require "tq_watch"
local tq, tq_obj = require "tq_mom_sync", require "tq_obj"
local g = tq.tq_global_init(nil, nil)
tq.client_connect(g, 0)
local result = tq.smembers(g, 4, tq_obj.new("s"))
tq.set(g, 4, tq_obj.new("port/1", "up"))
]]
local finish = [[
tq.smembers_res_free(result)
tq.tq_global_finish(g)
]]

local function times_removed(text) return (text:gsub("%[%d+ us%]", "[us]"):gsub("after [%d.]+ s", "after a while")) end

function TestEnvironment:test_trace()
  local status, text = stage.run("TQ_WATCH=trace", script)
  luaunit.assertEquals({status, times_removed(text)}, {0, table.concat({
    stage.line(3) .. ": tq_global_init(nil, nil) = g [us]\n",
    stage.line(4) .. ": client_connect(g, 0) = 0 [us]\n",
    stage.line(5) .. ': smembers(g, 4, "s") = tq_mom_smembers_res_t{value_array={}} [us]\n',
    stage.line(6) .. ': set(g, 4, "port/1" = "up") = 0 [us]\n',
  })})
end

function TestEnvironment:test_trace_to_a_file()
  local name = os.tmpname()
  local status, text = stage.run("TQ_WATCH=json,trace:" .. name, script .. finish)
  luaunit.assertEquals({status, text}, {0, ""})
  local lines = stage.read_file(name)
  os.remove(name)
  luaunit.assertEquals(select(2, lines:gsub("\n", "")), 6)
  luaunit.assertStrContains(lines, '{"call":"set","db":4,"key":"port/1","arguments":["\\"port/1\\" = \\"up\\""],"result":0,')
  status, text = stage.run("TQ_WATCH=trace:/none/file", "")
  luaunit.assertEquals({status, text}, {0, "libtq_mom_watch: TQ_WATCH: /none/file: No such file or directory\n"})
end

-- Without the Lua module nobody tells the line; all else is as with it.
function TestEnvironment:test_trace_without_the_lua_module()
  local status, text = stage.run("TQ_WATCH=trace", script:gsub("^[^\n]*", "") .. finish)
  luaunit.assertEquals(status, 0)
  luaunit.assertStrContains(times_removed(text), 'client_connect(g, 0) = 0 [us]\nsmembers(g, 4, "s") = ')
end

function TestEnvironment:test_summary()
  local status, text = stage.run("TQ_WATCH=summary", script .. finish)
  luaunit.assertEquals(status, 0)
  luaunit.assertStrMatches(text, "call +calls +failures +microseconds\n.*smembers +1 +0 +%d+\n.*")
  luaunit.assertEquals(select(2, text:gsub("\n", "")), 7)
end

function TestEnvironment:test_leaks()
  local leaks = table.concat {
    stage.line(3) .. ": tq_global_t of tq_global_init is not released after a while\n",
    stage.line(5) .. ': tq_mom_smembers_res_t of smembers "s" is not released after a while\n',
  }
  local status, text = stage.run("TQ_WATCH=leaks", script)
  luaunit.assertEquals({status, times_removed(text)}, {0, leaks})
  status, text = stage.run("TQ_WATCH=leaks:3", script)
  luaunit.assertEquals({status, times_removed(text)}, {3, leaks})
  luaunit.assertEquals({stage.run("TQ_WATCH=leaks:3", script .. finish)}, {0, ""})
end

function TestEnvironment:test_several_words()
  local _, text = stage.run("TQ_WATCH=,summary,leaks,trace", script)
  luaunit.assertStrContains(text, "tq_global_init(nil, nil) = g")
  luaunit.assertStrContains(text, "failures")
  luaunit.assertStrContains(text, "is not released")
end

function TestEnvironment:test_words_that_mean_nothing()
  local _, text = stage.run("TQ_WATCH=traces", "")
  luaunit.assertEquals(text,
    "libtq_mom_watch: TQ_WATCH: 'traces' is none of trace[:FILE], json, summary, leaks[:STATUS], guard[:COUNT]\n")
end

function TestEnvironment:test_words_with_wrong_numbers()
  local _, text = stage.run("TQ_WATCH=leaks:x,leaks:256,guard:0", "")
  luaunit.assertEquals(text, "libtq_mom_watch: TQ_WATCH: leaks: number from 0 to 255 expected, got 'x'\n" ..
    "libtq_mom_watch: TQ_WATCH: leaks: number from 0 to 255 expected, got '256'\n" ..
    "libtq_mom_watch: TQ_WATCH: guard: number from 1 to 1000000 expected, got '0'\n")
end

local require_watch = 'local ok, message = pcall(require, "tq_watch") print(ok, message)'

function TestEnvironment:test_no_watch_library()
  local _, text = stage.run("", require_watch, true)
  luaunit.assertEquals(text, "false\ttq_watch: libtq_mom_watch.so is not loaded: put it before the client library, " ..
    "with LD_PRELOAD or scripts/lua --watch\n")
end

function TestEnvironment:test_no_client_library()
  local load_watch = 'package.loadlib(package.searchpath("libtq_mom_watch", package.cpath), "*")\n'
  local problem = "no client library comes after this one; TQ_WATCH_CLIENT can name it\n"
  local _, text = stage.run("env -u TQ_WATCH_CLIENT", load_watch .. require_watch, true)
  luaunit.assertEquals(text, "libtq_mom_watch: " .. problem .. "false\ttq_watch: " .. problem)
  _, text = stage.run("TQ_WATCH_CLIENT=/none/client.so", load_watch .. require_watch, true)
  luaunit.assertStrContains(text, "libtq_mom_watch: TQ_WATCH_CLIENT: /none/client.so: cannot open")
  luaunit.assertStrContains(text, "false\ttq_watch: TQ_WATCH_CLIENT: /none/client.so: cannot open")
end

function TestEnvironment:test_a_client_library_without_functions()
  local _, text = stage.run("TQ_WATCH_CLIENT=libm.so.6", require_watch)
  local problem = "TQ_WATCH_CLIENT: the library has no client functions\n"
  luaunit.assertEquals(text, "libtq_mom_watch: " .. problem .. "false\ttq_watch: " .. problem)
end

function TestEnvironment:test_a_client_library_that_came_first()
  local _, text = stage.run("", [[
package.loadlib(os.getenv "TQ_WATCH_CLIENT", "*")
package.loadlib(package.searchpath("libtq_mom_watch", package.cpath), "*")
]] .. require_watch, true)
  luaunit.assertEquals(text, "false\ttq_watch: the process has client functions from before libtq_mom_watch.so\n")
end

function TestEnvironment:test_preloaded()
  if not can_preload then luaunit.skip("nothing can be preloaded here") end
  local status, text = stage.run(preload "TQ_WATCH=trace", script .. finish, true)
  luaunit.assertEquals(status, 0)
  luaunit.assertEquals(times_removed(text):match("[^\n]*\n"), "script:3: tq_global_init(nil, nil) = g [us]\n")
  luaunit.assertEquals(select(2, text:gsub("\n", "")), 6)
end

-- A client library that the process has from the start is found without being named.
function TestEnvironment:test_preloaded_before_the_client_library()
  if not can_preload then luaunit.skip("nothing can be preloaded here") end
  local libraries = string.format("LD_PRELOAD='%s %s'", package.searchpath("libtq_mom_watch", package.cpath), client)
  local status, text = stage.run("env -u TQ_WATCH_CLIENT TQ_WATCH=trace " .. libraries, script .. finish, true)
  luaunit.assertEquals(status, 0)
  luaunit.assertEquals(select(2, text:gsub("\n", "")), 6)
end

stage.finish()
