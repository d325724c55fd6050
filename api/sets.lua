family "Sets" {
  "The member is the key object's value.",
  setup = [[tq.sadd(g, db, tq_obj.new("vlans", "10"))]],
}

command "sadd" {
  g, db, key "names the set and carries the member",
  returns = number "added" "1 added, 0 it was there",
  writes = true,
  options = "sadd_op_t",
  does = "Adds a member.",
  kit = "A set that is missing is made.",
  example = [[print(tq.sadd(g, db, tq_obj.new("vlans", "20"))) --> 1.0]],
}

command "srem" {
  g, db, key "names the set and carries the member",
  returns = number "removed" "1 removed, 0 it was not there",
  writes = true,
  options = "srem_op_t",
  does = "Removes a member.",
  example = [[print(tq.srem(g, db, tq_obj.new("vlans", "10"))) --> 1.0]],
}

command "sismember" {
  g, db, key "names the set and carries the member",
  returns = number "found" "1 or 0",
  options = "sismember_op_t",
  does = "Tells whether a member is in the set.",
  example = [[print(tq.sismember(g, db, tq_obj.new("vlans", "10"))) --> 1.0]],
}

command "scard" {
  g, db, key "names the set",
  returns = number "members" "how many members there are",
  options = "scard_op_t",
  does = "Counts the members.",
  kit = "0 for a set that is missing.",
  example = [[print(tq.scard(g, db, tq_obj.new("vlans"))) --> 1.0]],
}

command "smembers" {
  g, db, key "names the set",
  returns = result "tq_mom_smembers_res_t" "the members",
  options = "smembers_op_t",
  does = "Returns all members.",
  kit = "In the order of their bytes; a set that is missing has none.",
  example = [[
local result = tq.smembers(g, db, tq_obj.new("vlans"))
for _, member in ipairs(result.value_array) do print(tq_obj.from(member).value) end --> 10
tq.smembers_res_free(result)]],
}
