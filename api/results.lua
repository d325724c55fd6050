family "Results" {
  [[
What commands return beside a status. The library made them, and everything they point to: they are to be released with
the function that the class names. A script can make one, too, `tq.tq_mom_get_res_t()`; Lua frees that one, and nothing
that it points to.]],
}

result_record "hash" {
  cast = "convertPtrToHashRes",
  does = "Fields of a hash.",
  object "value" "an object with the hash's key and the fields, and no value; the result's",
  tags("field_tag", "field_tag_count") "the numbers of the fields, ascending",
  tags("field_change_tag", "field_change_tag_count") "those that have [changed](hostkit.md#changed-fields)",
}

result_record "set" {
  cast = "convertPtrToSetRes",
  does = "Members of a set.",
  objects("value_array", "count") "the members; the result's",
}

result_record "list" {
  cast = "convertPtrToListRes",
  does = "Elements of a list.",
  objects("value_array", "count") "the elements; the result's",
}

result_record "get" {
  cast = "convertPtrToGetRes",
  does = "The value of a key.",
  object "value" "an object with the key and its value, or nil; the result's",
}

result_record "incr" {
  cast = "convertPtrToIncrRes",
  does = "A number that was increased.",
  int64 "value" "the new number",
}

result_record "setnx" {
  cast = "convertPtrToSetnxRes",
  does = "Whether a value was stored.",
  int "value" "1 stored, 0 not",
}

result_record "smembers" {
  cast = "convertPtrToSmembersRes",
  does = "The members of a set.",
  objects("value_array", "count") "the members; the result's",
}

result_record "llen" {
  cast = "convertPtrToLlenRes",
  does = "The length of a list.",
  long_long "len" "how many elements there are",
}

result_record "lrange" {
  cast = "convertPtrToLrangeRes",
  does = "A range of a list.",
  objects("value_array", "count") "the elements; the result's",
}

result_record "linsert" {
  cast = "convertPtrToLinsertRes",
  does = "The length of a list into which an element was put.",
  long_long "len" "the new length",
}

result_record "lminsert" {
  cast = "convertPtrToLminsertRes",
  does = "The length of a list into which elements were put.",
  size "len" "the new length",
}

result_record "lmrem" {
  cast = "convertPtrToLmremRes",
  does = "How many elements were removed from a list.",
  size "len" "how many were removed",
}

result_record "lset" {
  cast = "convertPtrToLsetRes",
  does = "The status of replacing an element of a list.",
}

result_record "save" {
  cast = "convertPtrToSaveRes",
  does = "The status of saving the store.",
}

result_record "zcard" {
  cast = "convertPtrToZcardRes",
  does = "The size of a sorted set.",
  long_long "len" "how many members there are",
}

result_record "zrank" {
  cast = "convertPtrToZrankRes",
  does = "The rank of a member.",
  long_long "rank" "from the lowest score, 0",
}

result_record "zscore" {
  cast = "convertPtrToZscoreRes",
  does = "The score of a member.",
  double "score" "the score",
  int "exist" "not 0 when the member is in the sorted set",
}

result_record "zcount" {
  cast = "convertPtrToZcountRes",
  does = "How many members have certain scores.",
  long_long "len" "how many members",
}

result_record "zrange" {
  cast = "convertPtrToZrangeRes",
  does = "Members by rank. `score[i]` belongs to `value[i]`.",
  objects("value", "count") "the members; the result's",
  score_array("score", "count") "their scores; the result's",
}

result_record "zrangebyscore" {
  cast = "convertPtrToZrangebyscoreRes",
  does = "Members by score. `score[i]` belongs to `value[i]`.",
  objects("value", "count") "the members; the result's",
  score_array("score", "count") "their scores; the result's",
}

result_record "sortedset" {
  cast = "convertPtrToSortedsetRes",
  does = "Members of a sorted set. `score[i]` belongs to `value_array[i]`.",
  objects("value_array", "count") "the members; the result's",
  score_array("score", "count") "their scores; the result's",
}

result_record "scard" {
  cast = "convertPtrToScardRes",
  does = "The size of a set.",
  long_long "len" "how many members there are",
}

result_record "sismember" {
  cast = "convertPtrToSismemberRes",
  does = "Whether a member is in a set.",
  long_long "len" "not 0 when it is",
}
