-- Pointer casts.
local luaunit = require "luaunit"
local catalog = require "catalog"
local support = require "support"

local recorder, tq = support.recorder, support.tq

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
