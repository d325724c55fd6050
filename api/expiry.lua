family "Expiry" {
  "A key, or a field of a hash, that goes by itself after a time.",
  setup = [[
local port = tq_obj.new("port")
port[1], port[2] = "up", "10G"
tq.hmset(g, db, port, {1, 2})]],
}

command "psetex" {
  g, db, key "names the string and carries the value",
  int "milliseconds [ms]" "until the key goes; positive",
  returns = ok,
  writes = true,
  options = "psetex_op_t",
  does = "Stores a value that goes after a time.",
  kit = "Replaces what the key holds, of any kind.",
  example = [[print(tq.psetex(g, db, tq_obj.new("lease", "eth0"), 60000)) --> 0.0]],
  ext = {
    key "names the string and carries the value",
    does = "As [`psetex`](#psetex); the time comes with the options.",
    kit = "Without options there is no time: `TQ_MOM_INPUT_ERR`.",
    example = [[
local options = tq.psetex_op_t()
options.milseconds = 60000
print(tq.psetex_ext(g, db, options, tq_obj.new("lease", "eth0"))) --> 0.0]],
  },
}

command "pexpire" {
  g, db, key "the key",
  unsigned "time [ms]" "until the key goes",
  timeout,
  returns = number "set" "1 set, 0 no such key",
  writes = true,
  does = "Lets a key go after a time.",
  kit = "0 removes it at once; a new time replaces an old one. The timeout is ignored, as nothing waits.",
  example = [[print(tq.pexpire(g, db, port, 60000, 1.5)) --> 1.0]],
}

command "pdel" {
  g, db, key "the key",
  unsigned "time [ms]" "until the key goes",
  returns = number "set" "1 set, 0 no such key",
  writes = true,
  does = "Deletes a key after a time.",
  kit = "As [`pexpire`](#pexpire).",
  example = [[print(tq.pdel(g, db, port, 60000)) --> 1.0]],
}

command "del_expire" {
  g, db, key "the key",
  unsigned "time [ms]" "only an expiry that is due within this time; 0 for any",
  int "n" "the store's own number",
  returns = number "taken" "1 an expiry was taken away, 0 none was",
  writes = true,
  does = "Takes the expiry of a key away.",
  kit = "`n` is ignored.",
  example = [[
tq.pexpire(g, db, port, 60000, 0)
print(tq.del_expire(g, db, port, 0, 0)) --> 1.0]],
}

command "pexpire_field" {
  g, db, key "names the hash",
  unsigned "time [ms]" "until the field goes",
  size "field" "the field's number",
  timeout,
  returns = number "set" "1 set, 0 no such field",
  writes = true,
  does = "Lets one field of a hash go after a time.",
  kit = "As [`pexpire`](#pexpire). `TQ_MOM_INPUT_ERR` for a number beyond 32 bits.",
  example = [[print(tq.pexpire_field(g, db, port, 60000, 2, 0)) --> 1.0]],
}

command "pexpire_fields" {
  g, db, key "names the hash",
  unsigned "time [ms]" "until the fields go",
  fields "the fields' numbers",
  timeout,
  returns = number "set" "how many of the fields there are",
  writes = true,
  does = "Lets fields of a hash go after a time.",
  kit = "As [`pexpire`](#pexpire). `TQ_MOM_INPUT_ERR` without a field.",
  example = [[print(tq.pexpire_fields(g, db, port, 60000, {1, 2, 3}, 0)) --> 2.0]],
}
