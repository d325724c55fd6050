family "Publish and scan" {
  "A message reaches the subscribers of a database; a scan visits its keys.",
  setup = [[
tq.set(g, db, tq_obj.new("port/1", "up"))
tq.set(g, db, tq_obj.new("port/2", "down"))]],
}

command "publish" {
  g, db, key "names the channel and carries the message",
  returns = number "subscribers" "how many got it",
  options = "publish_op_t",
  does = "Sends a message to the subscribers. Nothing is stored.",
  kit = "Sends the object's value under its key; [hostkit.md](hostkit.md#publish) says who can subscribe.",
  example = [[print(tq.publish(g, db, tq_obj.new("alarms", "fan 2"))) --> 0.0]],
}

command "scan" {
  g, db, key "a pattern of keys",
  unsigned "count" "how many keys to visit at most",
  callback "callback" [[
called for each key with the runtime, the message and `argument`; an integer other than 0 stops the scan; or nil]],
  any "argument" "passed on to the callback",
  returns = number "visited" "how many times the callback ran",
  does = [[
Visits keys. The message comes as a `tq_mom_pubsub_msg_t` and is a `tq_mom_scan_all_msg_t`: cast it with
[`convertPtrToScanAllMsg`](#convertptrtoscanallmsg). It is valid until the callback returns.]],
  kit = [[
[hostkit.md](hostkit.md#scan) says what a pattern matches, what is visited and what a callback may do. `count` 0 is no
limit. Without a callback the result is how many keys match.]],
  example = [[
local function show(_, message) print(tq.convertPtrToScanAllMsg(message).key) end
print(tq.scan(g, db, tq_obj.new("port/*"), 0, show, nil)) --> port/1 --> port/2 --> 2.0]],
}
