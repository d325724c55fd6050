-- What loading the module does, and the global helper functions.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq
local path = support.module_path

local kChunk = [[

    tq_mom_sync.TQ_MOM_OK = 0
    tq_mom_sync.TQ_MOM_ERR = -1
    tq_mom_sync.TQ_MOM_INPUT_ERR = -2
    tq_mom_sync.TQ_MOM_MALLOC_ERR = -3
    tq_mom_sync.TQ_MOM_NO_READY = -4
    tq_mom_sync.TQ_MOM_GLOBAL_DB_NO_WRITE = -5]]

local kStatuses = {
  TQ_MOM_OK = 0, TQ_MOM_ERR = -1, TQ_MOM_INPUT_ERR = -2, TQ_MOM_MALLOC_ERR = -3, TQ_MOM_NO_READY = -4,
  TQ_MOM_GLOBAL_DB_NO_WRITE = -5,
}

TestStartup = {}

function TestStartup:tearDown()
  tq_mom_sync = tq
end

function TestStartup:test_the_module_is_a_global()
  luaunit.assertIs(rawget(_G, "tq_mom_sync"), tq)
  luaunit.assertIs(package.loaded.tq_mom_sync, tq)
  luaunit.assertIs(require "tq_mom_sync", tq)
end

function TestStartup:test_status_codes()
  for name, value in pairs(kStatuses) do
    luaunit.assertEquals(rawget(tq, name), value)
    luaunit.assertEquals(math.type(tq[name]), "integer")
  end
end

function TestStartup:test_the_chunk_is_exported()
  luaunit.assertEquals(#kChunk, 223)
  local variable = recorder.symbol(path, "luaopen_tq_mom_sync_luacode")
  luaunit.assertNotNil(variable)
  luaunit.assertEquals(recorder.read_text(support.peek(variable, "T")), kChunk)
end

local function run_hook()
  return recorder.stderr_of(function()
    return select("#", recorder.call_hook(recorder.symbol(path, "luaopen_tq_mom_sync_user")))
  end)
end

function TestStartup:test_the_hook_sets_the_status_codes()
  tq.TQ_MOM_OK, tq.TQ_MOM_GLOBAL_DB_NO_WRITE = nil, 17
  luaunit.assertEquals({run_hook()}, {"", true, 0})
  for name, value in pairs(kStatuses) do luaunit.assertEquals(tq[name], value) end
end

function TestStartup:test_the_hook_gives_a_loader_nothing()
  local loader = package.loadlib(path, "luaopen_tq_mom_sync_user")
  luaunit.assertEquals(select("#", loader("tq_mom_sync.user", path)), 0)
end

-- The codes go into whatever the global names at that time.
function TestStartup:test_the_hook_reaches_the_module_through_the_global()
  tq_mom_sync = {}
  luaunit.assertEquals({run_hook()}, {"", true, 0})
  luaunit.assertEquals(tq_mom_sync, kStatuses)
end

function TestStartup:test_a_failing_hook_is_reported_and_leaves_the_stack()
  tq_mom_sync = nil
  local text, ok, results = run_hook()
  luaunit.assertEquals({ok, results}, {true, 0})
  luaunit.assertStrMatches(text, "[^\n]*attempt to index a nil value %(global 'tq_mom_sync'%)\n")
end

function TestStartup:test_codes_before_the_failing_line_stay()
  tq_mom_sync = setmetatable({}, {
    __newindex = function(t, name, value)
      if name == "TQ_MOM_MALLOC_ERR" then error("out of luck", 0) end
      rawset(t, name, value)
    end,
  })
  local text, ok, results = run_hook()
  luaunit.assertEquals({text, ok, results}, {"out of luck\n", true, 0})
  luaunit.assertEquals(rawget(tq_mom_sync, "TQ_MOM_INPUT_ERR"), -2)
  luaunit.assertNil(rawget(tq_mom_sync, "TQ_MOM_MALLOC_ERR"))
  luaunit.assertNil(rawget(tq_mom_sync, "TQ_MOM_NO_READY"))
end

-- The error value is written as a string where it converts to one.
function TestStartup:test_a_number_as_error_value()
  tq_mom_sync = setmetatable({}, {__newindex = function() error(42) end})
  local text = run_hook()
  luaunit.assertEquals(text, "42\n")
end

local open = assert(package.loadlib(path, "luaopen_tq_mom_sync"))

function TestStartup:test_a_second_start_up_builds_a_fresh_module()
  local metatable = debug.getregistry().SWIG.get_op_t
  local head = debug.getregistry().swig_runtime_data_type_pointer4
  local old_static = tq.get_op_t
  local object = tq.get_op_t()
  local results = table.pack(open("ignored", nil))
  luaunit.assertEquals(results.n, 1)
  local fresh = results[1]
  luaunit.assertNotIs(fresh, tq)
  luaunit.assertIs(tq_mom_sync, fresh)
  luaunit.assertIs(package.loaded.tq_mom_sync, tq)
  luaunit.assertIs(debug.getregistry().swig_runtime_data_type_pointer4, head)
  luaunit.assertEquals(support.peek(recorder.address(head) + 2 * recorder.word, "T"), recorder.address(head))
  luaunit.assertIs(debug.getregistry().SWIG.get_op_t, metatable)
  luaunit.assertNotIs(fresh.get_op_t, old_static)
  luaunit.assertIs(metatable[".static"], fresh.get_op_t)
  luaunit.assertIs(getmetatable(fresh.get_op_t)[".instance"], metatable)
  luaunit.assertEquals(fresh.TQ_MOM_GLOBAL_DB_NO_WRITE, -5)
  object.flag = 3
  luaunit.assertEquals(object.flag, 3)
  luaunit.assertTrue(debug.getmetatable(fresh.get_op_t()) == metatable)
  -- The helper functions are put back, too.
  swig_type = nil
  open()
  luaunit.assertEquals(swig_type(1), "number")
end

-- The class table survives what a script left in the registry.
function TestStartup:test_the_registry_entries_of_a_new_interpreter()
  local ok, result = recorder.in_new_state [[
    local recorder = require "recorder"
    debug.getregistry().SWIG = "no table"
    local tq = require "tq_mom_sync"
    local classes = debug.getregistry().SWIG
    assert(type(classes) == "table" and classes[".library"].inheritable_metamethods.__gc == false)
    assert(type(debug.getregistry().swig_runtime_data_type_pointer4) == "userdata")
    assert(tq == tq_mom_sync and tq.TQ_MOM_GLOBAL_DB_NO_WRITE == -5 and tq.TQ_MOM_INNER_DB == 37)
    local o = tq.psetex_op_t()
    o.milseconds = 12
    assert(o.milseconds == 12 and getmetatable(o) == classes.psetex_op_t)
    assert(tq.psetex_ext(nil, 0, o, nil) == 0.0)
    return "fine"
  ]]
  luaunit.assertEquals({ok, result}, {true, "fine"})
end

function TestStartup:test_a_null_or_foreign_ring_entry_is_replaced()
  for _, entry in ipairs {"recorder.light(0)", "'text'", "io.stdout"} do
    local ok, result = recorder.in_new_state(string.format([[
      local recorder = require "recorder"
      local registry = debug.getregistry()
      registry.swig_runtime_data_type_pointer4 = %s
      local tq = require "tq_mom_sync"
      assert(recorder.address(registry.swig_runtime_data_type_pointer4) ~= 0)
      assert(recorder.size(registry.swig_runtime_data_type_pointer4) == 0)
      return swig_type(tq.get_op_t())
    ]], entry))
    luaunit.assertEquals({ok, result}, {true, "struct tq_mom_get_op_s *|tq_mom_get_op_s *|tq_mom_get_op_t *"})
  end
end

-- Loading writes raw: a guarded global table does not get in the way.
function TestStartup:test_a_guarded_global_table()
  local ok, result = recorder.in_new_state [[
    require "recorder"
    setmetatable(_G, {__newindex = function(_, name) error("assigned " .. name) end})
    local tq = require "tq_mom_sync"
    return rawget(_G, "tq_mom_sync") == tq and rawget(_G, "swig_type") ~= nil and rawget(_G, "swig_equals") ~= nil
  ]]
  luaunit.assertEquals({ok, result}, {true, "true"})
end

function TestStartup:test_loading_uses_no_native_heap()
  recorder.reset()
  open()
  luaunit.assertEquals(recorder.requests(), {})
end

TestHelpers = {}

function TestHelpers:test_type_names()
  luaunit.assertEquals(swig_type(1), "number")
  luaunit.assertEquals(swig_type(1.5), "number")
  luaunit.assertEquals(swig_type("x"), "string")
  luaunit.assertEquals(swig_type(nil), "nil")
  luaunit.assertEquals(swig_type(true), "boolean")
  luaunit.assertEquals(swig_type({}), "table")
  luaunit.assertEquals(swig_type(print), "function")
  luaunit.assertEquals(swig_type(coroutine.create(print)), "thread")
  luaunit.assertEquals(swig_type(), "no value")
  luaunit.assertEquals(swig_type(tq.get_op_t()), "struct tq_mom_get_op_s *|tq_mom_get_op_s *|tq_mom_get_op_t *")
  luaunit.assertEquals(swig_type(support.handle("_p_void", 1)), "void *")
  luaunit.assertEquals(swig_type(1, {}), "number")
end

function TestHelpers:test_type_name_of_foreign_userdata()
  for _, foreign in ipairs(support.foreign_values) do
    luaunit.assertEquals(swig_type(foreign[2]), "userdata (unknown type)")
  end
end

function TestHelpers:test_equality()
  local record = tq.tq_mom_get_res_t()
  local pointer = support.pointer_of(record)
  luaunit.assertEquals(table.pack(swig_equals(record, tq.convertPtrToListRes(record))), {true, n = 1})
  luaunit.assertEquals(table.pack(swig_equals(record, tq.tq_mom_get_res_t())), {false, n = 1})
  luaunit.assertTrue(swig_equals(record, recorder.handle(0, 0, pointer)))
  luaunit.assertTrue(swig_equals(record, record))
  luaunit.assertTrue(swig_equals(support.handle("_p_void", 7, 1), support.handle("_p_double", 7, 0)))
end

function TestHelpers:test_equality_of_other_values()
  local record = tq.tq_mom_get_res_t()
  for _, plain in ipairs(support.plain_values) do
    luaunit.assertEquals(select("#", swig_equals(record, plain[2])), 0)
    luaunit.assertEquals(select("#", swig_equals(plain[2], record)), 0)
  end
  luaunit.assertEquals(select("#", swig_equals()), 0)
  luaunit.assertEquals(select("#", swig_equals(record)), 0)
  luaunit.assertEquals(select("#", swig_equals(nil, nil)), 0)
  for _, no_handle in ipairs {support.light, support.short_block, support.two_word_block} do
    luaunit.assertEquals(select("#", swig_equals(record, no_handle)), 0)
    luaunit.assertEquals(select("#", swig_equals(no_handle, no_handle)), 0)
  end
end

support.run()
