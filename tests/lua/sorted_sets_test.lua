-- Sorted-set commands and the score and member arrays that they take.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq
local word = recorder.word

TestSortedSets = {}

function TestSortedSets:setUp()
  self.global = tq.tq_global_t()
  self.a, self.b = tq.get_op_t(), tq.set_op_t()
  self.option, self.zrem_option = tq.zadd_op_t(), tq.zrem_op_t()
  self.blocks = support.settled_blocks()
  recorder.reset()
end

function TestSortedSets:tearDown()
  recorder.fail_request(0)
  luaunit.assertEquals(recorder.live_blocks(), self.blocks)
  luaunit.assertEquals(recorder.stray_frees(), 0)
end

function TestSortedSets:test_empty_arrays()
  recorder.returns("tq_mom_zadd_sync", 7)
  support.float(7, tq.zadd(self.global, 0, {}, {}))
  local call = support.only_call()
  luaunit.assertEquals({call[3], call[4], call[5]}, {{address = 0}, {address = 0}, 0})
  luaunit.assertEquals(recorder.requests(), {})
end

function TestSortedSets:test_arrays()
  tq.zadd(self.global, 3, {1.5, 2}, {self.a, self.b})
  local call = support.only_call()
  luaunit.assertEquals({call[1], call[2], call[5]}, {support.pointer_of(self.global), 3, 2})
  luaunit.assertEquals(call[3], {1.5, 2.0, address = call[3].address})
  luaunit.assertEquals(call[4],
    {support.pointer_of(self.a), support.pointer_of(self.b), address = call[4].address})
  luaunit.assertEquals(recorder.requests(), {3 * 8, 3 * word})
end

function TestSortedSets:test_different_lengths()
  for _, arrays in ipairs {{{1.5}, {}}, {{}, {self.a}}, {{1, 2}, {self.a, nil}}, {{1}, {self.a, self.b}}} do
    support.float(-2, tq.zadd(self.global, 0, arrays[1], arrays[2]))
    support.float(-2, tq.zadd_ext(self.global, 0, self.option, arrays[1], arrays[2]))
    luaunit.assertEquals(recorder.live_blocks(), self.blocks)
  end
  support.no_call()
end

function TestSortedSets:test_scores()
  support.raises_bare("input error", tq.zadd, self.global, 0, {1, "x"}, {self.a, self.b})
  tq.zadd(self.global, 0, {1, "2"}, {self.a, self.b})
  local scores = support.only_call()[3]
  luaunit.assertEquals({scores[1], scores[2]}, {1.0, 2.0})
  recorder.reset()
  local hard, expected, members = {}, {}, {}
  for i, pair in ipairs(support.numbers.double) do hard[i], expected[i], members[i] = pair[1], pair[2], self.a end
  tq.zadd(self.global, 0, hard, members)
  scores = support.only_call()[3]
  luaunit.assertEquals(#scores, #expected)
  for i, value in ipairs(expected) do support.same_number(value, scores[i]) end
end

-- A numeric string keeps being a string in the script's table.
function TestSortedSets:test_the_script_s_tables_are_left_alone()
  local scores, members = {"2", 1}, {self.a, self.b}
  tq.zadd(self.global, 0, scores, members)
  luaunit.assertEquals(scores, {"2", 1})
  luaunit.assertEquals(math.type(scores[2]), "integer")
  luaunit.assertEquals(#members, 2)
end

function TestSortedSets:test_members()
  support.raises_bare("input error", tq.zadd, self.global, 0, {1, 2}, {self.a, "b"})
  for _, no_handle in ipairs {support.light, support.short_block, support.two_word_block, io.stdout, 5, true, {}} do
    support.raises_bare("input error", tq.zrem, self.global, 0, {no_handle})
    support.raises_bare("input error", tq.zrem, self.global, 0, {self.a, no_handle, self.b})
  end
  support.no_call()
  local members = {self.a, self.b, support.untyped_handle, support.handle("_p_double", 0x30)}
  members[2] = nil
  tq.zrem(self.global, 0, members)
  local call = support.only_call()
  luaunit.assertEquals(call[3], {support.pointer_of(self.a), 0, 0x2000, 0x30, address = call[3].address})
  luaunit.assertEquals(call[4], 4)
end

function TestSortedSets:test_metamethods_do_not_count()
  local function guard(t)
    return setmetatable(t, {
      __len = function() error("measured") end,
      __index = function() error("read") end,
    })
  end
  tq.zadd(self.global, 0, guard {1, 2}, guard {self.a, self.b})
  luaunit.assertEquals(support.only_call()[5], 2)
  recorder.reset()
  local hole = guard {self.a, self.b, self.a}
  rawset(hole, 2, nil)
  tq.zrem(self.global, 0, hole)
  luaunit.assertEquals(support.only_call()[3][2], 0)
end

local function takers(self)
  local members = {self.a, self.b, self.a}
  return {
    {2, function(element) return tq.zadd(self.global, 0, {1, 2, element or 3}, members) end},
    {2, function(element) return tq.zadd(self.global, 0, {1, 2, 3}, {self.a, self.b, element}) end},
    {2, function(element) return tq.zadd_ext(self.global, 0, self.option, {1, 2, element or 3}, members) end},
    {2, function(element) return tq.zadd_ext(self.global, 0, self.option, {1, 2, 3}, {self.a, self.b, element}) end},
    {2, function(array) return tq.zadd(self.global, 0, {1, 2, 3}, array or members) end},
    {1, function(element) return tq.zrem(self.global, 0, {self.a, self.b, element}) end},
    {1, function(element) return tq.zrem_ext(self.global, 0, self.zrem_option, {self.a, self.b, element}) end},
  }
end

function TestSortedSets:test_each_allocation_failing()
  for _, taker in ipairs(takers(self)) do
    local failures = support.each_allocation_failing(function(n)
      local ok, message = pcall(taker[2])
      if n <= taker[1] then
        luaunit.assertEquals({ok, message}, {false, "memory error"})
        support.no_call()
      else
        luaunit.assertTrue(ok)
      end
      luaunit.assertEquals(recorder.live_blocks(), self.blocks)
    end)
    luaunit.assertEquals(failures, taker[1])
  end
end

-- Lua itself may run out of memory while arrays are held.
function TestSortedSets:test_lua_out_of_memory()
  for _, taker in ipairs(takers(self)) do
    for _, element in ipairs {false, "x"} do
      local n = 0
      repeat
        n = n + 1
        local failed, ok = recorder.without_memory(n, taker[2], element or nil)
        if failed then luaunit.assertFalse(ok) end
        luaunit.assertEquals(recorder.live_blocks(), self.blocks)
      until not failed
    end
  end
end

-- More scores than Lua's stack has slots.
function TestSortedSets:test_millions_of_elements()
  local count = 3000000
  local scores, members = {}, {}
  for i = 1, count do
    scores[i] = i
    members[i] = self.a
  end
  support.float(0, tq.zadd(self.global, 0, scores, members))
  luaunit.assertEquals(recorder.requests(), {8 * (count + 1), word * (count + 1)})
  luaunit.assertEquals(recorder.call_count(), 1)
  luaunit.assertEquals(recorder.live_blocks(), self.blocks)
  recorder.reset()
  members[count] = "x"
  support.raises_bare("input error", tq.zadd, self.global, 0, scores, members)
  luaunit.assertEquals(recorder.live_blocks(), self.blocks)
  scores[count] = "x"
  support.raises_bare("input error", tq.zadd, self.global, 0, scores, members)
  support.raises_bare("input error", tq.zrem, self.global, 0, members)
  support.no_call()
end

-- The arrays need little room on a stack that is nearly full.
function TestSortedSets:test_deep_recursion()
  local function deep(n)
    if n == 0 then return (tq.zadd(self.global, 0, {1, 2, 3}, {self.a, self.b, self.a})) end
    return (deep(n - 1))
  end
  for _, depth in ipairs {10, 1000, 20000} do support.float(0, deep(depth)) end
end

function TestSortedSets:test_exported_helpers()
  local zadd = recorder.symbol(support.module_path, "_tq_mom_zadd_sync")
  local zadd_ext = recorder.symbol(support.module_path, "_tq_mom_zadd_ext_sync")
  local scores, members = recorder.alloc(16), recorder.alloc(2 * word)
  recorder.write(scores, string.pack("dd", 1, 2))
  recorder.write(members, string.pack("TT", 7, 8))
  recorder.returns("tq_mom_zadd_sync", 5)
  recorder.returns("tq_mom_zadd_ext_sync", 6)
  luaunit.assertEquals(recorder.call_zadd(zadd, 0x10, 3, scores, 2, members, 1), -2)
  luaunit.assertEquals(
    recorder.call_zadd_ext(zadd_ext, 0x10, 3, support.pointer_of(self.option), scores, 1, members, 2), -2)
  support.no_call()
  luaunit.assertEquals(recorder.call_zadd(zadd, 0x10, 3, scores, 2, members, 2), 5)
  luaunit.assertEquals(
    recorder.call_zadd_ext(zadd_ext, 0x10, 3, support.pointer_of(self.option), scores, 2, members, 2), 6)
  local calls = recorder.calls()
  luaunit.assertEquals({calls[1][1], calls[1][2], calls[1][5]}, {0x10, 3, 2})
  luaunit.assertEquals(calls[1][3], {1.0, 2.0, address = scores})
  luaunit.assertEquals(calls[1][4], {7, 8, address = members})
  luaunit.assertEquals({calls[2][3], calls[2][6]}, {support.pointer_of(self.option), 2})
  luaunit.assertTrue(recorder.is_live(scores) and recorder.is_live(members))
  recorder.free(scores)
  recorder.free(members)
end

support.run()
