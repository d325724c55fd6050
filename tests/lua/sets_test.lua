-- Set commands.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestSets = {}

function TestSets:setUp()
  recorder.reset()
  self.global = tq.tq_global_t()
  self.key = tq.get_op_t()
end

function TestSets:test_a_string_is_no_key()
  recorder.returns("tq_mom_sadd_sync", 1)
  support.float(1, tq.sadd(self.global, 0, "member"))
  luaunit.assertEquals(support.only_call()[3], 0)
end

function TestSets:test_a_null_option_record()
  tq.sismember_ext(self.global, 0, nil, self.key)
  local call = support.only_call()
  luaunit.assertEquals({call[3], call[4]}, {0, support.pointer_of(self.key)})
end

function TestSets:test_members()
  luaunit.assertEquals(table.pack(tq.smembers(self.global, 0, self.key)), {n = 1})
  local record = recorder.alloc(32)
  recorder.returns("tq_mom_smembers_ext_sync", record)
  local option = tq.smembers_op_t()
  option.flag = 4
  local result = tq.smembers_ext(self.global, 0, option, self.key)
  support.is_handle(result, "struct tq_mom_smembers_res_s *|tq_mom_smembers_res_s *|tq_mom_smembers_res_t *", record)
  luaunit.assertEquals(recorder.calls()[2].op.flag, 4)
  recorder.reset()
  tq.smembers_res_free(result)
  luaunit.assertEquals(support.only_call()[1], record)
  result = nil
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(record))
  recorder.free(record)
end

function TestSets:test_counts()
  support.raises("Error in tq_mom_scard_sync expected 3..3 args, got 1", tq.scard, self.global)
end

function TestSets:test_releasing_a_number()
  support.raises("Error in tq_mom_smembers_res_free (arg 1), expected 'tq_mom_smembers_res_t *' got 'number'",
    tq.smembers_res_free, 5)
end

function TestSets:test_conversions_name_the_lua_function()
  support.raises("Error in sadd_ext (arg 3), expected 'struct tq_mom_sadd_op_s *|tq_mom_sadd_op_s *|" ..
    "tq_mom_sadd_op_t *' got 'struct tq_mom_srem_op_s *|tq_mom_srem_op_s *|tq_mom_srem_op_t *'", tq.sadd_ext,
    self.global, 0, tq.srem_op_t(), self.key)
end

support.run()
