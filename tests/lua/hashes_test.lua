-- Hash commands and the integer arrays that they take.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestHashes = {}

function TestHashes:setUp()
  self.global = tq.tq_global_t()
  self.key = tq.get_op_t()
  self.option = tq.hmset_op_t()
  self.option_nx = tq.hmsetnx_op_t()
  self.blocks = support.settled_blocks()
  recorder.reset()
end

function TestHashes:tearDown()
  recorder.fail_request(0)
  luaunit.assertEquals(recorder.live_blocks(), self.blocks)
  luaunit.assertEquals(recorder.stray_frees(), 0)
end

function TestHashes:test_an_empty_list()
  tq.hmset(self.global, 0, self.key, {})
  local call = support.only_call()
  luaunit.assertEquals({call[4], call[5]}, {{address = 0}, 0})
  luaunit.assertEquals(recorder.requests(), {})
end

function TestHashes:test_a_list()
  tq.hmset(self.global, 0, self.key, {1, 2, 3})
  local call = support.only_call()
  luaunit.assertTrue(call[4].address ~= 0)
  call[4].address = nil
  luaunit.assertEquals({call[4], call[5]}, {{1, 2, 3}, 3})
  luaunit.assertEquals(recorder.requests(), {12})
end

-- One block for the whole array, a single element included.
function TestHashes:test_one_block_for_each_array()
  for _, count in ipairs {1, 2, 7, 8, 9, 64, 1000} do
    recorder.reset()
    local fields = {}
    for i = 1, count do fields[i] = i * 3 end
    tq.hmsetnx(self.global, 0, self.key, fields)
    luaunit.assertEquals(recorder.requests(), {4 * count})
    local call = support.only_call()
    call[4].address = nil
    luaunit.assertEquals(call[4], fields)
    luaunit.assertEquals(call[5], count)
    luaunit.assertEquals(recorder.live_blocks(), self.blocks)
  end
end

function TestHashes:test_elements_are_cut_to_their_low_32_bits()
  local fields, expected = {}, {}
  for i, pair in ipairs(support.numbers.low32) do fields[i], expected[i] = pair[1], pair[2] end
  tq.hmset(self.global, 0, self.key, fields)
  local got = support.only_call()[4]
  got.address = nil
  luaunit.assertEquals(got, expected)
end

function TestHashes:test_wrong_lists()
  support.raises_bare("input error, errcode_3", tq.hmset, self.global, 0, self.key, {1, "2"})
  support.raises_bare("input error, errcode_1", tq.hmset, self.global, 0, self.key, 7)
  support.raises_bare("input error, errcode_1", tq.hmset, self.global, 0, self.key, nil)
  for count = 1, 20 do
    for position = 1, count do
      local fields = {}
      for i = 1, count do fields[i] = i end
      fields[position] = 2.0
      support.raises_bare("input error, errcode_3", tq.hmget, self.global, 0, self.key, fields)
    end
  end
  support.no_call()
end

-- The table is read raw.
function TestHashes:test_metamethods_do_not_count()
  local guarded = setmetatable({1, 2}, {
    __len = function() error("measured") end,
    __index = function() error("read") end,
  })
  tq.hmset(self.global, 0, self.key, guarded)
  luaunit.assertEquals(support.only_call()[5], 2)
  local hole = setmetatable({1, 2, 3}, {__index = function() return 2 end})
  hole[2] = nil
  support.raises_bare("input error, errcode_3", tq.hmset, self.global, 0, self.key, hole)
  recorder.reset()
  tq.hmset(self.global, 0, self.key, setmetatable({}, {__len = function() return 3 end}))
  luaunit.assertEquals(support.only_call()[5], 0)
  recorder.reset()
  tq.hmset(self.global, 0, self.key, {n = 1, [0] = 5, [-1] = 6})
  luaunit.assertEquals(support.only_call()[5], 0)
end

function TestHashes:test_the_script_s_list_is_left_alone()
  local fields = {1, 2, 3, extra = true}
  tq.hmset(self.global, 0, self.key, fields)
  luaunit.assertEquals(fields, {1, 2, 3, extra = true})
end

function TestHashes:test_ext_without_an_option_record()
  for _, name in ipairs {"hmset_ext", "hmsetnx_ext"} do
    recorder.reset()
    support.float(0, tq[name](self.global, 0, nil, self.key, {1, 2}))
    local call = support.only_call()
    luaunit.assertEquals(call.name, "tq_mom_" .. name .. "_sync")
    luaunit.assertEquals({call[1], call[2], call[3], call[4], #call},
      {support.pointer_of(self.global), 0, 0, support.pointer_of(self.key), 4})
    luaunit.assertNil(call.op)
    support.raises_bare("input error, errcode_3", tq[name], self.global, 0, nil, self.key, {1.5})
    support.raises_bare("input error, errcode_1", tq[name], self.global, 0, nil, self.key, "x")
  end
end

function TestHashes:test_ext_builds_a_record_of_its_own()
  for name, option in pairs {hmset_ext = self.option, hmsetnx_ext = self.option_nx} do
    recorder.reset()
    option.flag = 5
    local layout = recorder.layouts["tq_mom_" .. name:gsub("_ext", "_op_t")]
    local before = recorder.read(support.pointer_of(option), layout.size)
    tq[name](self.global, 3, option, self.key, {1, 2})
    local call = support.only_call()
    luaunit.assertTrue(call.op.address ~= support.pointer_of(option))
    luaunit.assertTrue(call.op.fields.address ~= 0)
    call.op.fields.address = nil
    luaunit.assertEquals({call.op.fields, call.op.field_count, call.op.flag}, {{1, 2}, 2, 5})
    luaunit.assertEquals(recorder.read(support.pointer_of(option), layout.size), before)
    tq[name](self.global, 3, option, self.key, {})
    local op = recorder.calls()[2].op
    luaunit.assertEquals({op.fields, op.field_count, op.flag}, {{address = 0}, 0, 5})
  end
end

local function takers(self)
  return {
    {"hmset", function(fields) return tq.hmset(self.global, 0, self.key, fields) end},
    {"hmsetnx", function(fields) return tq.hmsetnx(self.global, 0, self.key, fields) end},
    {"hmget", function(fields) return tq.hmget(self.global, 0, self.key, fields) end},
    {"hmset_ext", function(fields) return tq.hmset_ext(self.global, 0, self.option, self.key, fields) end},
    {"hmsetnx_ext", function(fields) return tq.hmsetnx_ext(self.global, 0, self.option_nx, self.key, fields) end},
    {"pexpire_fields", function(fields) return tq.pexpire_fields(self.global, 0, self.key, 1, fields, 0) end},
  }
end

function TestHashes:test_each_allocation_failing()
  for _, taker in ipairs(takers(self)) do
    local failures = support.each_allocation_failing(function(n)
      local ok, message = pcall(taker[2], {1, 2, 3})
      if n == 1 then
        luaunit.assertEquals({ok, message}, {false, "memory error"}, taker[1])
        support.no_call()
      else
        luaunit.assertTrue(ok)
      end
      luaunit.assertEquals(recorder.live_blocks(), self.blocks)
    end)
    luaunit.assertEquals(failures, 1)
    recorder.reset()
    recorder.fail_request(1)
    taker[2]({})
    luaunit.assertEquals(recorder.requests(), {})
    recorder.fail_request(0)
  end
end

-- Lua itself may run out of memory while an array is held.
function TestHashes:test_lua_out_of_memory()
  recorder.returns("tq_mom_hmget_sync", 0x10)
  for _, taker in ipairs(takers(self)) do
    for _, fields in ipairs {{1, 2, 3}, {1, 2, "x"}} do
      local n = 0
      repeat
        n = n + 1
        local failed, ok = recorder.without_memory(n, taker[2], fields)
        if failed then luaunit.assertFalse(ok, taker[1]) end
        luaunit.assertEquals(recorder.live_blocks(), self.blocks, taker[1])
      until not failed
    end
  end
end

function TestHashes:test_a_million_elements()
  local fields = {}
  for i = 1, 1000000 do fields[i] = i end
  tq.hmset(self.global, 0, self.key, fields)
  luaunit.assertEquals(recorder.requests(), {4000000})
  local call = support.only_call()
  luaunit.assertEquals({call[4][1], call[4][500000], call[4][1000000], call[5]}, {1, 500000, 1000000, 1000000})
  call = nil
  recorder.reset()
  fields[1000000] = 1.0
  support.raises_bare("input error, errcode_3", tq.hmget, self.global, 0, self.key, fields)
  support.no_call()
end

function TestHashes:test_the_exported_builder()
  local symbol = recorder.symbol(support.module_path, "_tq_mom_hmsetnx_ext_sync")
  luaunit.assertNotNil(symbol)
  local array = recorder.alloc(8)
  recorder.write(array, string.pack("i4i4", 4, 5))
  self.option_nx.flag = 9
  recorder.returns("tq_mom_hmsetnx_ext_sync", -7)
  luaunit.assertEquals(
    recorder.call_hmsetnx_ext(symbol, 0x10, 3, support.pointer_of(self.option_nx), 0x20, array, 2), -7)
  luaunit.assertEquals(recorder.call_hmsetnx_ext(symbol, 0x10, 3, 0, 0x20, array, 2), -7)
  local calls = recorder.calls()
  luaunit.assertEquals({calls[1][1], calls[1][2], calls[1][4]}, {0x10, 3, 0x20})
  luaunit.assertEquals({calls[1].op.fields, calls[1].op.field_count, calls[1].op.flag},
    {{4, 5, address = array}, 2, 9})
  luaunit.assertNil(calls[2].op)
  luaunit.assertTrue(recorder.is_live(array))
  recorder.free(array)
  luaunit.assertNil(recorder.symbol(support.module_path, "_tq_mom_hmset_ext_sync"))
end

support.run()
