local luaunit = require "luaunit"
local kit = require "kit"
local tq, key, number, db, probe = kit.tq, kit.key, kit.number, kit.db, kit.probe

TestConnection = {}

function TestConnection:tearDown()
  kit.assert_nothing_live()
end

local function finish(g) number(0, tq.tq_global_finish(g)) end

function TestConnection:testNothingBeforeTheConnection()
  local g = tq.tq_global_init(nil, nil)
  number(kit.NO_READY, tq.set(g, db, key("k", "v")))
  number(kit.NO_READY, tq.exists(g, db, key("k")))
  number(kit.NO_READY, tq.rpush(g, db, key("k", "v")))
  number(kit.NO_READY, tq.zadd(g, db, {}, {}))
  number(kit.NO_READY, tq.publish(g, db, key("k", "v")))
  number(kit.NO_READY, tq.scan(g, db, key("*"), 0, nil, nil))
  number(kit.NO_READY, tq.bgsave(g, 0))
  local object, status = tq.get(g, db, key("k"))
  luaunit.assertNil(object)
  number(kit.NO_READY, status)
  kit.take(tq.get_ext(g, db, nil, key("k")), "get_res_free", function() end, kit.NO_READY)
  kit.take(tq.hgetall(g, db, key("k")), "hash_res_free", function() end, kit.NO_READY)
  kit.take(tq.smembers(g, db, key("k")), "smembers_res_free", function() end, kit.NO_READY)
  number(0, tq.client_connect(g, 0))
  number(0, tq.set(g, db, key("k", "v")))
  finish(g)
end

function TestConnection:testCluster()
  luaunit.skipIf(kit.server and not os.getenv "TQ_MOM_CLUSTER", "the server is no cluster")
  local g = tq.tq_global_init(kit.fresh_store(), nil)
  number(0, tq.client_connect_cluster(g, 3))
  number(0, tq.set(g, db, key("k", "v")))
  luaunit.assertEquals(kit.stored(g, "k"), "v")
  number(0, tq.client_connect(g, 1)) -- again
  luaunit.assertEquals(kit.stored(g, "k"), "v")
  finish(g)
end

function TestConnection:testNullRuntime()
  number(kit.INPUT_ERR, tq.tq_global_finish(nil))
  number(kit.INPUT_ERR, tq.tq_global_run(nil))
  luaunit.assertNil(tq.tq_global_get_master(nil))
  number(kit.INPUT_ERR, tq.client_connect(nil, 0))
  number(kit.INPUT_ERR, tq.client_connect_cluster(nil, 0))
  number(kit.INPUT_ERR, tq.debug_show_all(nil))
  number(kit.INPUT_ERR, tq.bgsave(nil, 0))
  number(kit.INPUT_ERR, tq.set(nil, db, key("k", "v")))
  local object, status = tq.get(nil, db, key("k"))
  luaunit.assertNil(object)
  number(kit.INPUT_ERR, status)
  number(kit.INPUT_ERR, tq.publish(nil, db, key("k", "v")))
  number(kit.INPUT_ERR, tq.scan(nil, db, key("*"), 0, nil, nil))
end

function TestConnection:testFinishedRuntime()
  local g = kit.connect(nil)
  finish(g)
  number(kit.INPUT_ERR, tq.tq_global_finish(g))
  number(kit.INPUT_ERR, tq.set(g, db, key("k", "v")))
  number(kit.INPUT_ERR, tq.client_connect(g, 0))
  luaunit.assertNil(tq.tq_global_get_master(g))
end

function TestConnection:testRuntimesAreApart()
  local one, two = kit.connect(nil), kit.connect(nil)
  luaunit.assertFalse(one == two)
  number(0, tq.set(one, db, key("k", "1")))
  luaunit.assertNil(kit.stored(two, "k"))
  number(0, tq.set(two, db, key("k", "2")))
  finish(one)
  luaunit.assertEquals(kit.stored(two, "k"), "2")
  finish(two)
end

-- The runtime can live in a record of the script's.
function TestConnection:testOwnRecord()
  local record = tq.tq_global_t()
  local g = tq.tq_global_init(nil, record)
  luaunit.assertTrue(g == record)
  number(0, tq.client_connect(record, 0))
  number(0, tq.set(g, db, key("k", "v")))
  luaunit.assertEquals(kit.stored(record, "k"), "v")
  luaunit.assertNil(tq.tq_global_init(nil, record)) -- it is in use
  finish(record)
  luaunit.assertNil(record.rmc)
  luaunit.assertNil(record.master)
  g = tq.tq_global_init(nil, record)
  luaunit.assertTrue(g == record)
  finish(g)
end

function TestConnection:testRecordsOfTheRuntime()
  local g = kit.connect(nil)
  luaunit.assertEquals(swig_type(g.rmc), "struct tq_mom_client_s *")
  local master = tq.tq_global_get_master(g)
  luaunit.assertEquals(swig_type(master), "struct tq_thread_master *|tq_thread_master *")
  luaunit.assertTrue(master == g.master)
  number(0, master.index)
  number(0, master.nfds)
  luaunit.assertNil(master.pfds)
  local event = master.cur_thread
  luaunit.assertTrue(event.master == master)
  luaunit.assertNil(event.next)
  luaunit.assertEquals(swig_type(event.func), "int (*)(struct tq_thread *)")
  luaunit.assertTrue(event.zg == g)
  luaunit.assertEquals(event.name, "kit")
  master.index = 5
  number(5, tq.tq_global_get_master(g).index)
  finish(g)
end

function TestConnection:testRun()
  local g = tq.tq_global_init(nil, nil)
  number(0, tq.tq_global_run(g))
  finish(g)
end

function TestConnection:testDebugShowAll()
  local output = kit.run_chunk([[
    local kit = require "kit"
    local tq, key = kit.tq, kit.key
    local g = tq.tq_global_init(nil, nil)
    kit.number(0, tq.debug_show_all(g))
    kit.number(0, tq.client_connect(g, 0))
    kit.number(0, tq.set(g, 4, key("a", "v")))
    kit.number(0, tq.psetex(g, 4, key("b", "v"), 3600000))
    kit.number(1, tq.sadd(g, 37, key("s", "v")))
    collectgarbage()
    collectgarbage()
    kit.number(0, tq.debug_show_all(g))
    kit.number(0, tq.tq_global_finish(g))
  ]])
  luaunit.assertStrContains(output, "connected: no")
  luaunit.assertStrContains(output, "connected: yes")
  luaunit.assertStrContains(output,
    "db 4: 2 keys: 2 strings, 0 hashes, 0 lists, 0 sets, 0 sorted sets; 1 expire")
  luaunit.assertStrContains(output,
    "db 37: 1 keys: 0 strings, 0 hashes, 0 lists, 1 sets, 0 sorted sets; 0 expire")
  luaunit.assertStrContains(output, "unreleased: 0 results, 0 objects")
  luaunit.assertNotStrContains(output, "db 5:")
end

TestSnapshot = {}

function TestSnapshot:setUp()
  self.name = kit.temporary_name()
end

function TestSnapshot:tearDown()
  os.remove(self.name)
  kit.assert_nothing_live()
end

local function exists(name)
  local file = io.open(name)
  if file then file:close() end
  return file ~= nil
end

local function values(result) return kit.values(result.value_array) end

function TestSnapshot:testEverythingComesBack()
  local g = kit.connect(self.name)
  luaunit.assertFalse(exists(self.name))
  number(0, tq.set(g, 0, key("text", "a\0b")))
  number(0, tq.psetex(g, 37, key("soon", "v"), 3600000))
  for _, value in ipairs({"x", "", "x"}) do tq.rpush(g, db, key("list", value)) end
  for _, value in ipairs({"m", "n"}) do tq.sadd(g, db, key("set", value)) end
  number(3, tq.zadd(g, db, {1.5, -math.huge, 1.5}, {key("z", "b"), key("z", "low"), key("z", "a")}))
  local hash = key("hash")
  hash[0], hash[4294967295] = "zero", "last"
  number(0, tq.hmset(g, db, hash, {0, 4294967295}))
  kit.take(tq.hmget(g, db, key("hash"), {0}), "hash_res_free", function() end)
  number(1, tq.pexpire_field(g, db, key("hash"), 3600000, 0, 0))
  number(0, tq.bgsave(g, 0))
  number(0, tq.set(g, 0, key("late", "not saved")))
  number(0, tq.tq_global_finish(g))

  g = kit.connect(self.name)
  luaunit.assertEquals(kit.stored(g, "text", 0), "a\0b")
  luaunit.assertNil(kit.stored(g, "late", 0))
  luaunit.assertEquals(kit.stored(g, "soon", 37), "v")
  number(1, tq.del_expire(g, 37, key("soon"), 0, 0))
  luaunit.assertEquals(kit.take(tq.lrange(g, db, key("list"), 0, -1), "lrange_res_free", values), {"x", "", "x"})
  luaunit.assertItemsEquals(kit.take(tq.smembers(g, db, key("set")), "smembers_res_free", values), {"m", "n"})
  luaunit.assertEquals(kit.take(tq.zrange(g, db, key("z"), 0, -1), "zrange_res_free", function(result)
    return {kit.values(result.value), result.score}
  end), {{"low", "a", "b"}, {-math.huge, 1.5, 1.5}})
  luaunit.assertEquals(kit.take(tq.hgetall(g, db, key("hash")), "hash_res_free", function(result)
    return {result.value:fields(), result.field_tag, result.field_change_tag}
  end), {{[0] = "zero", [4294967295] = "last"}, {0, 4294967295}, {0, 4294967295}}) -- the new runtime has read none of them
  number(0, tq.scan(g, 5, key("*"), 0, nil, nil))
  number(0, tq.tq_global_finish(g))
end

-- Time goes on while the store is a file.
function TestSnapshot:testExpiryGoesOn()
  local g = kit.connect(self.name)
  number(0, tq.psetex(g, db, key("short", "v"), 200))
  number(0, tq.set(g, db, key("stays", "v")))
  number(0, tq.bgsave(g, 0))
  number(0, tq.tq_global_finish(g))
  probe.sleep(300)
  g = kit.connect(self.name)
  number(0, tq.exists(g, db, key("short")))
  luaunit.assertEquals(kit.stored(g, "stays"), "v")
  number(0, tq.tq_global_finish(g))
end

function TestSnapshot:testSavedAgain()
  local g = kit.connect(self.name)
  number(0, tq.set(g, db, key("k", "1")))
  number(0, tq.bgsave(g, 0))
  number(1, tq.del(g, db, key("k")))
  number(0, tq.bgsave(g, 5))
  number(0, tq.tq_global_finish(g))
  g = kit.connect(self.name)
  number(0, tq.scan(g, db, key("*"), 0, nil, nil))
  number(0, tq.tq_global_finish(g))
end

function TestSnapshot:testWithoutAFile()
  luaunit.skipIf(kit.server, "a server saves where it is told to")
  local g = kit.connect(nil)
  number(kit.ERR, tq.bgsave(g, 0))
  number(0, tq.tq_global_finish(g))
end

function TestSnapshot:testFileThatCannotBeWritten()
  local output = kit.run_chunk(string.format([[
    local kit = require "kit"
    local tq, key = kit.tq, kit.key
    local g = kit.connect(%q)
    kit.number(0, tq.set(g, kit.db, key("k", "v")))
    kit.number(kit.ERR, tq.bgsave(g, 0))
    assert(kit.stored(g, "k") == "v")
    kit.number(0, tq.tq_global_finish(g))
  ]], self.name .. "/no/such/directory"))
  luaunit.assertStrContains(output, "tq_mom_impl: cannot write")
end

-- A file that is torn, damaged or something else is refused as a whole and stays as it is.
function TestSnapshot:testRefusedFiles()
  local g = kit.connect(self.name)
  for i = 1, 20 do number(0, tq.set(g, db, key("k" .. i, "value " .. i))) end
  number(0, tq.bgsave(g, 0))
  number(0, tq.tq_global_finish(g))
  local whole = kit.read_file(self.name)
  local middle = #whole // 2
  local flipped = whole:sub(1, middle - 1) .. string.char(whole:byte(middle) ~ 1) .. whole:sub(middle + 1)
  for label, bytes in pairs({
    empty = "", short = whole:sub(1, 4), torn = whole:sub(1, middle), ["one byte short"] = whole:sub(1, -2),
    longer = whole .. "\0", flipped = flipped, foreign = "#!/bin/sh\necho hello, this is no snapshot at all\n",
  }) do
    kit.write_file(self.name, bytes)
    local output = kit.run_chunk(string.format([[
      local kit = require "kit"
      assert(kit.tq.tq_global_init(%q, nil) == nil)
    ]], self.name))
    luaunit.assertStrContains(output, self.name, false, false, label)
    luaunit.assertStrContains(output, "tq_mom_impl: ")
    luaunit.assertEquals(kit.read_file(self.name), bytes, label)
  end
  kit.write_file(self.name, whole)
  g = kit.connect(self.name)
  number(20, tq.scan(g, db, key("*"), 0, nil, nil))
  number(0, tq.tq_global_finish(g))
end

-- A number as the name is its text.
function TestSnapshot:testNumberAsName()
  local directory = kit.temporary_name()
  assert(os.execute("mkdir " .. directory))
  kit.run_chunk([[
    local kit = require "kit"
    local g = kit.connect(5)
    kit.number(0, kit.tq.bgsave(g, 0))
    kit.number(0, kit.tq.tq_global_finish(g))
  ]], directory)
  luaunit.assertTrue(#kit.read_file(directory .. "/5") > 0)
  os.remove(directory .. "/5")
  os.remove(directory)
  luaunit.assertErrorMsgContains("Error in tq_global_init (arg 1), expected 'char *' got 'table'", tq.tq_global_init,
    {}, nil)
end

kit.run("connection")
