family "Keys and strings" {
  "A string is a value under a key. `exists` and `del` take keys of every kind.",
  setup = [[tq.set(g, db, tq_obj.new("motd", "hello"))]],
}

command "get" {
  g, db, key "names the string",
  returns = {object "object" "key and value, or nil", out "status" "0, or what went wrong"},
  options = "get_op_t",
  does = "Returns the value of a key.",
  kit = "A missing key gives nil and 0.",
  example = [[
local found, status = tq.get(g, db, tq_obj.new("motd"))
print(found.value, status) --> hello	0.0
tq.tq_obj_free(found)]],
  ext = {
    returns = result "tq_mom_get_res_t" "the value",
    does = "As [`get`](#get), with options and a result record.",
    kit = "A missing key gives a record without a value, `error_code` 0.",
    example = [[
local result = tq.get_ext(g, db, nil, tq_obj.new("motd"))
print(result.value.value, result.error_code) --> hello	0.0
tq.get_res_free(result)]],
  },
}

command "set" {
  g, db, key "names the string and carries the value",
  returns = ok,
  writes = true,
  options = "set_op_t",
  does = "Stores a value.",
  kit = "Replaces what the key holds, of any kind, and clears its expiry.",
  example = [[print(tq.set(g, db, tq_obj.new("motd", "good day"))) --> 0.0]],
}

command "setnx" {
  g, db, key "names the string and carries the value",
  returns = number "stored" "1 stored, 0 not",
  writes = true,
  does = "Stores a value unless the key exists.",
  kit = "A key of any kind counts.",
  example = [[print(tq.setnx(g, db, tq_obj.new("motd", "good day"))) --> 0.0]],
}

command "setnx_noreply" {
  g, db, key "names the string and carries the value",
  returns = ok,
  writes = true,
  options = "set_op_t",
  does = "As [`setnx`](#setnx), and does not tell whether it stored the value.",
  kit = "0, stored or not.",
  example = [[print(tq.setnx_noreply(g, db, tq_obj.new("motd", "good day"))) --> 0.0]],
}

command "del" {
  g, db, key "the key",
  returns = number "deleted" "1 deleted, 0 not there",
  writes = true,
  options = "del_op_t",
  does = "Deletes a key of any kind.",
  example = [[print(tq.del(g, db, tq_obj.new("motd"))) --> 1.0]],
}

command "exists" {
  g, db, key "the key",
  returns = number "exists" "1 or 0",
  options = "exist_op_t",
  does = "Tells whether there is a key of any kind.",
  example = [[print(tq.exists(g, db, tq_obj.new("motd"))) --> 1.0]],
}

command "incr" {
  g, db, key "names the string, a decimal number",
  returns = result "tq_mom_incr_res_t" "the new number",
  writes = true,
  statuses = {TQ_MOM_ERR = "the sum is out of range; `value` is the old number"},
  options = "incr_op_t",
  does = "Adds 1 to a number.",
  kit = [[
A missing key counts as 0; the expiry stays. `TQ_MOM_INPUT_ERR` for what is no decimal 64-bit number as `incr` writes it
(`7`, not `007`).]],
  example = [[
local result = tq.incr(g, db, tq_obj.new("boots"))
print(result.value) --> 1.0
tq.incr_res_free(result)]],
}

command "tq_obj_free" {
  other "object" "from [`get`](#get) or a pop; null is no failure",
  client = "tq_mom_tq_obj_free",
  returns = ok,
  statuses = {TQ_MOM_OK = "", TQ_MOM_INPUT_ERR = "the library's to release, released before, or no object"},
  does = "Releases an object that a command returned.",
  kit = "An object of Lua's, from `tq_obj.new`, wants `object:__disown()` first.",
  example = [[
local found = tq.get(g, db, tq_obj.new("motd"))
print(tq.tq_obj_free(found)) --> 0.0]],
}
