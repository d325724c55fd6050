-- Key and string commands.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestStrings = {}

function TestStrings:setUp()
  self.global = tq.tq_global_t()
  self.key = tq.get_op_t()
  self.blocks = support.settled_blocks()
  recorder.reset()
end

function TestStrings:tearDown()
  luaunit.assertEquals(support.settled_blocks(), self.blocks)
end

function TestStrings:test_one_argument_too_many()
  support.raises("Error in tq_mom_get_sync expected 3..3 args, got 4", tq.get, self.global, 0, self.key, "extra")
end

function TestStrings:test_kind_and_conversion_messages_differ()
  support.raises("Error in tq_mom_get_sync (arg 1), expected 'tq_global_t *' got 'string'", tq.get, "x", 0, self.key)
  support.raises("Error in get (arg 1), expected 'struct tq_global_s *|tq_global_s *|tq_global_t *' got " ..
    "'struct tq_mom_get_op_s *|tq_mom_get_op_s *|tq_mom_get_op_t *'", tq.get, self.key, 0, self.key)
end

function TestStrings:test_null_pointers()
  tq.get(nil, 0, nil)
  local call = support.only_call()
  luaunit.assertEquals({call[1], call[2], call[3], #call}, {0, 0, 0, 3})
end

function TestStrings:test_database_numbers()
  tq.get(self.global, 1.9, self.key)
  tq.get(self.global, -1.9, self.key)
  tq.get(self.global, "2", self.key)
  local calls = recorder.calls()
  luaunit.assertEquals({calls[1][2], calls[2][2], calls[3][2]}, {1, -1, 2})
end

function TestStrings:test_keys_are_unchecked()
  local keys = {"text", 5, {}, true, print, self.global, support.handle("_p_double", 0x99), nil}
  for i = 1, 8 do tq.set(self.global, 0, keys[i]) end
  local got = {}
  for i, call in ipairs(recorder.calls()) do got[i] = call[3] end
  luaunit.assertEquals(got, {0, 0, 0, 0, 0, support.pointer_of(self.global), 0x99, 0})
end

function TestStrings:test_negative_times()
  support.raises("number must not be negative", tq.pdel, self.global, 0, self.key, -1)
  support.raises("number must not be negative", tq.pdel, self.global, 0, self.key, 0 / 0)
  support.raises("number must not be negative", tq.pdel, self.global, 0, self.key, -0.5)
  support.no_call()
  tq.pdel(self.global, 0, self.key, -0.0)
  luaunit.assertEquals(support.only_call()[4], 0)
end

function TestStrings:test_timeouts()
  tq.pexpire(self.global, 0, self.key, 100, 1.25)
  tq.pexpire(self.global, 0, self.key, 100, "x")
  tq.pexpire(self.global, 0, self.key, 100, -2.75)
  local calls = recorder.calls()
  luaunit.assertEquals(calls[1][5], {seconds = 1, microseconds = 250000})
  luaunit.assertEquals(calls[2][5], {seconds = 0, microseconds = 0})
  luaunit.assertEquals(calls[3][5], {seconds = -2, microseconds = -750000})
end

function TestStrings:test_field_arrays()
  tq.pexpire_fields(self.global, 0, self.key, 10, {}, 1)
  tq.pexpire_fields(self.global, 0, self.key, 10, {7, -8}, 1)
  local calls = recorder.calls()
  luaunit.assertEquals({calls[1][5], calls[1][6]}, {{address = 0}, 0})
  calls[2][5].address = nil
  luaunit.assertEquals({calls[2][5], calls[2][6], calls[2][7]}, {{7, -8}, 2, {seconds = 1, microseconds = 0}})
end

function TestStrings:test_wrong_field_arrays()
  support.raises_bare("input error, errcode_3", tq.pexpire_fields, self.global, 0, self.key, 10, {1, 2.0}, 1)
  support.raises_bare("input error, errcode_1", tq.pexpire_fields, self.global, 0, self.key, 10, "fields", 1)
  recorder.fail_request(1)
  support.raises_bare("memory error", tq.pexpire_fields, self.global, 0, self.key, 10, {1}, 1)
  support.no_call()
end

-- The field list is looked at after the time, so a bad time is what is reported.
function TestStrings:test_order_of_conversions()
  support.raises("number must not be negative", tq.pexpire_fields, self.global, 0, self.key, -1, "fields", 1)
  support.raises("Error in pexpire_field (arg 1), expected 'struct tq_global_s *|tq_global_s *|tq_global_t *' got " ..
    "'tq_thread_u *'", tq.pexpire_field, tq.tq_thread_u(), 0, self.key, -1, -1, 0)
  support.raises("Error in tq_mom_pexpire_field_sync (arg 5), expected 'size_t' got 'nil'", tq.pexpire_field,
    tq.tq_thread_u(), 0, self.key, -1, nil, 0)
end

function TestStrings:test_the_option_type_of_setnx_noreply_ext()
  local option = tq.set_op_t()
  option.flag = 2
  tq.setnx_noreply_ext(self.global, 0, option, self.key)
  luaunit.assertEquals(support.only_call().op.flag, 2)
  support.raises("Error in tq_mom_setnx_noreply_ext_sync (arg 3), expected 'tq_mom_set_op_t *' got 'number'",
    tq.setnx_noreply_ext, self.global, 0, 1, self.key)
end

function TestStrings:test_statuses_are_floats()
  support.float(0, tq.set(self.global, 0, self.key))
  luaunit.assertEquals(tostring(tq.set(self.global, 0, self.key)), "0.0")
end

function TestStrings:test_null_results()
  luaunit.assertEquals(table.pack(tq.get_ext(self.global, 0, nil, self.key)), {n = 1})
  luaunit.assertEquals(table.pack(tq.incr(self.global, 0, self.key)), {n = 1})
  recorder.returns("tq_mom_get_sync", 0, -4)
  local results = table.pack(tq.get(self.global, 0, self.key))
  luaunit.assertEquals(results, {nil, -4.0, n = 2})
  luaunit.assertEquals(math.type(results[2]), "float")
end

function TestStrings:test_values()
  local value = recorder.alloc(8)
  recorder.returns("tq_mom_get_sync", value, 0)
  local object, code = tq.get(self.global, 0, self.key)
  support.is_handle(object, "tq_obj *", value)
  support.float(0, code)
  luaunit.assertEquals(tq.tq_obj_free(object), 0.0)
  luaunit.assertEquals(recorder.calls()[2][1], value)
  object = nil
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(value))
  recorder.free(value)
end

function TestStrings:test_results_are_freed_by_their_release_function_only()
  for _, row in ipairs {
    {"incr", "tq_mom_incr_sync", "incr_res_free", "tq_mom_incr_res_free"},
    {"get_ext", "tq_mom_get_ext_sync", "get_res_free", "tq_mom_get_res_free"},
  } do
    recorder.reset()
    local record = recorder.alloc(16)
    recorder.returns(row[2], record)
    local result = row[1] == "incr" and tq.incr(self.global, 0, self.key) or tq.get_ext(self.global, 0, nil, self.key)
    recorder.returns(row[4], -1)
    support.float(-1, tq[row[3]](result))
    luaunit.assertEquals(recorder.calls()[2].name, row[4])
    luaunit.assertEquals(recorder.calls()[2][1], record)
    result = nil
    collectgarbage()
    luaunit.assertTrue(recorder.is_live(record))
    recorder.free(record)
  end
end

function TestStrings:test_release_functions_check_their_argument()
  support.raises("Error in tq_mom_get_res_free (arg 1), expected 'tq_mom_get_res_t *' got 'number'", tq.get_res_free, 1)
  support.raises("Error in tq_mom_incr_res_free expected 1..1 args, got 0", tq.incr_res_free)
  support.raises("Error in incr_res_free (arg 1), expected 'struct tq_mom_incr_res_s *|tq_mom_incr_res_s *|" ..
    "tq_mom_incr_res_t *' got 'struct tq_mom_get_op_s *|tq_mom_get_op_s *|tq_mom_get_op_t *'", tq.incr_res_free,
    self.key)
  support.no_call()
  tq.tq_obj_free("text")
  luaunit.assertEquals(support.only_call()[1], 0)
end

-- The handle of a result may fail to be made; nothing of the module's own is lost with it.
function TestStrings:test_out_of_lua_memory()
  recorder.returns("tq_mom_get_sync", 0x10, 0)
  local n = 0
  repeat
    n = n + 1
    local failed, ok, message = recorder.without_memory(n, tq.get, self.global, 0, self.key)
    if failed then luaunit.assertEquals({ok, message}, {false, "not enough memory"}) end
  until not failed
  luaunit.assertTrue(n > 1)
end

support.run()
