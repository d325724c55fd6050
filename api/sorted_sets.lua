family "Sorted sets" {
  [[
A member is an object that names the sorted set and carries the member's bytes as its value, so `zadd` and `zrem` take
no key. Members are ordered by score. Ranks count from the lowest score, 0; negative ones from the highest, -1. Bounds
of scores are included.]],
  setup = [[
local eth0, eth1 = tq_obj.new("load", "eth0"), tq_obj.new("load", "eth1")
tq.zadd(g, db, {12.5, 80}, {eth0, eth1})]],
}

command "zadd" {
  g, db, scores "the members' scores", members "the members, as many as scores",
  helper = "_tq_mom_zadd_sync", client = "tq_mom_zadd_sync",
  returns = number "added" "how many members are new",
  writes = true,
  options = "zadd_op_t",
  does = "Adds members, or moves those that are there to their new scores. `scores[i]` belongs to `members[i]`.",
  kit = [[
A sorted set that is missing is made. Members of one score are ordered by their bytes. All members name the same sorted
set and no score is NaN, else `TQ_MOM_INPUT_ERR`; infinite scores are allowed. Of a member that is listed twice the last
score counts. All or nothing. No members: 0.]],
  example = [[print(tq.zadd(g, db, {3, 99}, {tq_obj.new("load", "eth2"), eth0})) --> 1.0]],
  ext = {helper = "_tq_mom_zadd_ext_sync"},
}

command "zrem" {
  g, db, members "the members",
  returns = number "removed" "how many were removed",
  writes = true,
  options = "zrem_op_t",
  does = "Removes members.",
  kit = "All members name the same sorted set, else `TQ_MOM_INPUT_ERR`. All or nothing. No members: 0.",
  example = [[print(tq.zrem(g, db, {eth0, eth1})) --> 2.0]],
}

command "zcard" {
  g, db, key "names the sorted set",
  returns = number "members" "how many members there are",
  options = "zcard_op_t",
  does = "Counts the members.",
  kit = "0 for a sorted set that is missing.",
  example = [[print(tq.zcard(g, db, tq_obj.new("load"))) --> 2.0]],
}

command "zcount" {
  g, db, key "names the sorted set",
  double "min" "the lowest score",
  double "max" "the highest score",
  returns = number "members" "how many members have such scores",
  options = "zcount_op_t",
  does = "Counts the members between two scores.",
  kit = "`TQ_MOM_INPUT_ERR` for a bound that is NaN; infinite ones are allowed.",
  example = [[print(tq.zcount(g, db, tq_obj.new("load"), 50, math.huge)) --> 1.0]],
}

command "zrange" {
  g, db, key "names the sorted set",
  int "start" "the first rank",
  int "stop" "the last rank, included",
  returns = result "tq_mom_zrange_res_t" "members and scores",
  options = "zrange_op_t",
  does = "Returns the members of a range of ranks.",
  kit = "The range is cut to the sorted set; one that is missing has no members.",
  example = [[
local result = tq.zrange(g, db, tq_obj.new("load"), 0, -1)
for i, member in ipairs(result.value) do print(tq_obj.from(member).value, result.score[i]) end --> eth0	12.5 --> eth1	80.0
tq.zrange_res_free(result)]],
}

command "zrangebyscore" {
  g, db, key "names the sorted set",
  double "min" "the lowest score",
  double "max" "the highest score",
  returns = result "tq_mom_zrangebyscore_res_t" "members and scores",
  options = "zrangebyscore_op_t",
  does = "Returns the members between two scores.",
  kit = "`TQ_MOM_INPUT_ERR` for a bound that is NaN; infinite ones are allowed.",
  example = [[
local result = tq.zrangebyscore(g, db, tq_obj.new("load"), 50, math.huge)
for i, member in ipairs(result.value) do print(tq_obj.from(member).value, result.score[i]) end --> eth1	80.0
tq.zrangebyscore_res_free(result)]],
}

command "zrank" {
  g, db, key "names the sorted set and carries the member",
  returns = number "rank" "the member's rank",
  statuses = {TQ_MOM_ERR = "there is no such member, or no such sorted set"},
  options = "zrank_op_t",
  does = "Returns the rank of a member.",
  example = [[print(tq.zrank(g, db, eth1)) --> 1.0]],
}

command "zscore" {
  g, db, key "names the sorted set and carries the member",
  returns = result "tq_mom_zscore_res_t" "the score",
  options = "zscore_op_t",
  does = "Returns the score of a member.",
  kit = "`exist` is 0, and `error_code` too, without such a member or sorted set.",
  example = [[
local result = tq.zscore(g, db, eth1)
print(result.score, result.exist) --> 80.0	1.0
tq.zscore_res_free(result)]],
}

command "zremrangebyrank" {
  g, db, key "names the sorted set",
  int "start" "the first rank",
  int "stop" "the last rank, included",
  returns = number "removed" "how many were removed",
  writes = true,
  options = "zremrangebyrank_op_t",
  does = "Removes the members of a range of ranks.",
  kit = "0 for a sorted set that is missing.",
  example = [[print(tq.zremrangebyrank(g, db, tq_obj.new("load"), 0, 0)) --> 1.0]],
}

command "zremrangebyscore" {
  g, db, key "names the sorted set",
  double "min" "the lowest score",
  double "max" "the highest score",
  returns = number "removed" "how many were removed",
  writes = true,
  options = "zremrangebyscore_op_t",
  does = "Removes the members between two scores.",
  kit = "As [`zcount`](#zcount); 0 for a sorted set that is missing.",
  example = [[print(tq.zremrangebyscore(g, db, tq_obj.new("load"), -math.huge, 50)) --> 1.0]],
}
