-- A client library that is not the host kit's.
local luaunit = require "luaunit"
local stage = require "stage"

TestForeign = {}

local settings = "TQ_WATCH_CLIENT=" .. assert(package.searchpath("libforeign_client", package.cpath))

local script = [[
assert(package.loadlib(package.searchpath("libtq_mom_watch", package.cpath), "*"))
assert(package.loadlib(os.getenv "TQ_WATCH_CLIENT", "*"))
local tq, watch = require "tq_mom_sync", require "tq_watch"
local g = tq.tq_global_init(nil, nil)
]]

-- Runs the chunk after the script; returns what it wrote, without the library's word on missing functions.
local function run(chunk, more)
  local status, text = stage.run(settings .. " " .. (more or ""), script .. chunk, true)
  luaunit.assertStrContains(text, "libtq_mom_watch: the client library has no tq_global_get_master tq_global_run ")
  return text:gsub("^[^\n]*\n", ""), status
end

-- The library calls lrange for lrange_ext, by way of the process.
function TestForeign:test_calls_inside_the_library()
  luaunit.assertEquals((run [[
watch.trace(function(call) print((call.text:gsub(" %[.*", ""))) end)
local result = tq.lrange_ext(g, 1, nil, nil, 0, -1)
watch.trace(nil)
print(watch.summary().lrange, #watch.live())
]]:gsub("%(0?x?%x+%)", "(address)")), "script:6: lrange_ext(g, 1, nil, nil, 0, -1) = " ..
    "tq_mom_lrange_res_t{value_array={tq_obj(address), tq_obj(address)}}\nnil\t2\n")
end

-- This library's runtime is always the same one.
function TestForeign:test_a_runtime_that_is_begun_again()
  luaunit.assertEquals((run [[
tq.tq_global_init(nil, nil)
print(#watch.live(), tq.tq_global_finish(g), #watch.live())
]]), "1\t0.0\t0\n")
end

-- The record that a fault makes never reaches the library, and what the library made does.
function TestForeign:test_faults()
  luaunit.assertEquals(run [[
watch.fault {call = "lrange", status = -4, times = 1}
watch.fault {call = "lrange", status = -1, times = 1, after_call = true}
for _ = 1, 3 do
  local result = tq.lrange(g, 1, nil, 0, -1)
  print(result.error_code, #result.value_array, tq.lrange_res_free(result))
end
print(#watch.live(), pcall(watch.fault, {call = "lrange", key = "x", status = -1}))
]], "-4.0\t0\t0.0\n-1.0\t0\t0.0\n0.0\t2\t0.0\n1\tfalse\tscript:11: bad field 'key' of tq_watch.fault: " ..
    "the client library does not tell keys\n")
end

function TestForeign:test_functions_that_it_has_not()
  local text, status = run [[
tq.tq_global_run(g)
]]
  luaunit.assertStrContains(text, "libtq_mom_watch: tq_global_run was called, which the client library has not\n")
  luaunit.assertNotEquals(status, 0)
end

-- The guard gives the script copies; the library gets its own records back, when the guard has no use for them any more.
function TestForeign:test_guard()
  luaunit.assertEquals(run [[
watch.guard(true)
local kept = tq.lrange(g, 1, nil, 0, -1)
for _ = 1, 2 do
  local result = tq.lrange(g, 1, nil, 0, -1)
  io.write(#result.value_array, " ", tq.llen(g, 1, result.value_array[2]), " ")
  io.write(tq.lrange_res_free(result), " ", tq.debug_show_all(g), "\n")
end
watch.guard(false)
print(tq.debug_show_all(g), #kept.value_array, tq.lrange_res_free(kept), tq.debug_show_all(g))
]], "2 2 0 2\n2 2 0 3\n1.0\t2\t0.0\t0.0\n")
end

function TestForeign:test_guard_finds_uses()
  local text = run [[
watch.guard(true)
local result = tq.lrange(g, 1, nil, 0, -1)
local element = result.value_array[1]
tq.lrange_res_free(result)
tq.llen(g, 1, element)
]]
  luaunit.assertStrContains(text, "a tq_mom_lrange_res_t is used after its release")
  luaunit.assertStrContains(text, "script:9: llen\n")
end

stage.finish()
