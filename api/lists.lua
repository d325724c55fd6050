family "Lists" {
  "Positions count from 0; negative ones count from the end, -1 being the last.",
  setup = [[
tq.rpush(g, db, tq_obj.new("jobs", "boot"))
tq.rpush(g, db, tq_obj.new("jobs", "scan"))]],
}

command "lpush" {
  g, db, key "names the list and carries the new element",
  returns = number "length" "the new length",
  writes = true,
  options = "lpush_op_t",
  does = "Puts an element before the first.",
  kit = "A list that is missing is made.",
  example = [[print(tq.lpush(g, db, tq_obj.new("jobs", "power"))) --> 3.0]],
}

command "rpush" {
  g, db, key "names the list and carries the new element",
  returns = number "length" "the new length",
  writes = true,
  options = "rpush_op_t",
  does = "Puts an element behind the last.",
  kit = "A list that is missing is made.",
  example = [[print(tq.rpush(g, db, tq_obj.new("jobs", "report"))) --> 3.0]],
}

command "lpop" {
  g, db, key "names the list",
  returns = {object "element" "the element, or nil", out "length" "the length that is left, or the status of the failure"},
  writes = true,
  options = "lpop_op_t",
  does = "Takes the first element away and returns it.",
  kit = "A list that is missing gives nil and 0.",
  example = [[
local job, left = tq.lpop(g, db, tq_obj.new("jobs"))
print(job.value, left) --> boot	1.0
tq.tq_obj_free(job)]],
}

command "rpop" {
  g, db, key "names the list",
  returns = {object "element" "the element, or nil", out "length" "the length that is left, or the status of the failure"},
  writes = true,
  options = "rpop_op_t",
  does = "Takes the last element away and returns it.",
  kit = "A list that is missing gives nil and 0.",
  example = [[
local job, left = tq.rpop(g, db, tq_obj.new("jobs"))
print(job.value, left) --> scan	1.0
tq.tq_obj_free(job)]],
}

command "llen" {
  g, db, key "names the list",
  returns = number "length" "how many elements there are",
  options = "llen_op_t",
  does = "Counts the elements.",
  kit = "0 for a list that is missing.",
  example = [[print(tq.llen(g, db, tq_obj.new("jobs"))) --> 2.0]],
}

command "lrange" {
  g, db, key "names the list",
  int "start" "the first position",
  int "stop" "the last position, included",
  returns = result "tq_mom_lrange_res_t" "the elements",
  options = "lrange_op_t",
  does = "Returns the elements of a range.",
  kit = "The range is cut to the list; a list that is missing has no elements.",
  example = [[
local result = tq.lrange(g, db, tq_obj.new("jobs"), 0, -1)
for _, job in ipairs(result.value_array) do print(tq_obj.from(job).value) end --> boot --> scan
tq.lrange_res_free(result)]],
}

command "linsert" {
  g, db, key "names the list and carries the new element",
  other "pivot" "carries the element beside which it goes",
  unsigned "where" "0 before the pivot, 1 behind it",
  returns = number "length" "the new length",
  writes = true,
  statuses = {TQ_MOM_ERR = "no element equals the pivot"},
  options = "linsert_op_t",
  does = "Puts an element before or behind another.",
  kit = [[
The pivot is found by its value, from the head; its key does not matter. 0 for a list that is missing. `TQ_MOM_INPUT_ERR`
for any other `where`.]],
  example = [[
local job, pivot = tq_obj.new("jobs", "link"), tq_obj.new("jobs", "scan")
print(tq.linsert(g, db, job, pivot, 0)) --> 3.0]],
}

command "lset" {
  g, db, key "names the list and carries the new element",
  int "index" "the position",
  returns = ok,
  writes = true,
  statuses = {TQ_MOM_ERR = "there is no such position"},
  options = "lset_op_t",
  does = "Replaces one element.",
  kit = "A list that is missing has no positions.",
  example = [[print(tq.lset(g, db, tq_obj.new("jobs", "sync"), -1)) --> 0.0]],
}

command "lrem" {
  g, db, key "names the list and carries the element",
  size "count" "how many to remove at most, 0 for all",
  returns = number "removed" "how many were removed",
  writes = true,
  options = "lrem_op_t",
  does = "Removes elements that equal the given one, from the head.",
  kit = "0 for a list that is missing.",
  example = [[print(tq.lrem(g, db, tq_obj.new("jobs", "scan"), 0)) --> 1.0]],
}
