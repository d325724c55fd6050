-- Every class with its fields, and every function with its arguments and results.
local catalog = {classes = {}, class_by_name = {}, commands = {}, command_by_name = {}}

-- Field kinds: the native type as messages spell it, and the type whose handles a field takes or gives.
local kinds = {
  int = {text = "int"},
  size_t = {text = "size_t"},
  llong = {text = "long long"},
  int64 = {text = "int64_t"},
  double = {text = "double"},
  short = {text = "short"},
  cmd = {kind = "int", text = "tq_mom_cmd_t"},
  over = {kind = "int", text = "tq_mom_batch_over_flag_t"},
  obj = {text = "tq_obj *", type = "_p_tq_obj"},
  objs = {text = "tq_obj **", type = "_p_p_tq_obj"},
  scores = {text = "double *", type = "_p_double"},
  tags = {text = "size_t *", type = "_p_size_t"},
  text512 = {kind = "chars", text = "char [512]"},
  text128 = {kind = "chars", text = "char [128]"},
  text11 = {kind = "chars", text = "char [TQ_THREAD_NAME_LEN+1]"},
  cstring = {text = "char *"},
  void = {text = "void *", type = "_p_void"},
  bytes = {text = "unsigned char *", type = "_p_unsigned_char"},
  client = {kind = "record", text = "struct tq_mom_client_s *", type = "_p_tq_mom_client_s"},
  master = {kind = "record", text = "struct tq_thread_master *", type = "_p_tq_thread_master"},
  thread = {kind = "record", text = "struct tq_thread *", type = "_p_tq_thread"},
  pollfd = {kind = "record", text = "struct pollfd *", type = "_p_pollfd"},
  vec = {kind = "record", text = "struct vec_master_t *", type = "_p_vec_master_t"},
  func = {text = "int (*)(struct tq_thread *)", type = "_p_f_p_struct_tq_thread__int"},
  lists = {kind = "embedded", text = "struct tq_thread_list [4]", type = "_p_tq_thread_list"},
  fd_set = {kind = "embedded", text = "fd_set", type = "_p_fd_set"},
  u32 = {kind = "embedded", text = "u_int32_t", type = "_p_u_int32_t"},
  debug_list = {kind = "embedded", text = "struct tq_thread_debug_list", type = "_p_tq_thread_debug_list"},
  timeval = {kind = "embedded", text = "struct timeval", type = "_p_timeval"},
  union = {},
}

local function class(name, structure, spelling, readable, layout, fields)
  local entry = {
    name = name,
    structure = structure, -- as messages qualify the fields
    pointer = spelling, -- the record's pointer type, as messages spell it
    readable = readable,
    layout = layout,
    constructor = structure .. "::" .. structure:match("[%w_]+$"),
    fields = {},
  }
  for field_name, kind_name, count in fields:gmatch("([%w_]+):([%w_]+)/?([%w_]*)") do
    local kind = assert(kinds[kind_name], kind_name)
    entry.fields[#entry.fields + 1] = {
      name = field_name,
      kind = kind.kind or kind_name,
      text = kind.text,
      type = kind.type,
      count = count ~= "" and count or nil, -- the field that holds an array's length
      class = entry,
    }
  end
  catalog.classes[#catalog.classes + 1] = entry
  catalog.class_by_name[name] = entry
end

local function record(name, what, fields)
  local structure, alias = what .. "_s", what .. "_t"
  class(name, structure, "struct " .. structure .. " *",
    string.format("struct %s *|%s *|%s *", structure, structure, alias), alias, fields)
end

local function option(what, fields)
  record(what .. "_op_t", "tq_mom_" .. what .. "_op", fields or "flag:int")
end

local function result(what, fields)
  record("tq_mom_" .. what .. "_res_t", "tq_mom_" .. what .. "_res", fields)
end

option "set"
option "get"
option "hget"
option "hmset"
option "hmsetnx"
option "hmupdate"
option "del"
option "exist"
option "publish"
option("psetex", "flag:int milseconds:int")
option "sadd"
option "srem"
option "sismember"
option "scard"
option "smembers"
option "lpush"
option "rpush"
option "lpop"
option "rpop"
option "linsert"
option "llen"
option "lrange"
option "lrem"
option "lset"
option "zadd"
option "zcard"
option "zcount"
option "zrange"
option "zrangebyscore"
option "zrangebyscorelimit"
option "zrank"
option "zrem"
option "zremrangebyrank"
option "zremrangebyscore"
option "zscore"
option "incr"

result("hash",
  "value:obj field_tag:tags/field_tag_count field_change_tag:tags/field_change_tag_count error_code:int")
result("set", "value_array:objs/count error_code:int")
result("list", "value_array:objs/count error_code:int")
result("get", "value:obj error_code:int")
result("incr", "value:int64 error_code:int")
result("setnx", "value:int error_code:int")
result("smembers", "value_array:objs/count error_code:int")
result("llen", "len:llong error_code:int")
result("lrange", "value_array:objs/count error_code:int")
result("linsert", "len:llong error_code:int")
result("lminsert", "len:size_t error_code:int")
result("lmrem", "len:size_t error_code:int")
result("lset", "error_code:int")
result("save", "error_code:int")
result("zcard", "len:llong error_code:int")
result("zrank", "rank:llong error_code:int")
result("zscore", "score:double exist:int error_code:int")
result("zcount", "len:llong error_code:int")
result("zrange", "value:objs/count score:scores/count error_code:int")
result("zrangebyscore", "value:objs/count score:scores/count error_code:int")
result("sortedset", "value_array:objs/count score:scores/count error_code:int")
result("scard", "len:llong error_code:int")
result("sismember", "len:llong error_code:int")

record("tq_mom_pubsub_msg_t", "tq_mom_pubsub_msg",
  "db:int key:text512 field:text128 cmd:cmd value:void length:size_t flag:over db_id:int cluster_id:int error:int")
record("tq_mom_scan_all_msg_t", "tq_mom_scan_all_msg", "vlen:int key:cstring value:bytes")
record("tq_mom_congest_t", "tq_mom_congest", "topic:text512 remain_buffer:llong remain_time:llong")

record("tq_global_t", "tq_global", "rmc:client master:master")
class("tq_thread_master", "tq_thread_master", "struct tq_thread_master *",
  "struct tq_thread_master *|tq_thread_master *", "tq_thread_master",
  "index:int timer:lists readfd:fd_set writefd:fd_set max_fd:int pfds:pollfd nfds:short pfds_size:short alloc:u32 " ..
  "debug:int flag:u32 tid:int t_recover:thread vec_m:vec vec_m_flag:int cur_thread:thread debug_list:debug_list")
class("tq_thread", "tq_thread", "struct tq_thread *", "struct tq_thread *|tq_thread *", "tq_thread",
  "next:thread prev:thread master:master func:func zg:void arg:void u:union pfd_index:short name:text11")
class("tq_thread_u", "tq_thread::tq_thread_u", "tq_thread_u *", "tq_thread_u *", "tq_thread_u",
  "val:int fd:int sands:timeval")

-- Functions. Argument kinds:
--   global, op:<class>, res:<class>   typed handles
--   int, unsigned, size_t, double     numbers
--   key                               any handle, unchecked
--   timeout, name                     seconds; text or nil
--   fields, scores, members           tables
--   void                              a cast's argument
--   callback, any                     a scan's function and its argument
-- Results: status, obj, out (an int that the client writes), res:<class>.
-- `called` is the name in count and kind messages where it is not the client function's.
local function command(name, client, arguments, results, called)
  local entry = {name = name, client = client, called = called or client, arguments = {}, results = {}}
  for kind, class_name in arguments:gmatch("([%w_]+):?([%w_]*)") do
    entry.arguments[#entry.arguments + 1] = {kind = kind, class = catalog.class_by_name[class_name]}
  end
  for kind, class_name in results:gmatch("([%w_]+):?([%w_]*)") do
    entry.results[#entry.results + 1] = {kind = kind, class = catalog.class_by_name[class_name]}
  end
  catalog.commands[#catalog.commands + 1] = entry
  catalog.command_by_name[name] = entry
end

command("tq_global_init", "tq_global_init", "name global", "res:tq_global_t")
command("tq_global_finish", "tq_global_finish", "global", "status")
command("tq_global_get_master", "tq_global_get_master", "global", "res:tq_thread_master")
command("tq_global_run", "tq_global_run", "global", "status")
command("client_connect", "tq_mom_client_connect_sync", "global int", "status")
command("client_connect_cluster", "tq_mom_client_connect_cluster_sync", "global int", "status")
command("debug_show_all", "tq_mom_debug_show_all", "global", "status")
command("bgsave", "tq_mom_bgsave_sync", "global int", "status")

command("get", "tq_mom_get_sync", "global int key", "obj out")
command("get_ext", "tq_mom_get_ext_sync", "global int op:get_op_t key", "res:tq_mom_get_res_t")
command("set", "tq_mom_set_sync", "global int key", "status")
command("set_ext", "tq_mom_set_ext_sync", "global int op:set_op_t key", "status")
command("setnx", "tq_mom_setnx_sync", "global int key", "status")
command("setnx_noreply", "tq_mom_setnx_noreply_sync", "global int key", "status")
command("setnx_noreply_ext", "tq_mom_setnx_noreply_ext_sync", "global int op:set_op_t key", "status")
command("psetex", "tq_mom_psetex_sync", "global int key int", "status")
command("psetex_ext", "tq_mom_psetex_ext_sync", "global int op:psetex_op_t key", "status")
command("del", "tq_mom_del_sync", "global int key", "status")
command("del_ext", "tq_mom_del_ext_sync", "global int op:del_op_t key", "status")
command("exists", "tq_mom_exists_sync", "global int key", "status")
command("exists_ext", "tq_mom_exists_ext_sync", "global int op:exist_op_t key", "status")
command("incr", "tq_mom_incr_sync", "global int key", "res:tq_mom_incr_res_t")
command("incr_ext", "tq_mom_incr_ext_sync", "global int op:incr_op_t key", "res:tq_mom_incr_res_t")
command("pexpire", "tq_mom_pexpire_sync", "global int key unsigned timeout", "status")
command("pdel", "tq_mom_pdel_sync", "global int key unsigned", "status")
command("del_expire", "tq_mom_del_expire_sync", "global int key unsigned int", "status")
command("pexpire_field", "tq_mom_pexpire_field_sync", "global int key unsigned size_t timeout", "status")
command("pexpire_fields", "tq_mom_pexpire_fields_sync", "global int key unsigned fields timeout", "status")
command("get_res_free", "tq_mom_get_res_free", "res:tq_mom_get_res_t", "status")
command("incr_res_free", "tq_mom_incr_res_free", "res:tq_mom_incr_res_t", "status")
command("tq_obj_free", "tq_mom_tq_obj_free", "key", "status")

command("hmset", "tq_mom_hmset_sync", "global int key fields", "status")
command("hmsetnx", "tq_mom_hmsetnx_sync", "global int key fields", "status")
command("hmset_ext", "tq_mom_hmset_ext_sync", "global int op:hmset_op_t key fields", "status",
  "_tq_mom_hmset_ext_sync")
command("hmsetnx_ext", "tq_mom_hmsetnx_ext_sync", "global int op:hmsetnx_op_t key fields", "status",
  "_tq_mom_hmsetnx_ext_sync")
command("hmget", "tq_mom_hmget_sync", "global int key fields", "res:tq_mom_hash_res_t")
command("hgetall", "tq_mom_hgetall_sync", "global int key", "res:tq_mom_hash_res_t")
command("hgetall_ext", "tq_mom_hgetall_ext_sync", "global int op:hget_op_t key", "res:tq_mom_hash_res_t")
command("hash_res_free", "tq_mom_hash_res_free", "res:tq_mom_hash_res_t", "status")

command("lpush", "tq_mom_lpush_sync", "global int key", "status")
command("lpush_ext", "tq_mom_lpush_ext_sync", "global int op:lpush_op_t key", "status")
command("rpush", "tq_mom_rpush_sync", "global int key", "status")
command("rpush_ext", "tq_mom_rpush_ext_sync", "global int op:rpush_op_t key", "status")
command("lpop", "tq_mom_lpop_sync", "global int key", "obj out")
command("lpop_ext", "tq_mom_lpop_ext_sync", "global int op:lpop_op_t key", "obj out")
command("rpop", "tq_mom_rpop_sync", "global int key", "obj out")
command("rpop_ext", "tq_mom_rpop_ext_sync", "global int op:rpop_op_t key", "obj out")
command("llen", "tq_mom_llen_sync", "global int key", "status")
command("llen_ext", "tq_mom_llen_ext_sync", "global int op:llen_op_t key", "status")
command("lrange", "tq_mom_lrange_sync", "global int key int int", "res:tq_mom_lrange_res_t")
command("lrange_ext", "tq_mom_lrange_ext_sync", "global int op:lrange_op_t key int int", "res:tq_mom_lrange_res_t")
command("linsert", "tq_mom_linsert_sync", "global int key key unsigned", "status")
command("linsert_ext", "tq_mom_linsert_ext_sync", "global int op:linsert_op_t key key unsigned", "status")
command("lset", "tq_mom_lset_sync", "global int key int", "status")
command("lset_ext", "tq_mom_lset_ext_sync", "global int op:lset_op_t key int", "status")
command("lrem", "tq_mom_lrem_sync", "global int key size_t", "status")
command("lrem_ext", "tq_mom_lrem_ext_sync", "global int op:lrem_op_t key size_t", "status")
command("lrange_res_free", "tq_mom_lrange_res_free", "res:tq_mom_lrange_res_t", "status")

command("sadd", "tq_mom_sadd_sync", "global int key", "status")
command("sadd_ext", "tq_mom_sadd_ext_sync", "global int op:sadd_op_t key", "status")
command("srem", "tq_mom_srem_sync", "global int key", "status")
command("srem_ext", "tq_mom_srem_ext_sync", "global int op:srem_op_t key", "status")
command("sismember", "tq_mom_sismember_sync", "global int key", "status")
command("sismember_ext", "tq_mom_sismember_ext_sync", "global int op:sismember_op_t key", "status")
command("scard", "tq_mom_scard_sync", "global int key", "status")
command("scard_ext", "tq_mom_scard_ext_sync", "global int op:scard_op_t key", "status")
command("smembers", "tq_mom_smembers_sync", "global int key", "res:tq_mom_smembers_res_t")
command("smembers_ext", "tq_mom_smembers_ext_sync", "global int op:smembers_op_t key", "res:tq_mom_smembers_res_t")
command("smembers_res_free", "tq_mom_smembers_res_free", "res:tq_mom_smembers_res_t", "status")

command("zadd", "tq_mom_zadd_sync", "global int scores members", "status", "_tq_mom_zadd_sync")
command("zadd_ext", "tq_mom_zadd_ext_sync", "global int op:zadd_op_t scores members", "status",
  "_tq_mom_zadd_ext_sync")
command("zrem", "tq_mom_zrem_sync", "global int members", "status")
command("zrem_ext", "tq_mom_zrem_ext_sync", "global int op:zrem_op_t members", "status")
command("zcard", "tq_mom_zcard_sync", "global int key", "status")
command("zcard_ext", "tq_mom_zcard_ext_sync", "global int op:zcard_op_t key", "status")
command("zcount", "tq_mom_zcount_sync", "global int key double double", "status")
command("zcount_ext", "tq_mom_zcount_ext_sync", "global int op:zcount_op_t key double double", "status")
command("zrange", "tq_mom_zrange_sync", "global int key int int", "res:tq_mom_zrange_res_t")
command("zrange_ext", "tq_mom_zrange_ext_sync", "global int op:zrange_op_t key int int", "res:tq_mom_zrange_res_t")
command("zrangebyscore", "tq_mom_zrangebyscore_sync", "global int key double double",
  "res:tq_mom_zrangebyscore_res_t")
command("zrangebyscore_ext", "tq_mom_zrangebyscore_ext_sync", "global int op:zrangebyscore_op_t key double double",
  "res:tq_mom_zrangebyscore_res_t")
command("zrank", "tq_mom_zrank_sync", "global int key", "status")
command("zrank_ext", "tq_mom_zrank_ext_sync", "global int op:zrank_op_t key", "status")
command("zscore", "tq_mom_zscore_sync", "global int key", "res:tq_mom_zscore_res_t")
command("zscore_ext", "tq_mom_zscore_ext_sync", "global int op:zscore_op_t key", "res:tq_mom_zscore_res_t")
command("zremrangebyrank", "tq_mom_zremrangebyrank_sync", "global int key int int", "status")
command("zremrangebyrank_ext", "tq_mom_zremrangebyrank_ext_sync", "global int op:zremrangebyrank_op_t key int int",
  "status")
command("zremrangebyscore", "tq_mom_zremrangebyscore_sync", "global int key double double", "status")
command("zremrangebyscore_ext", "tq_mom_zremrangebyscore_ext_sync",
  "global int op:zremrangebyscore_op_t key double double", "status")
command("zrange_res_free", "tq_mom_zrange_res_free", "res:tq_mom_zrange_res_t", "status")
command("zrangebyscore_res_free", "tq_mom_zrangebyscore_res_free", "res:tq_mom_zrangebyscore_res_t", "status")
command("zscore_res_free", "tq_mom_zscore_res_free", "res:tq_mom_zscore_res_t", "status")

command("publish", "tq_mom_publish_sync", "global int key", "status")
command("publish_ext", "tq_mom_publish_ext_sync", "global int op:publish_op_t key", "status")
command("scan", "tq_mom_scan_sync", "global int key unsigned callback any", "status")

-- Casts call no client function.
local function cast(name, class_name)
  command(name, name, "void", "res:" .. class_name)
  catalog.command_by_name[name].is_cast = true
end

cast("convertPtrToHashRes", "tq_mom_hash_res_t")
cast("convertPtrToSetRes", "tq_mom_set_res_t")
cast("convertPtrToListRes", "tq_mom_list_res_t")
cast("convertPtrToSortedsetRes", "tq_mom_sortedset_res_t")
cast("convertPtrToGetRes", "tq_mom_get_res_t")
cast("convertPtrToIncrRes", "tq_mom_incr_res_t")
cast("convertPtrToSetnxRes", "tq_mom_setnx_res_t")
cast("convertPtrToSmembersRes", "tq_mom_smembers_res_t")
cast("convertPtrToLlenRes", "tq_mom_llen_res_t")
cast("convertPtrToLrangeRes", "tq_mom_lrange_res_t")
cast("convertPtrToLinsertRes", "tq_mom_linsert_res_t")
cast("convertPtrToLminsertRes", "tq_mom_lminsert_res_t")
cast("convertPtrToLmremRes", "tq_mom_lmrem_res_t")
cast("convertPtrToLsetRes", "tq_mom_lset_res_t")
cast("convertPtrToSaveRes", "tq_mom_save_res_t")
cast("convertPtrToZcardRes", "tq_mom_zcard_res_t")
cast("convertPtrToZrankRes", "tq_mom_zrank_res_t")
cast("convertPtrToZscoreRes", "tq_mom_zscore_res_t")
cast("convertPtrToZcountRes", "tq_mom_zcount_res_t")
cast("convertPtrToZrangeRes", "tq_mom_zrange_res_t")
cast("convertPtrToZrangebyscoreRes", "tq_mom_zrangebyscore_res_t")
cast("convertPtrToScardRes", "tq_mom_scard_res_t")
cast("convertPtrToSismemberRes", "tq_mom_sismember_res_t")
cast("convertPtrToScanAllMsg", "tq_mom_scan_all_msg_t")

return catalog
