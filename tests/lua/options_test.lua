-- Request option records.
local luaunit = require "luaunit"
local catalog = require "catalog"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestOptions = {}

function TestOptions:setUp()
  recorder.reset()
end

function TestOptions:test_their_names_have_no_prefix()
  for _, class in ipairs(catalog.classes) do
    if class.name:find("_op_t$") then
      luaunit.assertNotNil(tq[class.name])
      luaunit.assertNil(tq["tq_mom_" .. class.name])
    end
  end
end

function TestOptions:test_the_record_itself_is_passed()
  local option = tq.psetex_op_t()
  option.flag = 3
  option.milseconds = 1500
  tq.psetex_ext(nil, 0, option, nil)
  luaunit.assertEquals(support.only_call().op, {address = support.pointer_of(option), flag = 3, milseconds = 1500})
end

-- Scripts cannot reach the two words before the flag of the hash writes.
function TestOptions:test_hidden_words()
  for _, name in ipairs {"hmset_op_t", "hmsetnx_op_t", "hmupdate_op_t"} do
    local option = tq[name]()
    option.flag = -1
    local layout = recorder.layouts["tq_mom_" .. name]
    luaunit.assertEquals(recorder.read(support.pointer_of(option), layout.fields.flag.offset),
      string.rep("\0", layout.fields.flag.offset))
    luaunit.assertEquals(layout.fields.field_count.size, 4)
    for _, field in ipairs {"fields", "field_count", "list", "count"} do luaunit.assertNil(option[field]) end
  end
end

-- No function takes the two classes that no command uses.
function TestOptions:test_unused_classes()
  luaunit.assertEquals(tq.hmupdate_op_t().flag, 0.0)
  luaunit.assertEquals(tq.zrangebyscorelimit_op_t().flag, 0.0)
  for _, command in ipairs(catalog.commands) do
    for position, argument in ipairs(command.arguments) do
      if argument.kind == "op" then
        for _, unused in ipairs {"hmupdate_op_t", "zrangebyscorelimit_op_t"} do
          local arguments = {}
          for i, other in ipairs(command.arguments) do
            arguments[i] = (other.kind == "fields" or other.kind == "scores" or other.kind == "members") and {} or 0
          end
          arguments[1] = nil
          arguments[position] = tq[unused]()
          local ok, message = pcall(tq[command.name], table.unpack(arguments, 1, #command.arguments))
          luaunit.assertFalse(ok)
          luaunit.assertStrContains(message, "Error in " .. command.name .. " (arg 3), expected ")
        end
      end
    end
  end
  support.no_call()
end

support.run()
