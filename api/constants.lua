family "Statuses" {
  "What functions return and results carry in `error_code`. Failures are negative. Lua integers, as all constants.",
}

constants {
  statuses = true,
  constant "TQ_MOM_OK" (0) "no failure",
  constant "TQ_MOM_ERR" (-1) "failed for a reason without a code of its own",
  constant "TQ_MOM_INPUT_ERR" (-2) "an argument is null, out of range or of the wrong kind",
  constant "TQ_MOM_MALLOC_ERR" (-3) "out of memory",
  constant "TQ_MOM_NO_READY" (-4) "not connected",
  constant "TQ_MOM_GLOBAL_DB_NO_WRITE" (-5) "the database is read-only from here",
}

family "Limits" {
  "Room for texts in bytes.",
}

constants {
  constant "TQ_MOM_KEY_MAX_LEN" (512) "a key with the NUL that ends it",
  constant "TQ_MOM_CMD_MAX_LEN" (32) "a command's name",
  constant "TQ_MOM_FIELD_MAX_LEN" (128) "a field's name with the NUL that ends it",
}

family "Databases" {
  "The `db` of a command. The meanings are what the names say; the spellings TUNNER and STADNALONE are the store's own.",
}

constants {
  type = "tq_mom_db_type_t",
  constant "TQ_MOM_ASIC_DB" (0) "switch chip",
  constant "TQ_MOM_TUNNER_DB" (1) "tunnels",
  constant "TQ_MOM_TQMOMD_HOST" (2) "the store's process on the host",
  constant "TQ_MOM_LOCAL_DB" (3) "this process",
  constant "TQ_MOM_APP_DB" (4) "applications",
  constant "TQ_MOM_TQMOMD_CE_GLOBAL" (5) "the store's process, CE, global",
  constant "TQ_MOM_FWD_DB" (6) "forwarding",
  constant "TQ_MOM_TQMOMD_CE_FWD_GLOBAL" (7) "the store's process, CE, forwarding, global",
  constant "TQ_MOM_UDP_DB" (8) "UDP",
  constant "TQ_MOM_TQMOMD_DE_GLOBAL" (9) "the store's process, DE, global",
  constant "TQ_MOM_UDP_FWD_DB" (10) "forwarding over UDP",
  constant "TQ_MOM_TQMOMD_DE_FWD_GLOBAL" (11) "the store's process, DE, forwarding, global",
  constant "TQ_MOM_MONITOR_DB" (12) "monitoring",
  constant "TQ_MOM_TQMOMD_MONITOR_GLOBAL" (13) "the store's process, monitoring, global",
  constant "TQ_MOM_TOPO_DB" (14) "topology",
  constant "TQ_MOM_TQMOMD_DE_STADNALONE" (15) "the store's process, DE, standalone (spelt so)",
  constant "TQ_MOM_ASIC_FWD_DB" (16) "forwarding of the switch chip",
  constant "TQ_MOM_TQMOMD_HOST_FWD" (17) "the store's process on the host, forwarding",
  constant "TQ_MOM_APP_EXT_DB" (18) "applications, extended",
  constant "TQ_MOM_TQMOMD_MS_GLOBAL" (19) "the store's process, MS, global",
  constant "TQ_MOM_FWD_EXT_DB" (20) "forwarding, extended",
  constant "TQ_MOM_TQMOMD_MS_EXT_GLOBAL" (21) "the store's process, MS, extended, global",
  constant "TQ_MOM_CFG_DB" (22) "configuration",
  constant "TQ_MOM_TQMOMD_CFG_GLOBAL" (23) "the store's process, configuration, global",
  constant "TQ_MOM_CFG_CP_DB" (24) "configuration, CP",
  constant "TQ_MOM_TQMOMD_CFG_CP" (25) "the store's process, configuration, CP",
  constant "TQ_MOM_IBC_DB" (26) "IBC",
  constant "TQ_MOM_TQMOMD_IBC_GLOBAL" (27) "the store's process, IBC, global",
  constant "TQ_MOM_CAP_DB" (28) "capabilities",
  constant "TQ_MOM_TQMOMD_CAP" (29) "the store's process, capabilities",
  constant "TQ_MOM_CFG_CAN_DB" (30) "configuration, candidate",
  constant "TQ_MOM_CGSTCTRL_DB" (31) "congestion control",
  constant "TQ_MOM_DEBUG_DB" (32) "debugging",
  constant "TQ_MOM_DEV_DB" (33) "devices",
  constant "TQ_MOM_CAP_CFG_LOAD_DB" (34) "capabilities, configuration that is loaded",
  constant "TQ_MOM_CFG_LOAD_DB" (35) "configuration that is loaded",
  constant "TQ_MOM_MLAG_DB" (36) "link aggregation across chassis",
  constant "TQ_MOM_INNER_DB" (37) "the store's own",
}

family "Command codes" {
  "The `cmd` of a message: the operation that it tells of. 0 is no command.",
}

constants {
  type = "tq_mom_cmd_t",
  constant "TQ_MOM_SET" (1) "a value was stored",
  constant "TQ_MOM_GET" (2) "a value was read",
  constant "TQ_MOM_DEL" (3) "a key was deleted",
  constant "TQ_MOM_HSET" (4) "fields were written",
  constant "TQ_MOM_HMGET" (5) "fields were read",
  constant "TQ_MOM_HMUPDATE" (6) "fields were updated",
  constant "TQ_MOM_HDEL" (7) "fields were deleted",
  constant "TQ_MOM_HGETALL" (8) "all fields were read",
  constant "TQ_MOM_PEXPIRE_FIELD" (9) "a field got an expiry",
  constant "TQ_MOM_LPUSH" (10) "an element was put before the first",
  constant "TQ_MOM_RPUSH" (11) "an element was put behind the last",
  constant "TQ_MOM_RPOP" (12) "the last element was taken",
  constant "TQ_MOM_LPOP" (13) "the first element was taken",
  constant "TQ_MOM_LRANGE" (14) "a range of a list was read",
  constant "TQ_MOM_LLEN" (15) "a list was measured",
  constant "TQ_MOM_EXISTS" (16) "a key was looked for",
  constant "TQ_MOM_PSETEX" (17) "a value was stored with an expiry",
  constant "TQ_MOM_SADD" (18) "a member was added to a set",
  constant "TQ_MOM_SREM" (19) "a member was removed from a set",
  constant "TQ_MOM_SISMEMBER" (20) "a member was looked for",
  constant "TQ_MOM_SCARD" (21) "the members of a set were counted",
  constant "TQ_MOM_SMEMBERS" (22) "the members of a set were read",
  constant "TQ_MOM_SPOP" (23) "a member was taken from a set",
  constant "TQ_MOM_PUBLISH" (24) "a message was published",
  constant "TQ_MOM_EXPIRE" (25) "an expiry in seconds was set",
  constant "TQ_MOM_PEXPIRE" (26) "an expiry in milliseconds was set",
  constant "TQ_MOM_EXPIRED" (27) "a key went by itself",
  constant "TQ_MOM_UNSUBSCRIBE" (28) "a subscription was ended",
  constant "TQ_MOM_SUBSCRIBE" (29) "a subscription was made",
  constant "TQ_MOM_SCAN" (30) "keys were visited",
  constant "TQ_MOM_SERVERPUSH" (31) "the server pushed by itself",
  constant "TQ_MOM_INCR" (32) "a number was increased",
  constant "TQ_MOM_SETNX" (33) "a value was stored for a new key",
  constant "TQ_MOM_LINSERT" (34) "an element was put beside another",
  constant "TQ_MOM_LREM" (35) "elements were removed",
  constant "TQ_MOM_LSET" (36) "an element was replaced",
  constant "TQ_MOM_SCAN_INDEX" (37) "an index was visited",
  constant "TQ_MOM_LMINSERT" (38) "elements were put beside another",
  constant "TQ_MOM_ZADD" (39) "members were added to a sorted set",
  constant "TQ_MOM_ZREM" (40) "members were removed from a sorted set",
  constant "TQ_MOM_ZREMRANGEBYRANK" (41) "members were removed by rank",
  constant "TQ_MOM_ZREMRANGEBYSCORE" (42) "members were removed by score",
  constant "TQ_MOM_ZCARD" (43) "the members of a sorted set were counted",
  constant "TQ_MOM_ZRANK" (44) "a rank was read",
  constant "TQ_MOM_ZSCORE" (45) "a score was read",
  constant "TQ_MOM_ZCOUNT" (46) "members between scores were counted",
  constant "TQ_MOM_ZRANGE" (47) "members were read by rank",
  constant "TQ_MOM_ZRANGEBYSCORE" (48) "members were read by score",
  constant "TQ_MOM_LMREM" (49) "several elements were removed",
}

family "Batch flags" {
  "The `flag` of a message: marks the last one of a batch. 0 inside a batch.",
}

constants {
  type = "tq_mom_batch_over_flag_t",
  constant "TQ_MOM_SCAN_OVER" (1) "the last message of a scan",
  constant "TQ_MOM_BATCHPEXPIRE_OVER" (2) "of a batch of expiries",
  constant "TQ_MOM_BATCHPEXPIREDEL_OVER" (3) "of a batch of deletions by expiry",
  constant "TQ_MOM_BATCHPEXPIREFIELD_OVER" (4) "of a batch of field expiries",
  constant "TQ_MOM_BATCHDEL_OVER" (5) "of a batch of deletions",
}
