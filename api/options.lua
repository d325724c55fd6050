family "Options" {
  [[
What the `_ext` form of a command takes between the database and the other arguments; nil asks for the defaults. A
script makes one with `tq.lset_op_t()`; Lua frees it.]],
}

option "set" {}
option "get" {}
option "hget" {}
option "hmset" {hidden = {"fields", "field_count"}}
option "hmsetnx" {hidden = {"fields", "field_count"}}
option "hmupdate" {hidden = {"fields", "field_count"}, unused = true}
option "del" {}
option "exist" {}
option "publish" {}
option "psetex" {int "milseconds [ms]" "until the key goes; positive"}
option "sadd" {}
option "srem" {}
option "sismember" {}
option "scard" {}
option "smembers" {}
option "lpush" {}
option "rpush" {}
option "lpop" {}
option "rpop" {}
option "linsert" {}
option "llen" {}
option "lrange" {}
option "lrem" {}
option "lset" {}
option "zadd" {}
option "zcard" {}
option "zcount" {}
option "zrange" {}
option "zrangebyscore" {}
option "zrangebyscorelimit" {unused = true}
option "zrank" {}
option "zrem" {}
option "zremrangebyrank" {}
option "zremrangebyscore" {}
option "zscore" {}
option "incr" {}
