---@meta tq_kit
-- Written by scripts/describe from api/. For editors; no program loads it.

---@class tq_kit
tq_kit = {}

---Has a function called for each message that is published to the database under a matching key: with the store in
---the process inside the publish, with a server when `tq_global_run` or `tq_kit.poll` runs. An error in the callback goes to
---stderr with its traceback; the publisher and other subscribers do not notice.
---
---```lua
---local alarms = tq_kit.subscribe(g, db, "alarm/*", function(_, message, text) print(message.key, text) end)
---tq.publish(g, db, tq_obj.new("alarm/fan", "stalled")) --> alarm/fan	stalled
---print(alarms:cancel()) --> true
---```
---@param g tq_global_t the runtime
---@param db integer the database, 0 to 37
---@param pattern string a glob as for a scan
---@param callback fun(g: tq_global_t, message: tq_mom_pubsub_msg_t, text: string?) gets a copy of the message, which may be kept, and its bytes
---@return tq_kit.subscription subscription which need not be kept
function tq_kit.subscribe(g, db, pattern, callback) end

---Delivers what has arrived from a server to the subscribers. With the store in the process nothing can arrive.
---
---```lua
---print(tq_kit.poll(g, 0.01)) --> 0
---```
---@param g tq_global_t the runtime
---@param seconds? number [s] how long to wait for a message at most; 0 if left out
---@return integer calls how many times subscribers were called
function tq_kit.poll(g, seconds) end

---Stops the time by which keys and fields expire.
---
---Errors: On a server.
---
---```lua
---tq_kit.freeze(g)
---tq.psetex(g, db, tq_obj.new("session", "alice"), 60000)
---tq_kit.advance(g, 59999)
---print(tq.exists(g, db, tq_obj.new("session"))) --> 1.0
---tq_kit.advance(g, 1)
---print(tq.exists(g, db, tq_obj.new("session"))) --> 0.0
---tq_kit.thaw(g)
---```
---@param g tq_global_t the runtime
function tq_kit.freeze(g) end

---Moves the stopped time on.
---
---Errors: When the time is not stopped.
---
---```lua
---print(pcall(tq_kit.advance, g, 1)) --> false	tq_kit.advance: the clock is not stopped, or the time is out of range
---```
---@param g tq_global_t the runtime
---@param milliseconds integer [ms] how far
function tq_kit.advance(g, milliseconds) end

---Lets the time go on from where it is.
---
---```lua
---tq_kit.freeze(g)
---tq_kit.thaw(g)
---print(tq_kit.last_error(g)) --> nil
---```
---@param g tq_global_t the runtime
function tq_kit.thaw(g) end

---Reads a database into a plain table.
---
---```lua
---tq.set(g, db, tq_obj.new("motd", "hello"))
---print(tq_kit.show(tq_kit.dump(g, db))) --> {motd = {kind = "string", value = "hello"}}
---```
---@param g tq_global_t the runtime
---@param db integer the database, 0 to 37
---@return table<string, tq_kit.entry> keys a new table of all keys
function tq_kit.dump(g, db) end

---Writes keys, each in the place of what it held. Other keys stay. The whole table is checked before anything is written.
---
---```lua
---tq_kit.load(g, db, {motd = "hello", jobs = {elements = {"boot", "sync"}, remaining = 5000}})
---print(tq.llen(g, db, tq_obj.new("jobs"))) --> 2.0
---```
---@param g tq_global_t the runtime
---@param db integer the database, 0 to 37
---@param keys table<string, tq_kit.entry|string> what to write; of `tq_kit.dump` or by hand
function tq_kit.load(g, db, keys) end

---Removes all keys of a database.
---
---```lua
---tq.set(g, db, tq_obj.new("motd", "hello"))
---print(tq_kit.clear(g, db)) --> 1
---```
---@param g tq_global_t the runtime
---@param db integer the database, 0 to 37
---@return integer count how many keys there were
function tq_kit.clear(g, db) end

---Makes commands that write to the database return `TQ_MOM_GLOBAL_DB_NO_WRITE`, as a device's shared databases do.
---
---```lua
---tq_kit.read_only(g, db, true)
---print(tq.set(g, db, tq_obj.new("motd", "hello")), tq_kit.last_error(g)) --> -5.0	the database is read-only
---```
---@param g tq_global_t the runtime
---@param db integer the database, 0 to 37
---@param on boolean whether writes are refused
function tq_kit.read_only(g, db, on) end

---Tells the kind and the remaining time of a key. A scan shows lists, hashes and sets like empty strings.
---
---```lua
---tq.rpush(g, db, tq_obj.new("jobs", "boot"))
---print(tq_kit.inspect(g, db, "jobs")) --> list
---```
---@param g tq_global_t the runtime
---@param db integer the database, 0 to 37
---@param key string the key
---@return string? kind as in `tq_kit.entry`; nil without the key
---@return integer? remaining until it expires; nil for never
function tq_kit.inspect(g, db, key) end

---Says in words why the last call on the runtime failed.
---
---```lua
---tq.set(g, db, tq_obj.new("motd"))
---print(tq_kit.last_error(g)) --> the key object has no value
---```
---@param g tq_global_t the runtime
---@return string? text nil when the last call did not fail
function tq_kit.last_error(g) end

---Shows a record with all its fields, a message with its bytes, a value object, or a table. The message of a scan is
---cast first: as what it comes, a `tq_mom_pubsub_msg_t`, it has nothing to show.
---
---```lua
---print(tq_kit.show(tq_obj.new("motd", "hello"))) --> tq_obj {key = "motd", value = "hello"}
---```
---@param value any any value
---@param elements? integer where longer tables and arrays are cut; 10 if left out
---@return string text on one line or several
function tq_kit.show(value, elements) end

---Makes a `print` that has records, objects and tables as `tq_kit.show` has them. `scripts/lua -i` uses it.
---
---```lua
---tq_kit.printer(print)("motd", {1, 2}) --> motd	{1, 2}
---```
---@param print_line function what prints in the end: `print`
---@return function print which takes any values
function tq_kit.printer(print_line) end

---A subscription. It stays in force until it is cancelled or the runtime ends, held by the script or not.
---@class tq_kit.subscription
---@field cancel fun(self: tq_kit.subscription): boolean Ends the subscription; also from inside its callback.

---What a key holds. To `tq_kit.load` the kind may be left to the one part that is there, and a text stands for a string.
---@class tq_kit.entry
---@field kind? string `string`, `hash`, `list`, `set` or `sorted_set`
---@field remaining? integer [ms] until the key expires; nil for never
---@field value? string of a string
---@field fields? table<integer, string> of a hash, by number
---@field field_remaining? table<integer, integer> [ms] until fields of a hash expire, by number
---@field elements? string [] of a list, in its order
---@field members? string [] of a set; a dump gives them in the order of their bytes
---@field scores? table<string, number> of a sorted set, by member

return tq_kit
