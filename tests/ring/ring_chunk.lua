-- The start-up text is a variable of the module: what happens when it fails, or is not there.
local lu = require "luaunit"
local support = require "ring_support"

local codes = { "TQ_MOM_OK", "TQ_MOM_ERR", "TQ_MOM_INPUT_ERR", "TQ_MOM_MALLOC_ERR", "TQ_MOM_NO_READY",
  "TQ_MOM_GLOBAL_DB_NO_WRITE" }

--- Loads the module with another start-up text in a child process, which prints the status codes it finds.
local function load_with(text)
  local literal = text and ("%q"):format(text) or "nil"
  return support.child(([[
    peer.set_start_up_text(support.module_file, %s)
    local module = require "tq_mom_sync"
    assert(type(module) == "table" and module == tq_mom_sync)
    assert(module.get_op_t().flag == 0 and module.TQ_MOM_INNER_DB == 37)
    for _, name in ipairs { "%s" } do
      io.write(tostring(module[name]), " ")
    end
    peer.run_user_hook(support.module_file)
  ]]):format(literal, table.concat(codes, '", "')))
end

local none = "nil nil nil nil nil nil "

TestChunk = {}

function TestChunk:test_as_it_is()
  local result = support.child [[
    local module = require "tq_mom_sync"
    for _, name in ipairs { "OK", "ERR", "INPUT_ERR", "MALLOC_ERR", "NO_READY", "GLOBAL_DB_NO_WRITE" } do
      io.write(module["TQ_MOM_" .. name], " ", math.type(module["TQ_MOM_" .. name]), " ")
    end
  ]]
  lu.assertEquals(result,
    { status = 0, out = "0 integer -1 integer -2 integer -3 integer -4 integer -5 integer ", err = "" })
end

function TestChunk:test_syntax_error_is_one_line_on_stderr()
  local result = load_with "this is no lua"
  lu.assertEquals(result.status, 0)
  lu.assertEquals(result.out, none)
  local line = "[string \"this is no lua\"]:1: syntax error near 'is'\n"
  lu.assertEquals(result.err, line .. line)
end

function TestChunk:test_run_time_error_is_one_line_on_stderr()
  local result = load_with "tq_mom_sync.TQ_MOM_OK = 0 tq_mom_sync.TQ_MOM_ERR = -1 error('stop', 0)"
  lu.assertEquals(result, { status = 0, out = "0 -1 nil nil nil nil ", err = "stop\nstop\n" })
end

function TestChunk:test_error_values_are_converted_to_strings()
  lu.assertEquals(load_with("error(42)"), { status = 0, out = none, err = "42\n42\n" })
end

function TestChunk:test_an_error_value_that_is_no_string_does_not_stop_the_load()
  local result = load_with "error({})"
  lu.assertEquals(result.status, 0)
  lu.assertEquals(result.out, none)
  lu.assertEquals(select(2, result.err:gsub("\n", "")), 2)
end

function TestChunk:test_results_of_the_text_are_dropped()
  lu.assertEquals(load_with("tq_mom_sync.TQ_MOM_OK = 7 return 1, 2, 3"),
    { status = 0, out = "7 nil nil nil nil nil ", err = "" })
end

function TestChunk:test_null_and_empty_do_nothing()
  lu.assertEquals(load_with(nil), { status = 0, out = none, err = "" })
  lu.assertEquals(load_with(""), { status = 0, out = none, err = "" })
end

os.exit(lu.LuaUnit.run(), true)
