-- Result records.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq
local word = recorder.word

TestResults = {}

function TestResults:setUp()
  recorder.reset()
end

-- What a handle of the library's own record reads is the record.
function TestResults:test_a_result_that_the_library_made()
  local layout = recorder.layouts.tq_mom_zrange_res_t
  local record = recorder.alloc(layout.size)
  local values, scores = recorder.alloc(2 * word), recorder.alloc(16)
  recorder.write(values, string.pack("TT", 0x100, 0x200))
  recorder.write(scores, string.pack("dd", 1.5, -2))
  support.poke(record + layout.fields.value.offset, "T", values)
  support.poke(record + layout.fields.score.offset, "T", scores)
  support.poke(record + layout.fields.count.offset, "T", 2)
  support.poke(record + layout.fields.error_code.offset, "i4", -3)
  recorder.returns("tq_mom_zrange_sync", record)
  local result = tq.zrange(nil, 0, nil, 0, -1)
  luaunit.assertEquals(result.score, {1.5, -2.0})
  luaunit.assertEquals(#result.value, 2)
  support.is_handle(result.value[2], "void *", 0x200)
  support.float(-3, result.error_code)
  result.error_code = 0
  luaunit.assertEquals(support.peek(record + layout.fields.error_code.offset, "i4"), 0)
  result = nil
  collectgarbage()
  for _, block in ipairs {record, values, scores} do
    luaunit.assertTrue(recorder.is_live(block))
    recorder.free(block)
  end
end

-- Both tag arrays have lengths of their own.
function TestResults:test_hash_tags()
  local result = tq.tq_mom_hash_res_t()
  local layout = recorder.layouts.tq_mom_hash_res_t.fields
  local base = support.pointer_of(result)
  local tags, changed = recorder.alloc(3 * word), recorder.alloc(word)
  recorder.write(tags, string.pack("TTT", 1, 2, 3))
  recorder.write(changed, string.pack("T", 2))
  support.poke(base + layout.field_tag.offset, "T", tags)
  support.poke(base + layout.field_tag_count.offset, "T", 3)
  support.poke(base + layout.field_change_tag.offset, "T", changed)
  support.poke(base + layout.field_change_tag_count.offset, "T", 1)
  luaunit.assertEquals(result.field_tag, {1, 2, 3})
  luaunit.assertEquals(result.field_change_tag, {2})
  luaunit.assertEquals(math.type(result.field_tag[1]), "integer")
  recorder.free(tags)
  recorder.free(changed)
end

-- Destroying a record frees none of what it points to.
function TestResults:test_a_record_owns_nothing_it_points_to()
  local array = recorder.alloc(16)
  local result = tq.tq_mom_zrange_res_t()
  local scores = support.handle("_p_double", array, 1)
  result.score = scores
  luaunit.assertEquals(support.own_of(scores), 0)
  result.value = support.handle("_p_p_tq_obj", array)
  result, scores = nil, nil
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(array))
  recorder.free(array)
end

-- The count is read again after each element: a finalizer that runs in between may have changed it.
function TestResults:test_a_count_that_changes_meanwhile()
  local length = 20000
  local result = tq.tq_mom_list_res_t()
  local array = recorder.alloc(length * word)
  for i = 0, length - 1 do support.poke(array + i * word, "T", 0x1000) end
  local layout = recorder.layouts.tq_mom_list_res_t.fields
  local count = support.pointer_of(result) + layout.count.offset
  support.poke(support.pointer_of(result) + layout.value_array.offset, "T", array)
  support.poke(count, "T", length)
  -- Deep down, so that no dead slot of this function's frame keeps the table.
  local function leave_garbage(depth)
    if depth > 0 then
      leave_garbage(depth - 1)
    else
      setmetatable({}, {__gc = function() support.poke(count, "T", 5) end})
    end
    return depth
  end
  local pause, multiplier = collectgarbage("setpause", 0), collectgarbage("setstepmul", 1000)
  collectgarbage() -- and begin the next cycle at once
  leave_garbage(30)
  local values = result.value_array
  collectgarbage("setpause", pause)
  collectgarbage("setstepmul", multiplier)
  luaunit.assertEquals(support.peek(count, "T"), 5)
  luaunit.assertTrue(#values < length)
  recorder.free(array)
end

-- Room is made beforehand for as many elements as are likely.
function TestResults:test_an_array_of_any_length_comes_whole()
  local length = 70000
  local result = tq.tq_mom_list_res_t()
  local array = recorder.alloc(length * word)
  recorder.write(array, string.pack("T", 0x1000):rep(length))
  local layout = recorder.layouts.tq_mom_list_res_t.fields
  support.poke(support.pointer_of(result) + layout.value_array.offset, "T", array)
  support.poke(support.pointer_of(result) + layout.count.offset, "T", length)
  local values = result.value_array
  luaunit.assertEquals(#values, length)
  support.is_handle(values[length], "void *", 0x1000)
  recorder.free(array)
end

function TestResults:test_a_getter_that_runs_out_of_lua_memory()
  local result = tq.tq_mom_list_res_t()
  local array = recorder.alloc(40 * word)
  for i = 0, 39 do support.poke(array + i * word, "T", 0x1000 + i) end
  local layout = recorder.layouts.tq_mom_list_res_t.fields
  support.poke(support.pointer_of(result) + layout.value_array.offset, "T", array)
  support.poke(support.pointer_of(result) + layout.count.offset, "T", 40)
  local n = 0
  repeat
    n = n + 1
    local failed, ok, message = recorder.without_memory(n, support.get_field, result, "value_array")
    if failed then luaunit.assertEquals({ok, message}, {false, "not enough memory"}) end
  until not failed
  luaunit.assertTrue(n > 40)
  luaunit.assertEquals(#result.value_array, 40)
  recorder.free(array)
end

support.run()
