family "The host kit's controls" {
  [[
What only the host kit can do: fixtures, a clock that stands still, databases that cannot be written, subscriptions from
Lua, values as text. What fails is a Lua error that says why; what an engine cannot do is one, too: on a server the clock
goes on. A wrong argument is an error that names it and says what was expected.]],
  setup = [[local tq_kit = require "tq_kit"]],
}

local runtime = arg "g: tq_global_t" "the runtime"
local database = arg "db: integer" "the database, 0 to 37"

class "tq_kit.subscription" {
  does = "A subscription. It stays in force until it is cancelled or the runtime ends, held by the script or not.",
  method "cancel" {
    returns = ret "ended: boolean" "whether it was in force",
    does = "Ends the subscription; also from inside its callback.",
  },
}

class "tq_kit.entry" {
  does = "What a key holds. To `tq_kit.load` the kind may be left to the one part that is there, and a text stands for a string.",
  field "kind?: string" "`string`, `hash`, `list`, `set` or `sorted_set`",
  field "remaining?: integer [ms]" "until the key expires; nil for never",
  field "value?: string" "of a string",
  field "fields?: table<integer, string>" "of a hash, by number",
  field "field_remaining?: table<integer, integer> [ms]" "until fields of a hash expire, by number",
  field "elements?: string[]" "of a list, in its order",
  field "members?: string[]" "of a set; a dump gives them in the order of their bytes",
  field "scores?: table<string, number>" "of a sorted set, by member",
}

func "subscribe" {
  runtime, database,
  arg "pattern: string" "a glob as for a scan",
  arg "callback: fun(g: tq_global_t, message: tq_mom_pubsub_msg_t, text: string?)"
    "gets a copy of the message, which may be kept, and its bytes",
  returns = ret "subscription: tq_kit.subscription" "which need not be kept",
  does = [[Has a function called for each message that is published to the database under a matching key: with the store in
the process inside the publish, with a server when `tq_global_run` or `tq_kit.poll` runs. An error in the callback goes to
stderr with its traceback; the publisher and other subscribers do not notice.]],
  example = [[
local alarms = tq_kit.subscribe(g, db, "alarm/*", function(_, message, text) print(message.key, text) end)
tq.publish(g, db, tq_obj.new("alarm/fan", "stalled")) --> alarm/fan	stalled
print(alarms:cancel()) --> true]],
}

func "poll" {
  runtime,
  arg "seconds?: number [s]" "how long to wait for a message at most; 0 if left out",
  returns = ret "calls: integer" "how many times subscribers were called",
  does = "Delivers what has arrived from a server to the subscribers. With the store in the process nothing can arrive.",
  example = [[print(tq_kit.poll(g, 0.01)) --> 0]],
}

func "freeze" {
  runtime,
  does = "Stops the time by which keys and fields expire.",
  errors = "On a server.",
  example = [[
tq_kit.freeze(g)
tq.psetex(g, db, tq_obj.new("session", "alice"), 60000)
tq_kit.advance(g, 59999)
print(tq.exists(g, db, tq_obj.new("session"))) --> 1.0
tq_kit.advance(g, 1)
print(tq.exists(g, db, tq_obj.new("session"))) --> 0.0
tq_kit.thaw(g)]],
}

func "advance" {
  runtime,
  arg "milliseconds: integer [ms]" "how far",
  does = "Moves the stopped time on.",
  errors = "When the time is not stopped.",
  example = [[print(pcall(tq_kit.advance, g, 1)) --> false	tq_kit.advance: the clock is not stopped, or the time is out of range]],
}

func "thaw" {
  runtime,
  does = "Lets the time go on from where it is.",
  example = [[
tq_kit.freeze(g)
tq_kit.thaw(g)
print(tq_kit.last_error(g)) --> nil]],
}

func "dump" {
  runtime, database,
  returns = ret "keys: table<string, tq_kit.entry>" "a new table of all keys",
  does = "Reads a database into a plain table.",
  example = [[
tq.set(g, db, tq_obj.new("motd", "hello"))
print(tq_kit.show(tq_kit.dump(g, db))) --> {motd = {kind = "string", value = "hello"}}]],
}

func "load" {
  runtime, database,
  arg "keys: table<string, tq_kit.entry|string>" "what to write; of `tq_kit.dump` or by hand",
  does = "Writes keys, each in the place of what it held. Other keys stay. The whole table is checked before anything is written.",
  example = [[
tq_kit.load(g, db, {motd = "hello", jobs = {elements = {"boot", "sync"}, remaining = 5000}})
print(tq.llen(g, db, tq_obj.new("jobs"))) --> 2.0]],
}

func "clear" {
  runtime, database,
  returns = ret "count: integer" "how many keys there were",
  does = "Removes all keys of a database.",
  example = [[
tq.set(g, db, tq_obj.new("motd", "hello"))
print(tq_kit.clear(g, db)) --> 1]],
}

func "read_only" {
  runtime, database,
  arg "on: boolean" "whether writes are refused",
  does = "Makes commands that write to the database return `TQ_MOM_GLOBAL_DB_NO_WRITE`, as a device's shared databases do.",
  example = [[
tq_kit.read_only(g, db, true)
print(tq.set(g, db, tq_obj.new("motd", "hello")), tq_kit.last_error(g)) --> -5.0	the database is read-only]],
}

func "inspect" {
  runtime, database,
  arg "key: string" "the key",
  returns = {
    ret "kind: string?" "as in `tq_kit.entry`; nil without the key",
    ret "remaining: integer? [ms]" "until it expires; nil for never",
  },
  does = "Tells the kind and the remaining time of a key. A scan shows lists, hashes and sets like empty strings.",
  example = [[
tq.rpush(g, db, tq_obj.new("jobs", "boot"))
print(tq_kit.inspect(g, db, "jobs")) --> list]],
}

func "last_error" {
  runtime,
  returns = ret "text: string?" "nil when the last call did not fail",
  does = "Says in words why the last call on the runtime failed.",
  example = [[
tq.set(g, db, tq_obj.new("motd"))
print(tq_kit.last_error(g)) --> the key object has no value]],
}

func "show" {
  arg "value: any" "any value",
  arg "elements?: integer" "where longer tables and arrays are cut; 10 if left out",
  returns = ret "text: string" "on one line or several",
  does = [[Shows a record with all its fields, a message with its bytes, a value object, or a table. The message of a scan is
cast first: as what it comes, a `tq_mom_pubsub_msg_t`, it has nothing to show.]],
  example = [[print(tq_kit.show(tq_obj.new("motd", "hello"))) --> tq_obj {key = "motd", value = "hello"}]],
}

func "printer" {
  arg "print_line: function" "what prints in the end: `print`",
  returns = ret "print: function" "which takes any values",
  does = "Makes a `print` that has records, objects and tables as `tq_kit.show` has them. `scripts/lua -i` uses it.",
  example = [[tq_kit.printer(print)("motd", {1, 2}) --> motd	{1, 2}]],
}
