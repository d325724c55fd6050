-- Two interpreters in one process: the type table is filled once, each interpreter has a ring and tables of its own.
local lu = require "luaunit"
local support = require "ring_support"
local peer = support.peer

local module = require "tq_mom_sync"
local own_record = peer.head()
local op = module.get_op_t()
op.flag = 17

local function new_state()
  local state = peer.new_state()
  state:run("peer = (require 'ring_support').peer")
  return state
end

TestStates = {}

function TestStates:test_a_second_interpreter_shares_the_descriptors()
  local types = peer.module(own_record).types
  local state = new_state()
  local head, status, same, fresh, pointer = state:run([[
    local pointer = ...
    local module = require "tq_mom_sync"
    local op = module.get_op_t()
    local shared = peer.new_handle(pointer, peer.find "_p_tq_mom_get_op_s")
    return peer.head(), module.TQ_MOM_GLOBAL_DB_NO_WRITE, module == tq_mom_sync, op.flag, shared.flag
  ]], (select(3, peer.words(op))))
  lu.assertEquals(head, own_record)
  lu.assertEquals(status, -5)
  lu.assertTrue(same)
  lu.assertEquals(fresh, 0)
  lu.assertEquals(pointer, 17)
  lu.assertEquals(peer.module(own_record).types, types)
  for _, descriptor in ipairs(types) do
    lu.assertEquals(#peer.type(descriptor).casts, 1)
  end
  state:close()
end

function TestStates:test_closing_an_interpreter_leaves_the_other_one_whole()
  local state = new_state()
  state:run "object = require('tq_mom_sync').get_op_t()"
  state:close()
  collectgarbage()
  lu.assertEquals(op.flag, 17)
  lu.assertEquals(peer.ring()[1], own_record)
  lu.assertEquals(module.get_op_t().flag, 0)
end

function TestStates:test_a_collected_object_of_one_interpreter_is_no_concern_of_the_other()
  local state = new_state()
  local pointer = state:run [[
    object = require("tq_mom_sync").get_op_t()
    object.flag = 5
    return (select(3, peer.words(object)))
  ]]
  local view = peer.new_handle(pointer, peer.find "_p_tq_mom_get_op_s")
  lu.assertEquals(view.flag, 5)
  view.flag = 6
  lu.assertEquals(state:run "return object.flag", 6)
  view = nil
  collectgarbage()
  lu.assertEquals(state:run "return object.flag", 6)
  state:close()
end

-- A second interpreter whose ring has another head takes the process-wide record into that ring; the first ring then
-- leads into the second and need not come back. Nothing may hang.
TestOtherHead = {}

function TestOtherHead:test_the_record_is_linked_after_the_other_head()
  local result = support.child [[
    local module = require "tq_mom_sync"
    local own = peer.head()
    local other = peer.register_module { { mangled = "_p_other", readable = "other *" } }
    local state = peer.new_state()
    state:run("peer = (require 'ring_support').peer")
    assert(state:run("peer.join(...) return peer.head()", other) == other)
    assert(state:run("require 'tq_mom_sync' return peer.head()") == other)
    assert(peer.module(other).next == own)
    assert(peer.module(own).next == other)
    assert(state:run("return require('tq_mom_sync').TQ_MOM_ERR") == -1)
    local ring = peer.ring()
    assert(#ring == 2 and ring[1] == own and ring[2] == other)
    assert(package.loadlib(support.module_file, "luaopen_tq_mom_sync")().TQ_MOM_ERR == -1)
    print "done"
  ]]
  lu.assertEquals(result, { status = 0, out = "done\n", err = "" })
end

function TestOtherHead:test_base_search_in_a_ring_that_no_longer_closes()
  local result = support.child [[
    local searching = peer.register_module {
      {
        mangled = "_p_tq_obj",
        readable = "searching *",
        class = { name = "searching", bases = { "nowhere", "_p_two", "searching *", "tq_mom_get_op_t *" } },
      },
    }
    local two = peer.register_module { { mangled = "_p_two", readable = "two *", class = { name = "two" } } }
    peer.join(searching)
    require "tq_mom_sync"
    local class = peer.type(peer.find "_p_tq_obj").class
    assert(peer.class(class).bases[1] == false and peer.class(class).bases[2] == false)
    assert(peer.class(class).bases[3] == class)
    local state = peer.new_state()
    state:run("peer = (require 'ring_support').peer")
    state:run("peer.join(...)", two)
    assert(state:run("return require('tq_mom_sync').TQ_MOM_ERR") == -1)
    -- searching -> own -> two -> own
    assert(package.loadlib(support.module_file, "luaopen_tq_mom_sync")().TQ_MOM_ERR == -1)
    local bases = peer.class(class).bases
    assert(bases[1] == false)
    assert(bases[2] and peer.class(bases[2]).name == "two")
    assert(peer.class(bases[4]).name == "get_op_t")
    print "done"
  ]]
  lu.assertEquals(result, { status = 0, out = "done\n", err = "" })
end

function TestOtherHead:test_first_start_in_a_ring_that_does_not_close()
  local result = support.child [[
    local function new_peer(name, shared)
      return peer.register_module {
        { mangled = "_p_" .. name, readable = name .. " *" }, { mangled = shared, readable = name .. "'s *" },
      }
    end
    local head, one = new_peer("head", "_p_void"), new_peer("one", "_p_tq_mom_get_op_s")
    local two = new_peer("two", "_p_tq_mom_set_op_s")
    peer.join(head)
    peer.join(one)
    peer.join(two)
    assert(peer.module(head).next == two and peer.module(two).next == one and peer.module(one).next == head)
    local shared = { peer.find "_p_void", peer.find "_p_tq_mom_get_op_s", peer.find "_p_tq_mom_set_op_s" }
    peer.set_next(one, two)
    -- head -> two -> one -> two
    local module = require "tq_mom_sync"
    assert(module.TQ_MOM_ERR == -1)
    local own = peer.module(head).next
    assert(peer.module(own).count == support.type_count and peer.module(own).next == two)
    assert(peer.words(module.get_op_t()) == shared[2])
    assert(peer.words(module.set_op_t()) == shared[3])
    assert(package.loadlib(support.module_file, "luaopen_tq_mom_sync")().TQ_MOM_ERR == -1)
    print "done"
  ]]
  lu.assertEquals(result, { status = 0, out = "done\n", err = "" })
end

function TestOtherHead:test_the_module_outlives_the_interpreter_that_loaded_it()
  local result = support.child [[
    local head = peer.register_module { { mangled = "_p_head", readable = "head *" } }
    peer.join(head)
    local state = peer.new_state()
    state:run("peer = (require 'ring_support').peer")
    state:run("peer.join(...)", head)
    local own = state:run "require 'tq_mom_sync' return peer.ring()[2]"
    state:close()
    collectgarbage()
    local ring = peer.ring()
    assert(#ring == 2 and ring[2] == own)
    assert(peer.module(own).count == support.type_count)
    assert(peer.type(peer.find "_p_tq_mom_get_op_s").mangled == "_p_tq_mom_get_op_s")
    assert(require("tq_mom_sync").get_op_t().flag == 0)
    assert(#peer.ring() == 2)
    print "done"
  ]]
  lu.assertEquals(result, { status = 0, out = "done\n", err = "" })
end

function TestOtherHead:test_a_head_that_is_no_light_userdata_is_replaced()
  local result = support.child [[
    local registry = debug.getregistry()
    registry.swig_runtime_data_type_pointer4 = "nonsense"
    local module = require "tq_mom_sync"
    assert(type(peer.head()) == "userdata" and #peer.ring() == 1)
    registry.swig_runtime_data_type_pointer4 = io.stdout
    assert(package.loadlib(support.module_file, "luaopen_tq_mom_sync")().TQ_MOM_ERR == -1)
    assert(#peer.ring() == 1)
    print "done"
  ]]
  lu.assertEquals(result, { status = 0, out = "done\n", err = "" })
end

os.exit(lu.LuaUnit.run(), true)
