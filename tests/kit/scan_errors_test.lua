-- Errors that leave a scan. The binding's references and its block are left behind, as they must be: the checks for leaks
-- are told so for this file alone.
local luaunit = require "luaunit"
local kit = require "kit"
local tq, key, number, db = kit.tq, kit.key, kit.number, kit.db

TestScanErrors = kit.suite()

function TestScanErrors:testStoreWorksOn()
  local g = self.g
  number(0, tq.set(g, db, key("a", "1")))
  number(0, tq.set(g, db, key("b", "2")))
  local calls = 0
  local function fail()
    calls = calls + 1
    error({calls})
  end
  for i = 1, 3 do
    local ok, err = pcall(tq.scan, g, db, key("*"), 0, fail, nil)
    luaunit.assertFalse(ok)
    luaunit.assertEquals(err, {i})
  end
  number(2, tq.scan(g, db, key("*"), 0, nil, nil))
  local names = {}
  number(2, tq.scan(g, db, key("*"), 0, function(_, message)
    names[#names + 1] = tq.convertPtrToScanAllMsg(message).key
  end, nil))
  luaunit.assertItemsEquals(names, {"a", "b"})
end

-- The error of an inner scan is caught in the callback of the outer one, which goes on.
function TestScanErrors:testNested()
  local g = self.g
  for _, name in ipairs({"a", "b", "c"}) do number(0, tq.set(g, db, key(name, name))) end
  local names = {}
  number(3, tq.scan(g, db, key("*"), 0, function(_, message)
    local element = tq.convertPtrToScanAllMsg(message)
    luaunit.assertFalse((pcall(tq.scan, g, db, key("*"), 0, error, "left")))
    names[#names + 1] = element.key .. kit.tq_obj.bytes(element.value, element.vlen)
  end, nil))
  luaunit.assertItemsEquals(names, {"aa", "bb", "cc"})
end

-- A callback cannot yield.
function TestScanErrors:testYield()
  local g = self.g
  number(0, tq.set(g, db, key("a", "1")))
  local thread = coroutine.wrap(function()
    return pcall(tq.scan, g, db, key("*"), 0, coroutine.yield, nil)
  end)
  local ok, message = thread()
  luaunit.assertFalse(ok)
  luaunit.assertStrContains(message, "yield")
  number(1, tq.exists(g, db, key("a")))
end

kit.run()
