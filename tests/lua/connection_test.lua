-- Connection and runtime control.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestConnection = {}

function TestConnection:setUp()
  recorder.reset()
end

function TestConnection:test_init_without_anything()
  luaunit.assertEquals(table.pack(tq.tq_global_init(nil, nil)), {n = 1})
  local call = support.only_call()
  luaunit.assertEquals({call[1], call[2]}, {false, 0})
end

function TestConnection:test_init_with_a_number_as_name()
  tq.tq_global_init(5, nil)
  tq.tq_global_init(1.5, nil)
  local calls = recorder.calls()
  luaunit.assertEquals({calls[1][1], calls[2][1]}, {"5", "1.5"})
end

-- The client library gets the very bytes up to the first NUL.
function TestConnection:test_init_with_a_name()
  local existing = tq.tq_global_t()
  tq.tq_global_init("router", existing)
  tq.tq_global_init("ab\0cd", nil)
  tq.tq_global_init("", nil)
  local calls = recorder.calls()
  luaunit.assertEquals({calls[1][1], calls[1][2]}, {"router", support.pointer_of(existing)})
  luaunit.assertEquals({calls[2][1], calls[3][1]}, {"ab", ""})
end

function TestConnection:test_init_with_a_wrong_name()
  support.raises("Error in tq_global_init (arg 1), expected 'char *' got 'table'", tq.tq_global_init, {}, nil)
  support.raises("Error in tq_global_init (arg 1), expected 'char *' got 'boolean'", tq.tq_global_init, false, nil)
  support.raises("Error in tq_global_init (arg 2), expected 'tq_global_t *' got 'string'", tq.tq_global_init, nil, "x")
  support.raises("Error in tq_global_init (arg 2), expected 'struct tq_global_s *|tq_global_s *|tq_global_t *' got " ..
    "'struct tq_mom_get_op_s *|tq_mom_get_op_s *|tq_mom_get_op_t *'", tq.tq_global_init, nil, tq.get_op_t())
  support.no_call()
end

-- The runtime is ended by tq_global_finish alone.
function TestConnection:test_the_runtime_is_not_freed_by_collection()
  local record = recorder.alloc(64)
  recorder.returns("tq_global_init", record)
  local runtime = tq.tq_global_init("router", nil)
  support.is_handle(runtime, "struct tq_global_s *|tq_global_s *|tq_global_t *", record)
  luaunit.assertIs(debug.getmetatable(runtime), debug.getregistry().SWIG.tq_global_t)
  tq.tq_global_finish(runtime)
  runtime = nil
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(record))
  luaunit.assertEquals(#recorder.calls(), 2)
  luaunit.assertEquals(recorder.calls()[2][1], record)
  recorder.free(record)
end

function TestConnection:test_the_master_is_not_freed_by_collection()
  local record = recorder.alloc(20000)
  recorder.returns("tq_global_get_master", record)
  local master = tq.tq_global_get_master(nil)
  support.is_handle(master, "struct tq_thread_master *|tq_thread_master *", record)
  master = nil
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(record))
  recorder.free(record)
  recorder.returns("tq_global_get_master", 0)
  luaunit.assertEquals(table.pack(tq.tq_global_get_master(nil)), {n = 1})
end

function TestConnection:test_connect_counts()
  support.raises("Error in tq_mom_client_connect_sync expected 2..2 args, got 1", tq.client_connect, nil)
  support.raises("Error in tq_mom_client_connect_cluster_sync expected 2..2 args, got 3", tq.client_connect_cluster,
    nil, 1, 2)
end

function TestConnection:test_a_result_record_as_global()
  support.raises("Error in bgsave (arg 1), expected 'struct tq_global_s *|tq_global_s *|tq_global_t *' got " ..
    "'struct tq_mom_get_res_s *|tq_mom_get_res_s *|tq_mom_get_res_t *'", tq.bgsave, tq.tq_mom_get_res_t(), 1)
end

function TestConnection:test_names_in_messages()
  support.raises("Error in tq_mom_bgsave_sync (arg 2), expected 'int' got 'nil'", tq.bgsave, nil, nil)
  support.raises("Error in tq_mom_debug_show_all (arg 1), expected 'tq_global_t *' got 'number'", tq.debug_show_all, 1)
  for _, name in ipairs {"tq_global_finish", "tq_global_get_master", "tq_global_run"} do
    support.raises("Error in " .. name .. " expected 1..1 args, got 0", tq[name])
    support.raises("Error in " .. name .. " (arg 1), expected 'tq_global_t *' got 'string'", tq[name], "x")
    support.raises("Error in " .. name .. " (arg 1), expected 'struct tq_global_s *|tq_global_s *|" ..
      "tq_global_t *' got 'tq_thread_u *'", tq[name], tq.tq_thread_u())
  end
end

function TestConnection:test_numbers_are_truncated()
  tq.client_connect(nil, 1.9)
  tq.client_connect_cluster(nil, -1.9)
  tq.bgsave(nil, "3")
  local calls = recorder.calls()
  luaunit.assertEquals({calls[1][2], calls[2][2], calls[3][2]}, {1, -1, 3})
end

function TestConnection:test_statuses_are_floats()
  recorder.returns("tq_global_run", -4)
  support.float(-4, tq.tq_global_run(nil))
  support.float(0, tq.debug_show_all(nil))
end

support.run()
