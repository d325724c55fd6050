-- Every constant of the module table and of the classes.
local luaunit = require "luaunit"
local catalog = require "catalog"
local support = require "support"

local tq = support.tq

TestConstants = {}

function TestConstants:test_all_numbers_of_the_module()
  local expected = {}
  for _, constant in ipairs(catalog.constants) do expected[constant.name] = constant.value end
  for _, class in ipairs(catalog.classes) do
    for _, constant in ipairs(class.statics or {}) do expected[class.name .. "_" .. constant.name] = constant.value end
  end
  local got = {}
  for name, value in pairs(tq) do
    if type(value) == "number" then
      luaunit.assertEquals(math.type(value), "integer", name)
      got[name] = value
    end
  end
  luaunit.assertEquals(got, expected)
end

function TestConstants:test_nothing_else_is_in_the_module()
  for name, value in pairs(tq) do
    luaunit.assertTrue(type(value) == "number" or type(value) == "function" or type(value) == "table", name)
  end
end

function TestConstants:test_class_statics()
  for _, class in ipairs(catalog.classes) do
    local expected, got = {}, {}
    for _, constant in ipairs(class.statics or {}) do expected[constant.name] = constant.value end
    for name, value in pairs(tq[class.name]) do
      luaunit.assertEquals(math.type(value), "integer", name)
      got[name] = value
    end
    luaunit.assertEquals(got, expected)
  end
end

function TestConstants:test_ends_of_the_enumerations()
  luaunit.assertEquals({tq.TQ_MOM_ASIC_DB, tq.TQ_MOM_INNER_DB}, {0, 37})
  luaunit.assertEquals({tq.TQ_MOM_SET, tq.TQ_MOM_LMREM}, {1, 49})
  luaunit.assertEquals({tq.TQ_MOM_SCAN_OVER, tq.TQ_MOM_BATCHDEL_OVER}, {1, 5})
  luaunit.assertEquals(tq.TQ_MOM_TQMOMD_DE_STADNALONE, 15)
  luaunit.assertEquals(tq.TQ_MOM_TUNNER_DB, 1)
  luaunit.assertEquals(tq.tq_thread_master.TQ_THREAD_TIMER_SLOT, 4)
  luaunit.assertEquals(tq.tq_thread_master_TQ_THREAD_TIMER_SLOT, 4)
end

support.run()
