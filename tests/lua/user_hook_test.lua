-- The user hook, which the loader of Lua takes for the loader of a module of this name, and what it reports.
local luaunit = require "luaunit"
local support = require "support"

local recorder = support.recorder
local hook = assert(recorder.symbol(support.module_path, "luaopen_tq_mom_sync_user"))
local text_slot = assert(recorder.symbol(support.module_path, "luaopen_tq_mom_sync_luacode"))

TestUserHook = {}

-- Native text, kept alive while the slot holds it.
local function with_text(code, f)
  local old = support.peek(text_slot, support.pointer)
  local address = recorder.alloc(#code + 1)
  recorder.write(address, code .. "\0")
  support.poke(text_slot, support.pointer, address)
  local results = table.pack(pcall(f))
  support.poke(text_slot, support.pointer, old)
  recorder.free(address)
  assert(results[1], results[2])
  return table.unpack(results, 2, results.n)
end

function TestUserHook:test_as_a_module()
  package.loaded["tq_mom_sync.user"] = nil
  luaunit.assertEquals(table.pack(require "tq_mom_sync.user").n, 1)
  luaunit.assertIs(package.loaded["tq_mom_sync.user"], true)
end

-- A loader gets the module's name and the file; the hook returns nothing to it, whatever its own calls left behind.
function TestUserHook:test_as_a_loader()
  local loader = assert(package.loadlib(support.module_path, "luaopen_tq_mom_sync_user"))
  for _, code in ipairs {"", "return 1, 2, 3", "local t = {} for i = 1, 300 do t[i] = i end return table.unpack(t)"} do
    with_text(code, function()
      for count = 0, 40 do
        local arguments = {}
        for i = 1, count do arguments[i] = i end
        luaunit.assertEquals(select("#", loader(table.unpack(arguments))), 0)
      end
    end)
  end
end

function TestUserHook:test_errors_that_are_no_strings()
  for code, expected in pairs {
    ["error({})"] = "table\n",
    ["error(nil)"] = "nil\n",
    ["error(true)"] = "boolean\n",
    ["error(print)"] = "function\n",
    ["error(42)"] = "42\n",
    ["error(1.5)"] = "1.5\n",
    ["error('text', 0)"] = "text\n",
  } do
    with_text(code, function()
      luaunit.assertEquals({recorder.stderr_of(function() return recorder.call_hook(hook) end)}, {expected, true})
    end)
  end
end

support.run()
