-- Message records and pointer casts.
local luaunit = require "luaunit"
local catalog = require "catalog"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestMessages = {}

function TestMessages:setUp()
  recorder.reset()
end

function TestMessages:test_long_texts_are_cut()
  local message = tq.tq_mom_pubsub_msg_t()
  message.key = string.rep("k", 600)
  luaunit.assertEquals(message.key, string.rep("k", 511))
  message.field = string.rep("f", 600)
  luaunit.assertEquals(message.field, string.rep("f", 127))
  local congest = tq.tq_mom_congest_t()
  congest.topic = string.rep("t", 513)
  luaunit.assertEquals(congest.topic, string.rep("t", 511))
end

function TestMessages:test_nil_empties_a_text()
  local message = tq.tq_mom_pubsub_msg_t()
  message.field = "speed"
  message.field = nil
  luaunit.assertEquals(message.field, "")
end

function TestMessages:test_enumerations_take_any_number()
  local message = tq.tq_mom_pubsub_msg_t()
  message.cmd = 1000
  support.float(1000, message.cmd)
  message.flag = -7.9
  support.float(-7, message.flag)
  support.raises_bare("Error in tq_mom_pubsub_msg_s::cmd (arg 2), expected 'tq_mom_cmd_t' got 'string'",
    support.set_field, message, "cmd", "SET")
  support.raises_bare("Error in tq_mom_pubsub_msg_s::flag (arg 2), expected 'tq_mom_batch_over_flag_t' got 'nil'",
    support.set_field, message, "flag", nil)
end

function TestMessages:test_messages_of_texts()
  local message = tq.tq_mom_pubsub_msg_t()
  support.raises_bare("Error in tq_mom_pubsub_msg_s::key (arg 2), expected 'char [512]' got 'table'", support.set_field,
    message, "key", {})
  support.raises("Error in tq_mom_pubsub_msg_t_key_set (arg 1), expected 'struct tq_mom_pubsub_msg_s *|" ..
    "tq_mom_pubsub_msg_s *|tq_mom_pubsub_msg_t *' got 'struct tq_mom_congest_s *|tq_mom_congest_s *|" ..
    "tq_mom_congest_t *'",
    debug.getregistry().SWIG.tq_mom_pubsub_msg_t[".set"].key, tq.tq_mom_congest_t(), "x")
end

-- The untyped value takes what a handle points to, the bytes of a scanned element the handle's own block.
function TestMessages:test_the_two_untyped_setters_differ()
  local record = tq.get_op_t()
  local message, element = tq.tq_mom_pubsub_msg_t(), tq.tq_mom_scan_all_msg_t()
  message.value = record
  element.value = record
  support.is_handle(message.value, "void *", support.pointer_of(record))
  support.is_handle(element.value, "unsigned char *|uint_least8_t *|uint_fast8_t *|uint8_t *", recorder.address(record))
  luaunit.assertNotEquals(support.pointer_of(record), recorder.address(record))
  luaunit.assertEquals(support.own_of(record), 1)
  support.raises_bare("Error in tq_mom_pubsub_msg_s::value (arg 2), expected 'void *' got 'string'", support.set_field,
    message, "value", "x")
  element.value = "x"
  luaunit.assertNil(element.value)
end

function TestMessages:test_the_hidden_area_of_a_congestion_record()
  local congest = tq.tq_mom_congest_t()
  local layout = recorder.layouts.tq_mom_congest_t
  luaunit.assertEquals(layout.size, layout.fields.remain_time.offset + 8 + 512)
  recorder.write(support.pointer_of(congest) + layout.size - 512, string.rep("\7", 512))
  congest.remain_time = 1
  luaunit.assertEquals(recorder.read(support.pointer_of(congest) + layout.size - 512, 512), string.rep("\7", 512))
end

TestCasts = {}

function TestCasts:setUp()
  recorder.reset()
end

local casts = {}
for _, command in ipairs(catalog.commands) do
  if command.cast then casts[#casts + 1] = command end
end

function TestCasts:test_results_and_the_message_of_a_scan_have_one()
  for _, class in ipairs(catalog.classes) do
    if class.name:find "_res_t$" then luaunit.assertNotNil(class.cast, class.name) end
  end
  luaunit.assertNotNil(tq.convertPtrToScanAllMsg)
  luaunit.assertNil(tq.convertPtrToPubsubMsg)
  luaunit.assertNil(tq.convertPtrToCongest)
end

function TestCasts:test_a_view_of_any_handle()
  local owner = tq.tq_mom_get_res_t()
  owner.error_code = -3
  local pointer = support.pointer_of(owner)
  local view = tq.convertPtrToGetRes(owner)
  luaunit.assertEquals(view.error_code, -3.0)
  luaunit.assertTrue(view == owner)
  luaunit.assertEquals({support.own_of(owner), support.own_of(view)}, {1, 0})
  view = nil
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(pointer))
  luaunit.assertNil(tq.convertPtrToGetRes(nil))
end

function TestCasts:test_handles_of_unknown_type()
  support.is_handle(tq.convertPtrToScanAllMsg(support.untyped_handle),
    "struct tq_mom_scan_all_msg_s *|tq_mom_scan_all_msg_s *|tq_mom_scan_all_msg_t *", 0x2000)
  luaunit.assertNil(tq.convertPtrToScanAllMsg(recorder.handle(0, 0, 0)))
end

function TestCasts:test_messages()
  support.raises("Error in convertPtrToHashRes (arg 1), expected 'void *' got 'number'", tq.convertPtrToHashRes, 5)
  support.raises("Error in convertPtrToHashRes expected 1..1 args, got 2", tq.convertPtrToHashRes, nil, nil)
  support.raises("Error in convertPtrToHashRes, expected a void* at argument number 1\n", tq.convertPtrToHashRes,
    support.short_block)
  support.raises("Error in convertPtrToHashRes, expected a void* at argument number 1\n", tq.convertPtrToHashRes,
    support.light)
end

function TestCasts:test_native_casts()
  for _, command in ipairs(casts) do
    local symbol = recorder.symbol(support.module_path, command.name)
    luaunit.assertNotNil(symbol, command.name)
    luaunit.assertEquals(recorder.call_cast(symbol, 0x1234), 0x1234)
    luaunit.assertEquals(recorder.call_cast(symbol, 0), 0)
  end
end

support.run()
