-- Loads the modules in the order given and checks that value objects have their class wherever they come from.
local luaunit = require "luaunit"
assert(package.loadlib(assert(package.searchpath("libtq_mom_impl", package.cpath)), "*"))

return function(first, second)
  require(first)
  local one_type = swig_type
  if first == "tq_obj" then
    luaunit.assertErrorMsgContains("require it first", _G.tq_obj.message, {})
    luaunit.assertErrorMsgContains("require it first", _G.tq_obj.scan_message, {key = "k"})
  end
  require(second)
  luaunit.assertNotNil(one_type)
  local tq, tq_obj = tq_mom_sync, _G.tq_obj
  local db = tq.TQ_MOM_APP_DB
  local g = tq.tq_global_init(nil, nil)
  luaunit.assertEquals(tq.client_connect(g, 0), 0)
  local made = tq_obj.new("k", "v")
  luaunit.assertEquals({swig_type(made), made.key, made.value}, {"tq_obj *", "k", "v"})
  luaunit.assertEquals(tq.set(g, db, made), 0)
  local got, status = tq.get(g, db, made)
  luaunit.assertEquals({status, got.key, got.value, tostring(got)}, {0, "k", "v", "tq_obj(k = v)"})
  luaunit.assertTrue(rawequal(getmetatable(got), getmetatable(made)))
  luaunit.assertEquals(tq.tq_obj_free(got), 0)

  local result = tq.get_ext(g, db, tq.get_op_t(), made)
  luaunit.assertEquals({result.value.value, result.error_code}, {"v", 0})
  luaunit.assertEquals(swig_type(result), "struct tq_mom_get_res_s *|tq_mom_get_res_s *|tq_mom_get_res_t *")
  -- A value object can be put into a record of the other module and read back.
  local record = tq.tq_mom_get_res_t()
  record.value = made
  luaunit.assertTrue(record.value == made)
  luaunit.assertEquals(record.value.value, "v")
  luaunit.assertEquals(tq.get_res_free(result), 0)
  luaunit.assertEquals(tq.tq_global_finish(g), 0)

  -- Messages that tq_obj makes are records of the other module.
  local message = tq_obj.message{value = "v"}
  luaunit.assertTrue(rawequal(getmetatable(message), getmetatable(tq.tq_mom_pubsub_msg_t())))
  luaunit.assertEquals(swig_type(message),
    "struct tq_mom_pubsub_msg_s *|tq_mom_pubsub_msg_s *|tq_mom_pubsub_msg_t *")

  -- Both modules stay what they are.
  luaunit.assertTrue(rawequal(require("tq_mom_sync"), tq_mom_sync))
  luaunit.assertTrue(rawequal(require("tq_obj"), tq_obj))
  luaunit.assertEquals(tq.TQ_MOM_GLOBAL_DB_NO_WRITE, -5)
  os.exit(true, true)
end
