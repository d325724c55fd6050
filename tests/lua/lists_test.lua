-- List commands.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestLists = {}

function TestLists:setUp()
  recorder.reset()
  self.global = tq.tq_global_t()
  self.key = tq.get_op_t()
end

function TestLists:test_popping_from_an_empty_list()
  for _, side in ipairs {"lpop", "rpop"} do
    recorder.returns("tq_mom_" .. side .. "_sync", 0, -1)
    local results = table.pack(tq[side](self.global, 0, self.key))
    luaunit.assertEquals(results, {nil, -1.0, n = 2})
    luaunit.assertEquals(math.type(results[2]), "float")
    recorder.returns("tq_mom_" .. side .. "_ext_sync", 0, 12)
    luaunit.assertEquals(table.pack(tq[side .. "_ext"](self.global, 0, nil, self.key)), {nil, 12.0, n = 2})
  end
end

function TestLists:test_popped_values()
  local value = recorder.alloc(8)
  for _, side in ipairs {"lpop", "rpop"} do
    recorder.returns("tq_mom_" .. side .. "_sync", value, 3)
    local object, out = tq[side](self.global, 0, self.key)
    support.is_handle(object, "tq_obj *", value)
    support.float(3, out)
  end
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(value))
  recorder.free(value)
end

function TestLists:test_counts_to_remove()
  support.raises("number must not be negative", tq.lrem, self.global, 0, self.key, -1)
  tq.lrem(self.global, 0, self.key, 2.9)
  luaunit.assertEquals(support.only_call()[4], 2)
  support.raises("Error in tq_mom_lrem_sync (arg 4), expected 'size_t' got 'nil'", tq.lrem, self.global, 0, self.key,
    nil)
  support.raises("Error in tq_mom_lrem_ext_sync (arg 5), expected 'size_t' got 'string'", tq.lrem_ext, self.global, 0,
    nil, self.key, "x")
end

function TestLists:test_inserting()
  local value = tq.set_op_t()
  tq.linsert(self.global, 0, self.key, value, "1")
  local call = support.only_call()
  luaunit.assertEquals({call[3], call[4], call[5]}, {support.pointer_of(self.key), support.pointer_of(value), 1})
  support.raises("Error in tq_mom_linsert_sync (arg 5), expected 'unsigned int' got 'table'", tq.linsert, self.global,
    0, self.key, value, {})
  support.raises("number must not be negative", tq.linsert_ext, self.global, 0, nil, self.key, value, -1)
  recorder.reset()
  tq.linsert(self.global, 0, nil, "text", 0)
  call = support.only_call()
  luaunit.assertEquals({call[3], call[4], call[5]}, {0, 0, 0})
end

function TestLists:test_an_index()
  tq.lset(self.global, 0, self.key, -1.5)
  luaunit.assertEquals(support.only_call()[4], -1)
end

function TestLists:test_ranges()
  tq.lrange_ext(self.global, 0, nil, self.key, 0, -1)
  local call = support.only_call()
  luaunit.assertEquals({call[3], call[4], call[5], call[6]}, {0, support.pointer_of(self.key), 0, -1})
  luaunit.assertNil(call.op)
  luaunit.assertEquals(table.pack(tq.lrange(self.global, 0, self.key, 0, 1)), {n = 1})
  support.raises("Error in tq_mom_lrange_sync (arg 5), expected 'int' got 'nil'", tq.lrange, self.global, 0, self.key,
    0, nil)
end

function TestLists:test_releasing_a_range()
  local record = recorder.alloc(32)
  recorder.returns("tq_mom_lrange_sync", record)
  local result = tq.lrange(self.global, 0, self.key, 0, 1)
  support.is_handle(result, "struct tq_mom_lrange_res_s *|tq_mom_lrange_res_s *|tq_mom_lrange_res_t *", record)
  recorder.reset()
  tq.lrange_res_free(result)
  luaunit.assertEquals(support.only_call()[1], record)
  recorder.reset()
  tq.lrange_res_free(nil)
  luaunit.assertEquals(support.only_call()[1], 0)
  support.raises("Error in tq_mom_lrange_res_free (arg 1), expected 'tq_mom_lrange_res_t *' got 'string'",
    tq.lrange_res_free, "x")
  recorder.free(record)
end

support.run()
