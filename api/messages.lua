family "Messages" {
  [[
What the store sends to the client. The library owns them and all they point to. One that a callback gets is valid until
the callback returns.]],
}

message_record "pubsub_msg" {
  does = "A notification of a publish, a change or a scan.",
  int "db" "the database",
  chars("key", "char [512]") "the key, or the channel",
  chars("field", "char [128]") "the field",
  command_code "cmd" "the operation, a command code",
  pointer "value" "the bytes; `tq_obj.bytes(m.value, m.length)` copies them",
  size "length [bytes]" "of the value",
  batch_flag "flag" "a batch flag in the last message of a batch, else 0",
  int "db_id" "the database",
  int "cluster_id" "the store's own number",
  int "error" "0, or a status",
}

message_record "scan_all_msg" {
  cast = "convertPtrToScanAllMsg",
  does = [[
One key of a scan. Never set `key` in a record that the library filled, and set it to nil in one of a script's before it
is collected, or the text leaks.]],
  int "vlen [bytes]" "of the value",
  string "key" "the key",
  bytes "value" "the bytes, which need not end in a NUL; `tq_obj.bytes(m.value, m.vlen)` copies them",
}

message_record "congest" {
  does = "A report that a topic's subscribers do not keep up.",
  hidden = {"reserved"},
  chars("topic", "char [512]") "the topic",
  long_long "remain_buffer" "room that is left for messages",
  long_long "remain_time" "time that is left",
}
