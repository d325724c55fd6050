family "Hashes" {
  "A hash holds bytes by field number. A list of fields says which numbers, the key object carries their bytes.",
  setup = [[
local port = tq_obj.new("port")
port[1], port[2] = "up", "10G"
tq.hmset(g, db, port, {1, 2})]],
}

command "hmset" {
  g, db, key "names the hash and carries the bytes",
  fields "the fields to write",
  returns = ok,
  writes = true,
  options = "hmset_op_t",
  does = "Writes fields.",
  kit = [[
A hash that is missing is made. `TQ_MOM_INPUT_ERR`, and nothing is written, for an empty list and for a field that the
object does not have. Written fields lose their expiry; the hash keeps its own.]],
  example = [[
port[1] = "down"
print(tq.hmset(g, db, port, {1})) --> 0.0]],
  ext = {
    helper = "_tq_mom_hmset_ext_sync",
    does = "As [`hmset`](#hmset), with options, which take the list with them: nil for the options writes no fields.",
    kit = "Without options: `TQ_MOM_INPUT_ERR`.",
  },
}

command "hmsetnx" {
  g, db, key "names the hash and carries the bytes",
  fields "the fields to write",
  returns = number "written" "how many fields were written",
  writes = true,
  options = "hmsetnx_op_t",
  does = "Writes each field that the hash does not have; the others stay.",
  kit = "As [`hmset`](#hmset).",
  example = [[
port[3] = "full"
print(tq.hmsetnx(g, db, port, {1, 3})) --> 1.0]],
  ext = {
    helper = "_tq_mom_hmsetnx_ext_sync",
    does = "As [`hmsetnx`](#hmsetnx), with options, which take the list with them: nil for the options writes no fields.",
    kit = "Without options: `TQ_MOM_INPUT_ERR`.",
  },
}

command "hmget" {
  g, db, key "names the hash",
  fields "the fields to read",
  returns = result "tq_mom_hash_res_t" "the fields that are there",
  does = "Reads fields.",
  kit = "A missing hash gives a record without a value, `error_code` 0. `TQ_MOM_INPUT_ERR` for an empty list.",
  example = [[
local result = tq.hmget(g, db, tq_obj.new("port"), {2, 3})
print(result.value[2], #result.field_tag) --> 10G	1
tq.hash_res_free(result)]],
}

command "hgetall" {
  g, db, key "names the hash",
  returns = result "tq_mom_hash_res_t" "all fields",
  options = "hget_op_t",
  does = "Reads all fields.",
  kit = "A missing hash gives a record without a value, `error_code` 0.",
  example = [[
local result = tq.hgetall(g, db, tq_obj.new("port"))
print(result.value[1], result.value[2]) --> up	10G
tq.hash_res_free(result)]],
}
