---@meta tq_mom_sync
-- Written by scripts/describe from api/. For editors; no program loads it.

---A handle: a userdata with a type and a pointer.
---@class tq_pointer: userdata
---@field __disown fun(self: tq_pointer) Makes Lua give up what it owns, for good.

---@class tq_mom_sync
tq_mom_sync = {}

---Names the type of a value.
---
---```lua
---print(swig_type(tq_obj.new("motd")), swig_type("motd")) --> tq_obj *	string
---```
---@param value any any value
---@return string name all spellings of a handle's type with `|` between them, or Lua's own type name
function swig_type(value) end

---Tells whether two handles point to the same thing, whatever their types.
---
---```lua
---local o = tq_obj.new("motd")
---print(swig_equals(o, o), swig_equals(o, tq_obj.new("motd"))) --> true	false
---```
---@param a any a handle
---@param b any another
---@return boolean equal nothing if one of the two is no userdata
function swig_equals(a, b) end

---Makes a runtime.
---
---Host kit: Each runtime has a store of its own. `name` is the path of a snapshot or the name of a server, nil or empty for neither. Without `g` the record is the library's, shows `rmc` and `master` and goes with the runtime. A given `g` only names the runtime by its address: the kit neither reads nor writes it. Keep it as long as the runtime, for a new record at the address of a collected one still names the old runtime. Nil when the snapshot is refused (the reason goes to stderr), when `g` is a runtime already, or out of memory.
---
---```lua
---local other = tq.tq_global_init(nil, nil)
---print(tq.client_connect(other, 0), tq.tq_global_finish(other)) --> 0.0	0.0
---```
---@param name string? the runtime's name, or nil
---@param g tq_global_t? a zeroed record to use, or nil for one of the library's
---@return tq_global_t? result the runtime, which lives until `tq_global_finish`; nil on failure
function tq_mom_sync.tq_global_init(name, g) end

---Ends a runtime.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_ERR` (a call with callbacks is under way), `TQ_MOM_INPUT_ERR` (no runtime, or finished before)
---
---Host kit: Drops the store and saves nothing. Results and objects stay valid. In a callback of a scan or a publish of this runtime, or in a finalizer that runs meanwhile, it changes nothing and returns `TQ_MOM_ERR`. A scan that an error has left counts as under way for calls from further down the C stack: call again from where the scan was called.
---
---```lua
---local other = tq.tq_global_init(nil, nil)
---print(tq.tq_global_finish(other)) --> 0.0
---```
---@param g tq_global_t? the runtime
---@return number status 0, or what went wrong
function tq_mom_sync.tq_global_finish(g) end

---Returns the runtime's event-loop master.
---
---Host kit: A filled record: `tid` of the thread that made the runtime, `flag` `TQ_THREAD_USE_POLL`, `alloc` 1, `max_fd` -1, empty timer lists, and a `cur_thread` named "kit" whose handler does what `tq_global_run` does.
---
---```lua
---print(tq.tq_global_get_master(g).cur_thread.name) --> kit
---```
---@param g tq_global_t? the runtime
---@return tq_thread_master? result the library's record, or nil without a runtime
function tq_mom_sync.tq_global_get_master(g) end

---Runs the event loop and returns when it ends.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (no runtime)
---
---Host kit: Removes everything that is due, delivers messages that have arrived and returns; it waits for nothing.
---
---```lua
---print(tq.tq_global_run(g)) --> 0.0
---```
---@param g tq_global_t? the runtime
---@return number status 0, or what went wrong
function tq_mom_sync.tq_global_run(g) end

---Connects a runtime to its store.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (no runtime)
---
---Host kit: `n` is ignored; connecting again is no failure.
---
---```lua
---print(tq.client_connect(g, 0)) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param n number the store's own number
---@return number status 0, or what went wrong
function tq_mom_sync.client_connect(g, n) end

---Connects a runtime to a cluster of stores.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (no runtime)
---
---Host kit: As `client_connect`.
---
---```lua
---print(tq.client_connect_cluster(g, 0)) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param n number the store's own number
---@return number status 0, or what went wrong
function tq_mom_sync.client_connect_cluster(g, n) end

---Prints the library's state.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (no runtime)
---
---Host kit: Prints connection, keys by database and kind, subscriptions, and the results and objects that commands returned and nobody has released, to stdout. Objects that a script made itself do not count.
---
---```lua
---print(tq.debug_show_all(g)) --> 0.0
---```
---@param g tq_global_t? the runtime
---@return number status 0, or what went wrong
function tq_mom_sync.debug_show_all(g) end

---Saves the store.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_ERR` (the runtime has no file, or it cannot be written), `TQ_MOM_INPUT_ERR` (no runtime), `TQ_MOM_NO_READY`
---
---Host kit: Writes the snapshot before it returns, and the reason of a failure to stderr; `n` is ignored.
---
---```lua
---print(tq.bgsave(g, 0)) --> -1.0
---```
---@param g tq_global_t? the runtime
---@param n number the store's own number
---@return number status 0, or what went wrong
function tq_mom_sync.bgsave(g, n) end

---Returns the value of a key.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: A missing key gives nil and 0.
---
---With options: `get_ext`
---
---```lua
---local found, status = tq.get(g, db, tq_obj.new("motd"))
---print(found.value, status) --> hello	0.0
---tq.tq_obj_free(found)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the string
---@return tq_obj? object key and value, or nil. Release it with tq_obj_free
---@return number status 0, or what went wrong
function tq_mom_sync.get(g, db, key) end

---As `get`, with options and a result record.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: A missing key gives a record without a value, `error_code` 0.
---
---```lua
---local result = tq.get_ext(g, db, nil, tq_obj.new("motd"))
---print(result.value.value, result.error_code) --> hello	0.0
---tq.get_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op get_op_t? the options, or nil for the defaults
---@param key tq_obj? names the string
---@return tq_mom_get_res_t? result the value. Release it with get_res_free
function tq_mom_sync.get_ext(g, db, op, key) end

---Stores a value.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: Replaces what the key holds, of any kind, and clears its expiry.
---
---With options: `set_ext`
---
---```lua
---print(tq.set(g, db, tq_obj.new("motd", "good day"))) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the string and carries the value
---@return number status 0, or what went wrong
function tq_mom_sync.set(g, db, key) end

---As `set`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.set_ext(g, db, tq.set_op_t(), tq_obj.new("motd", "good day"))) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op set_op_t? the options, or nil for the defaults
---@param key tq_obj? names the string and carries the value
---@return number status 0, or what went wrong
function tq_mom_sync.set_ext(g, db, op, key) end

---Stores a value unless the key exists.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: A key of any kind counts.
---
---```lua
---print(tq.setnx(g, db, tq_obj.new("motd", "good day"))) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the string and carries the value
---@return number stored 1 stored, 0 not
function tq_mom_sync.setnx(g, db, key) end

---As `setnx`, and does not tell whether it stored the value.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: 0, stored or not.
---
---With options: `setnx_noreply_ext`
---
---```lua
---print(tq.setnx_noreply(g, db, tq_obj.new("motd", "good day"))) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the string and carries the value
---@return number status 0, or what went wrong
function tq_mom_sync.setnx_noreply(g, db, key) end

---As `setnx_noreply`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.setnx_noreply_ext(g, db, tq.set_op_t(), tq_obj.new("motd", "good day"))) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op set_op_t? the options, or nil for the defaults
---@param key tq_obj? names the string and carries the value
---@return number status 0, or what went wrong
function tq_mom_sync.setnx_noreply_ext(g, db, op, key) end

---Deletes a key of any kind.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---With options: `del_ext`
---
---```lua
---print(tq.del(g, db, tq_obj.new("motd"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? the key
---@return number deleted 1 deleted, 0 not there
function tq_mom_sync.del(g, db, key) end

---As `del`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.del_ext(g, db, tq.del_op_t(), tq_obj.new("motd"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op del_op_t? the options, or nil for the defaults
---@param key tq_obj? the key
---@return number deleted 1 deleted, 0 not there
function tq_mom_sync.del_ext(g, db, op, key) end

---Tells whether there is a key of any kind.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---With options: `exists_ext`
---
---```lua
---print(tq.exists(g, db, tq_obj.new("motd"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? the key
---@return number exists 1 or 0
function tq_mom_sync.exists(g, db, key) end

---As `exists`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---print(tq.exists_ext(g, db, tq.exist_op_t(), tq_obj.new("motd"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op exist_op_t? the options, or nil for the defaults
---@param key tq_obj? the key
---@return number exists 1 or 0
function tq_mom_sync.exists_ext(g, db, op, key) end

---Adds 1 to a number.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_ERR` (the sum is out of range; `value` is the old number), `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: A missing key counts as 0; the expiry stays. `TQ_MOM_INPUT_ERR` for what is no decimal 64-bit number as `incr` writes it (`7`, not `007`).
---
---With options: `incr_ext`
---
---```lua
---local result = tq.incr(g, db, tq_obj.new("boots"))
---print(result.value) --> 1.0
---tq.incr_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the string, a decimal number
---@return tq_mom_incr_res_t? result the new number. Release it with incr_res_free
function tq_mom_sync.incr(g, db, key) end

---As `incr`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_ERR` (the sum is out of range; `value` is the old number), `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---local result = tq.incr_ext(g, db, tq.incr_op_t(), tq_obj.new("boots"))
---print(result.value) --> 1.0
---tq.incr_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op incr_op_t? the options, or nil for the defaults
---@param key tq_obj? names the string, a decimal number
---@return tq_mom_incr_res_t? result the new number. Release it with incr_res_free
function tq_mom_sync.incr_ext(g, db, op, key) end

---Releases an object that a command returned.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (the library's to release, released before, or no object)
---
---Host kit: An object of Lua's, from `tq_obj.new`, wants `object:__disown()` first.
---
---```lua
---local found = tq.get(g, db, tq_obj.new("motd"))
---print(tq.tq_obj_free(found)) --> 0.0
---```
---@param object tq_obj? from `get` or a pop; null is no failure
---@return number status 0, or what went wrong
function tq_mom_sync.tq_obj_free(object) end

---Releases a `tq_mom_get_res_t` and all it points to.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (not such a result, or released before)
---
---```lua
---local result = tq.get_ext(g, db, nil, tq_obj.new("motd"))
---print(result.value.value, result.error_code) --> hello	0.0
---tq.get_res_free(result)
---```
---@param result tq_mom_get_res_t? what the command returned; null is no failure
---@return number status 0, or what went wrong
function tq_mom_sync.get_res_free(result) end

---Releases a `tq_mom_incr_res_t` and all it points to.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (not such a result, or released before)
---
---```lua
---local result = tq.incr(g, db, tq_obj.new("boots"))
---print(result.value) --> 1.0
---tq.incr_res_free(result)
---```
---@param result tq_mom_incr_res_t? what the command returned; null is no failure
---@return number status 0, or what went wrong
function tq_mom_sync.incr_res_free(result) end

---Stores a value that goes after a time.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: Replaces what the key holds, of any kind.
---
---With options: `psetex_ext`
---
---```lua
---print(tq.psetex(g, db, tq_obj.new("lease", "eth0"), 60000)) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the string and carries the value
---@param milliseconds number [ms] until the key goes; positive
---@return number status 0, or what went wrong
function tq_mom_sync.psetex(g, db, key, milliseconds) end

---As `psetex`; the time comes with the options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: Without options there is no time: `TQ_MOM_INPUT_ERR`.
---
---```lua
---local options = tq.psetex_op_t()
---options.milseconds = 60000
---print(tq.psetex_ext(g, db, options, tq_obj.new("lease", "eth0"))) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op psetex_op_t? the options, or nil for the defaults
---@param key tq_obj? names the string and carries the value
---@return number status 0, or what went wrong
function tq_mom_sync.psetex_ext(g, db, op, key) end

---Lets a key go after a time.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: 0 removes it at once; a new time replaces an old one. The timeout is ignored, as nothing waits.
---
---```lua
---print(tq.pexpire(g, db, port, 60000, 1.5)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? the key
---@param time number [ms] until the key goes
---@param timeout number [s] bounds how long the call may take; what is no number counts as 0
---@return number set 1 set, 0 no such key
function tq_mom_sync.pexpire(g, db, key, time, timeout) end

---Deletes a key after a time.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: As `pexpire`.
---
---```lua
---print(tq.pdel(g, db, port, 60000)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? the key
---@param time number [ms] until the key goes
---@return number set 1 set, 0 no such key
function tq_mom_sync.pdel(g, db, key, time) end

---Takes the expiry of a key away.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: `n` is ignored.
---
---```lua
---tq.pexpire(g, db, port, 60000, 0)
---print(tq.del_expire(g, db, port, 0, 0)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? the key
---@param time number [ms] only an expiry that is due within this time; 0 for any
---@param n number the store's own number
---@return number taken 1 an expiry was taken away, 0 none was
function tq_mom_sync.del_expire(g, db, key, time, n) end

---Lets one field of a hash go after a time.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: As `pexpire`. `TQ_MOM_INPUT_ERR` for a number beyond 32 bits.
---
---```lua
---print(tq.pexpire_field(g, db, port, 60000, 2, 0)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the hash
---@param time number [ms] until the field goes
---@param field number the field's number
---@param timeout number [s] bounds how long the call may take; what is no number counts as 0
---@return number set 1 set, 0 no such field
function tq_mom_sync.pexpire_field(g, db, key, time, field, timeout) end

---Lets fields of a hash go after a time.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: As `pexpire`. `TQ_MOM_INPUT_ERR` without a field.
---
---```lua
---print(tq.pexpire_fields(g, db, port, 60000, {1, 2, 3}, 0)) --> 2.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the hash
---@param time number [ms] until the fields go
---@param fields integer[] the fields' numbers
---@param timeout number [s] bounds how long the call may take; what is no number counts as 0
---@return number set how many of the fields there are
function tq_mom_sync.pexpire_fields(g, db, key, time, fields, timeout) end

---Writes fields.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: A hash that is missing is made. `TQ_MOM_INPUT_ERR`, and nothing is written, for an empty list and for a field that the object does not have. Written fields lose their expiry; the hash keeps its own.
---
---With options: `hmset_ext`
---
---```lua
---port[1] = "down"
---print(tq.hmset(g, db, port, {1})) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the hash and carries the bytes
---@param fields integer[] the fields to write
---@return number status 0, or what went wrong
function tq_mom_sync.hmset(g, db, key, fields) end

---As `hmset`, with options, which take the list with them: nil for the options writes no fields.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: Without options: `TQ_MOM_INPUT_ERR`.
---
---```lua
---port[1] = "down"
---print(tq.hmset_ext(g, db, tq.hmset_op_t(), port, {1})) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op hmset_op_t? the options, or nil for the defaults
---@param key tq_obj? names the hash and carries the bytes
---@param fields integer[] the fields to write
---@return number status 0, or what went wrong
function tq_mom_sync.hmset_ext(g, db, op, key, fields) end

---Writes each field that the hash does not have; the others stay.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: As `hmset`.
---
---With options: `hmsetnx_ext`
---
---```lua
---port[3] = "full"
---print(tq.hmsetnx(g, db, port, {1, 3})) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the hash and carries the bytes
---@param fields integer[] the fields to write
---@return number written how many fields were written
function tq_mom_sync.hmsetnx(g, db, key, fields) end

---As `hmsetnx`, with options, which take the list with them: nil for the options writes no fields.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: Without options: `TQ_MOM_INPUT_ERR`.
---
---```lua
---port[3] = "full"
---print(tq.hmsetnx_ext(g, db, tq.hmsetnx_op_t(), port, {1, 3})) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op hmsetnx_op_t? the options, or nil for the defaults
---@param key tq_obj? names the hash and carries the bytes
---@param fields integer[] the fields to write
---@return number written how many fields were written
function tq_mom_sync.hmsetnx_ext(g, db, op, key, fields) end

---Reads fields.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: A missing hash gives a record without a value, `error_code` 0. `TQ_MOM_INPUT_ERR` for an empty list.
---
---```lua
---local result = tq.hmget(g, db, tq_obj.new("port"), {2, 3})
---print(result.value[2], #result.field_tag) --> 10G	1
---tq.hash_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the hash
---@param fields integer[] the fields to read
---@return tq_mom_hash_res_t? result the fields that are there. Release it with hash_res_free
function tq_mom_sync.hmget(g, db, key, fields) end

---Reads all fields.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: A missing hash gives a record without a value, `error_code` 0.
---
---With options: `hgetall_ext`
---
---```lua
---local result = tq.hgetall(g, db, tq_obj.new("port"))
---print(result.value[1], result.value[2]) --> up	10G
---tq.hash_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the hash
---@return tq_mom_hash_res_t? result all fields. Release it with hash_res_free
function tq_mom_sync.hgetall(g, db, key) end

---As `hgetall`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---local result = tq.hgetall_ext(g, db, tq.hget_op_t(), tq_obj.new("port"))
---print(result.value[1], result.value[2]) --> up	10G
---tq.hash_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op hget_op_t? the options, or nil for the defaults
---@param key tq_obj? names the hash
---@return tq_mom_hash_res_t? result all fields. Release it with hash_res_free
function tq_mom_sync.hgetall_ext(g, db, op, key) end

---Releases a `tq_mom_hash_res_t` and all it points to.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (not such a result, or released before)
---
---```lua
---local result = tq.hmget(g, db, tq_obj.new("port"), {2, 3})
---print(result.value[2], #result.field_tag) --> 10G	1
---tq.hash_res_free(result)
---```
---@param result tq_mom_hash_res_t? what the command returned; null is no failure
---@return number status 0, or what went wrong
function tq_mom_sync.hash_res_free(result) end

---Puts an element before the first.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: A list that is missing is made.
---
---With options: `lpush_ext`
---
---```lua
---print(tq.lpush(g, db, tq_obj.new("jobs", "power"))) --> 3.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the list and carries the new element
---@return number length the new length
function tq_mom_sync.lpush(g, db, key) end

---As `lpush`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.lpush_ext(g, db, tq.lpush_op_t(), tq_obj.new("jobs", "power"))) --> 3.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op lpush_op_t? the options, or nil for the defaults
---@param key tq_obj? names the list and carries the new element
---@return number length the new length
function tq_mom_sync.lpush_ext(g, db, op, key) end

---Puts an element behind the last.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: A list that is missing is made.
---
---With options: `rpush_ext`
---
---```lua
---print(tq.rpush(g, db, tq_obj.new("jobs", "report"))) --> 3.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the list and carries the new element
---@return number length the new length
function tq_mom_sync.rpush(g, db, key) end

---As `rpush`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.rpush_ext(g, db, tq.rpush_op_t(), tq_obj.new("jobs", "report"))) --> 3.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op rpush_op_t? the options, or nil for the defaults
---@param key tq_obj? names the list and carries the new element
---@return number length the new length
function tq_mom_sync.rpush_ext(g, db, op, key) end

---Takes the first element away and returns it.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: A list that is missing gives nil and 0.
---
---With options: `lpop_ext`
---
---```lua
---local job, left = tq.lpop(g, db, tq_obj.new("jobs"))
---print(job.value, left) --> boot	1.0
---tq.tq_obj_free(job)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the list
---@return tq_obj? element the element, or nil. Release it with tq_obj_free
---@return number length the length that is left, or the status of the failure
function tq_mom_sync.lpop(g, db, key) end

---As `lpop`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---local job, left = tq.lpop_ext(g, db, tq.lpop_op_t(), tq_obj.new("jobs"))
---print(job.value, left) --> boot	1.0
---tq.tq_obj_free(job)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op lpop_op_t? the options, or nil for the defaults
---@param key tq_obj? names the list
---@return tq_obj? element the element, or nil. Release it with tq_obj_free
---@return number length the length that is left, or the status of the failure
function tq_mom_sync.lpop_ext(g, db, op, key) end

---Takes the last element away and returns it.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: A list that is missing gives nil and 0.
---
---With options: `rpop_ext`
---
---```lua
---local job, left = tq.rpop(g, db, tq_obj.new("jobs"))
---print(job.value, left) --> scan	1.0
---tq.tq_obj_free(job)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the list
---@return tq_obj? element the element, or nil. Release it with tq_obj_free
---@return number length the length that is left, or the status of the failure
function tq_mom_sync.rpop(g, db, key) end

---As `rpop`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---local job, left = tq.rpop_ext(g, db, tq.rpop_op_t(), tq_obj.new("jobs"))
---print(job.value, left) --> scan	1.0
---tq.tq_obj_free(job)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op rpop_op_t? the options, or nil for the defaults
---@param key tq_obj? names the list
---@return tq_obj? element the element, or nil. Release it with tq_obj_free
---@return number length the length that is left, or the status of the failure
function tq_mom_sync.rpop_ext(g, db, op, key) end

---Counts the elements.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: 0 for a list that is missing.
---
---With options: `llen_ext`
---
---```lua
---print(tq.llen(g, db, tq_obj.new("jobs"))) --> 2.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the list
---@return number length how many elements there are
function tq_mom_sync.llen(g, db, key) end

---As `llen`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---print(tq.llen_ext(g, db, tq.llen_op_t(), tq_obj.new("jobs"))) --> 2.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op llen_op_t? the options, or nil for the defaults
---@param key tq_obj? names the list
---@return number length how many elements there are
function tq_mom_sync.llen_ext(g, db, op, key) end

---Returns the elements of a range.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: The range is cut to the list; a list that is missing has no elements.
---
---With options: `lrange_ext`
---
---```lua
---local result = tq.lrange(g, db, tq_obj.new("jobs"), 0, -1)
---for _, job in ipairs(result.value_array) do print(tq_obj.from(job).value) end --> boot --> scan
---tq.lrange_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the list
---@param start number the first position
---@param stop number the last position, included
---@return tq_mom_lrange_res_t? result the elements. Release it with lrange_res_free
function tq_mom_sync.lrange(g, db, key, start, stop) end

---As `lrange`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---local result = tq.lrange_ext(g, db, tq.lrange_op_t(), tq_obj.new("jobs"), 0, -1)
---for _, job in ipairs(result.value_array) do print(tq_obj.from(job).value) end --> boot --> scan
---tq.lrange_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op lrange_op_t? the options, or nil for the defaults
---@param key tq_obj? names the list
---@param start number the first position
---@param stop number the last position, included
---@return tq_mom_lrange_res_t? result the elements. Release it with lrange_res_free
function tq_mom_sync.lrange_ext(g, db, op, key, start, stop) end

---Puts an element before or behind another.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_ERR` (no element equals the pivot), `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: The pivot is found by its value, from the head; its key does not matter. 0 for a list that is missing. `TQ_MOM_INPUT_ERR` for any other `where`.
---
---With options: `linsert_ext`
---
---```lua
---local job, pivot = tq_obj.new("jobs", "link"), tq_obj.new("jobs", "scan")
---print(tq.linsert(g, db, job, pivot, 0)) --> 3.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the list and carries the new element
---@param pivot tq_obj? carries the element beside which it goes
---@param where number 0 before the pivot, 1 behind it
---@return number length the new length
function tq_mom_sync.linsert(g, db, key, pivot, where) end

---As `linsert`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_ERR` (no element equals the pivot), `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---local job, pivot = tq_obj.new("jobs", "link"), tq_obj.new("jobs", "scan")
---print(tq.linsert_ext(g, db, tq.linsert_op_t(), job, pivot, 0)) --> 3.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op linsert_op_t? the options, or nil for the defaults
---@param key tq_obj? names the list and carries the new element
---@param pivot tq_obj? carries the element beside which it goes
---@param where number 0 before the pivot, 1 behind it
---@return number length the new length
function tq_mom_sync.linsert_ext(g, db, op, key, pivot, where) end

---Replaces one element.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_ERR` (there is no such position), `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: A list that is missing has no positions.
---
---With options: `lset_ext`
---
---```lua
---print(tq.lset(g, db, tq_obj.new("jobs", "sync"), -1)) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the list and carries the new element
---@param index number the position
---@return number status 0, or what went wrong
function tq_mom_sync.lset(g, db, key, index) end

---As `lset`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_ERR` (there is no such position), `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.lset_ext(g, db, tq.lset_op_t(), tq_obj.new("jobs", "sync"), -1)) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op lset_op_t? the options, or nil for the defaults
---@param key tq_obj? names the list and carries the new element
---@param index number the position
---@return number status 0, or what went wrong
function tq_mom_sync.lset_ext(g, db, op, key, index) end

---Removes elements that equal the given one, from the head.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: 0 for a list that is missing.
---
---With options: `lrem_ext`
---
---```lua
---print(tq.lrem(g, db, tq_obj.new("jobs", "scan"), 0)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the list and carries the element
---@param count number how many to remove at most, 0 for all
---@return number removed how many were removed
function tq_mom_sync.lrem(g, db, key, count) end

---As `lrem`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.lrem_ext(g, db, tq.lrem_op_t(), tq_obj.new("jobs", "scan"), 0)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op lrem_op_t? the options, or nil for the defaults
---@param key tq_obj? names the list and carries the element
---@param count number how many to remove at most, 0 for all
---@return number removed how many were removed
function tq_mom_sync.lrem_ext(g, db, op, key, count) end

---Releases a `tq_mom_lrange_res_t` and all it points to.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (not such a result, or released before)
---
---```lua
---local result = tq.lrange(g, db, tq_obj.new("jobs"), 0, -1)
---for _, job in ipairs(result.value_array) do print(tq_obj.from(job).value) end --> boot --> scan
---tq.lrange_res_free(result)
---```
---@param result tq_mom_lrange_res_t? what the command returned; null is no failure
---@return number status 0, or what went wrong
function tq_mom_sync.lrange_res_free(result) end

---Adds a member.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: A set that is missing is made.
---
---With options: `sadd_ext`
---
---```lua
---print(tq.sadd(g, db, tq_obj.new("vlans", "20"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the set and carries the member
---@return number added 1 added, 0 it was there
function tq_mom_sync.sadd(g, db, key) end

---As `sadd`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.sadd_ext(g, db, tq.sadd_op_t(), tq_obj.new("vlans", "20"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op sadd_op_t? the options, or nil for the defaults
---@param key tq_obj? names the set and carries the member
---@return number added 1 added, 0 it was there
function tq_mom_sync.sadd_ext(g, db, op, key) end

---Removes a member.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---With options: `srem_ext`
---
---```lua
---print(tq.srem(g, db, tq_obj.new("vlans", "10"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the set and carries the member
---@return number removed 1 removed, 0 it was not there
function tq_mom_sync.srem(g, db, key) end

---As `srem`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.srem_ext(g, db, tq.srem_op_t(), tq_obj.new("vlans", "10"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op srem_op_t? the options, or nil for the defaults
---@param key tq_obj? names the set and carries the member
---@return number removed 1 removed, 0 it was not there
function tq_mom_sync.srem_ext(g, db, op, key) end

---Tells whether a member is in the set.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---With options: `sismember_ext`
---
---```lua
---print(tq.sismember(g, db, tq_obj.new("vlans", "10"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the set and carries the member
---@return number found 1 or 0
function tq_mom_sync.sismember(g, db, key) end

---As `sismember`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---print(tq.sismember_ext(g, db, tq.sismember_op_t(), tq_obj.new("vlans", "10"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op sismember_op_t? the options, or nil for the defaults
---@param key tq_obj? names the set and carries the member
---@return number found 1 or 0
function tq_mom_sync.sismember_ext(g, db, op, key) end

---Counts the members.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: 0 for a set that is missing.
---
---With options: `scard_ext`
---
---```lua
---print(tq.scard(g, db, tq_obj.new("vlans"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the set
---@return number members how many members there are
function tq_mom_sync.scard(g, db, key) end

---As `scard`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---print(tq.scard_ext(g, db, tq.scard_op_t(), tq_obj.new("vlans"))) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op scard_op_t? the options, or nil for the defaults
---@param key tq_obj? names the set
---@return number members how many members there are
function tq_mom_sync.scard_ext(g, db, op, key) end

---Returns all members.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: In the order of their bytes; a set that is missing has none.
---
---With options: `smembers_ext`
---
---```lua
---local result = tq.smembers(g, db, tq_obj.new("vlans"))
---for _, member in ipairs(result.value_array) do print(tq_obj.from(member).value) end --> 10
---tq.smembers_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the set
---@return tq_mom_smembers_res_t? result the members. Release it with smembers_res_free
function tq_mom_sync.smembers(g, db, key) end

---As `smembers`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---local result = tq.smembers_ext(g, db, tq.smembers_op_t(), tq_obj.new("vlans"))
---for _, member in ipairs(result.value_array) do print(tq_obj.from(member).value) end --> 10
---tq.smembers_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op smembers_op_t? the options, or nil for the defaults
---@param key tq_obj? names the set
---@return tq_mom_smembers_res_t? result the members. Release it with smembers_res_free
function tq_mom_sync.smembers_ext(g, db, op, key) end

---Releases a `tq_mom_smembers_res_t` and all it points to.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (not such a result, or released before)
---
---```lua
---local result = tq.smembers(g, db, tq_obj.new("vlans"))
---for _, member in ipairs(result.value_array) do print(tq_obj.from(member).value) end --> 10
---tq.smembers_res_free(result)
---```
---@param result tq_mom_smembers_res_t? what the command returned; null is no failure
---@return number status 0, or what went wrong
function tq_mom_sync.smembers_res_free(result) end

---Adds members, or moves those that are there to their new scores. `scores[i]` belongs to `members[i]`.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: A sorted set that is missing is made. Members of one score are ordered by their bytes. All members name the same sorted set and no score is NaN, else `TQ_MOM_INPUT_ERR`; infinite scores are allowed. Of a member that is listed twice the last score counts. All or nothing. No members: 0.
---
---With options: `zadd_ext`
---
---```lua
---print(tq.zadd(g, db, {3, 99}, {tq_obj.new("load", "eth2"), eth0})) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param scores number[] the members' scores
---@param members tq_obj[] the members, as many as scores
---@return number added how many members are new
function tq_mom_sync.zadd(g, db, scores, members) end

---As `zadd`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.zadd_ext(g, db, tq.zadd_op_t(), {3, 99}, {tq_obj.new("load", "eth2"), eth0})) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op zadd_op_t? the options, or nil for the defaults
---@param scores number[] the members' scores
---@param members tq_obj[] the members, as many as scores
---@return number added how many members are new
function tq_mom_sync.zadd_ext(g, db, op, scores, members) end

---Removes members.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: All members name the same sorted set, else `TQ_MOM_INPUT_ERR`. All or nothing. No members: 0.
---
---With options: `zrem_ext`
---
---```lua
---print(tq.zrem(g, db, {eth0, eth1})) --> 2.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param members tq_obj[] the members
---@return number removed how many were removed
function tq_mom_sync.zrem(g, db, members) end

---As `zrem`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.zrem_ext(g, db, tq.zrem_op_t(), {eth0, eth1})) --> 2.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op zrem_op_t? the options, or nil for the defaults
---@param members tq_obj[] the members
---@return number removed how many were removed
function tq_mom_sync.zrem_ext(g, db, op, members) end

---Counts the members.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: 0 for a sorted set that is missing.
---
---With options: `zcard_ext`
---
---```lua
---print(tq.zcard(g, db, tq_obj.new("load"))) --> 2.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the sorted set
---@return number members how many members there are
function tq_mom_sync.zcard(g, db, key) end

---As `zcard`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---print(tq.zcard_ext(g, db, tq.zcard_op_t(), tq_obj.new("load"))) --> 2.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op zcard_op_t? the options, or nil for the defaults
---@param key tq_obj? names the sorted set
---@return number members how many members there are
function tq_mom_sync.zcard_ext(g, db, op, key) end

---Counts the members between two scores.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: `TQ_MOM_INPUT_ERR` for a bound that is NaN; infinite ones are allowed.
---
---With options: `zcount_ext`
---
---```lua
---print(tq.zcount(g, db, tq_obj.new("load"), 50, math.huge)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the sorted set
---@param min number the lowest score
---@param max number the highest score
---@return number members how many members have such scores
function tq_mom_sync.zcount(g, db, key, min, max) end

---As `zcount`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---print(tq.zcount_ext(g, db, tq.zcount_op_t(), tq_obj.new("load"), 50, math.huge)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op zcount_op_t? the options, or nil for the defaults
---@param key tq_obj? names the sorted set
---@param min number the lowest score
---@param max number the highest score
---@return number members how many members have such scores
function tq_mom_sync.zcount_ext(g, db, op, key, min, max) end

---Returns the members of a range of ranks.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: The range is cut to the sorted set; one that is missing has no members.
---
---With options: `zrange_ext`
---
---```lua
---local result = tq.zrange(g, db, tq_obj.new("load"), 0, -1)
---for i, member in ipairs(result.value) do print(tq_obj.from(member).value, result.score[i]) end --> eth0	12.5 --> eth1	80.0
---tq.zrange_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the sorted set
---@param start number the first rank
---@param stop number the last rank, included
---@return tq_mom_zrange_res_t? result members and scores. Release it with zrange_res_free
function tq_mom_sync.zrange(g, db, key, start, stop) end

---As `zrange`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---local result = tq.zrange_ext(g, db, tq.zrange_op_t(), tq_obj.new("load"), 0, -1)
---for i, member in ipairs(result.value) do print(tq_obj.from(member).value, result.score[i]) end --> eth0	12.5 --> eth1	80.0
---tq.zrange_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op zrange_op_t? the options, or nil for the defaults
---@param key tq_obj? names the sorted set
---@param start number the first rank
---@param stop number the last rank, included
---@return tq_mom_zrange_res_t? result members and scores. Release it with zrange_res_free
function tq_mom_sync.zrange_ext(g, db, op, key, start, stop) end

---Returns the members between two scores.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: `TQ_MOM_INPUT_ERR` for a bound that is NaN; infinite ones are allowed.
---
---With options: `zrangebyscore_ext`
---
---```lua
---local result = tq.zrangebyscore(g, db, tq_obj.new("load"), 50, math.huge)
---for i, member in ipairs(result.value) do print(tq_obj.from(member).value, result.score[i]) end --> eth1	80.0
---tq.zrangebyscore_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the sorted set
---@param min number the lowest score
---@param max number the highest score
---@return tq_mom_zrangebyscore_res_t? result members and scores. Release it with zrangebyscore_res_free
function tq_mom_sync.zrangebyscore(g, db, key, min, max) end

---As `zrangebyscore`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---local result = tq.zrangebyscore_ext(g, db, tq.zrangebyscore_op_t(), tq_obj.new("load"), 50, math.huge)
---for i, member in ipairs(result.value) do print(tq_obj.from(member).value, result.score[i]) end --> eth1	80.0
---tq.zrangebyscore_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op zrangebyscore_op_t? the options, or nil for the defaults
---@param key tq_obj? names the sorted set
---@param min number the lowest score
---@param max number the highest score
---@return tq_mom_zrangebyscore_res_t? result members and scores. Release it with zrangebyscore_res_free
function tq_mom_sync.zrangebyscore_ext(g, db, op, key, min, max) end

---Returns the rank of a member.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_ERR` (there is no such member, or no such sorted set), `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---With options: `zrank_ext`
---
---```lua
---print(tq.zrank(g, db, eth1)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the sorted set and carries the member
---@return number rank the member's rank
function tq_mom_sync.zrank(g, db, key) end

---As `zrank`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_ERR` (there is no such member, or no such sorted set), `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---print(tq.zrank_ext(g, db, tq.zrank_op_t(), eth1)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op zrank_op_t? the options, or nil for the defaults
---@param key tq_obj? names the sorted set and carries the member
---@return number rank the member's rank
function tq_mom_sync.zrank_ext(g, db, op, key) end

---Returns the score of a member.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: `exist` is 0, and `error_code` too, without such a member or sorted set.
---
---With options: `zscore_ext`
---
---```lua
---local result = tq.zscore(g, db, eth1)
---print(result.score, result.exist) --> 80.0	1.0
---tq.zscore_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the sorted set and carries the member
---@return tq_mom_zscore_res_t? result the score. Release it with zscore_res_free
function tq_mom_sync.zscore(g, db, key) end

---As `zscore`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---local result = tq.zscore_ext(g, db, tq.zscore_op_t(), eth1)
---print(result.score, result.exist) --> 80.0	1.0
---tq.zscore_res_free(result)
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op zscore_op_t? the options, or nil for the defaults
---@param key tq_obj? names the sorted set and carries the member
---@return tq_mom_zscore_res_t? result the score. Release it with zscore_res_free
function tq_mom_sync.zscore_ext(g, db, op, key) end

---Removes the members of a range of ranks.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: 0 for a sorted set that is missing.
---
---With options: `zremrangebyrank_ext`
---
---```lua
---print(tq.zremrangebyrank(g, db, tq_obj.new("load"), 0, 0)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the sorted set
---@param start number the first rank
---@param stop number the last rank, included
---@return number removed how many were removed
function tq_mom_sync.zremrangebyrank(g, db, key, start, stop) end

---As `zremrangebyrank`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.zremrangebyrank_ext(g, db, tq.zremrangebyrank_op_t(), tq_obj.new("load"), 0, 0)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op zremrangebyrank_op_t? the options, or nil for the defaults
---@param key tq_obj? names the sorted set
---@param start number the first rank
---@param stop number the last rank, included
---@return number removed how many were removed
function tq_mom_sync.zremrangebyrank_ext(g, db, op, key, start, stop) end

---Removes the members between two scores.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---Host kit: As `zcount`; 0 for a sorted set that is missing.
---
---With options: `zremrangebyscore_ext`
---
---```lua
---print(tq.zremrangebyscore(g, db, tq_obj.new("load"), -math.huge, 50)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the sorted set
---@param min number the lowest score
---@param max number the highest score
---@return number removed how many were removed
function tq_mom_sync.zremrangebyscore(g, db, key, min, max) end

---As `zremrangebyscore`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`, `TQ_MOM_GLOBAL_DB_NO_WRITE`
---
---```lua
---print(tq.zremrangebyscore_ext(g, db, tq.zremrangebyscore_op_t(), tq_obj.new("load"), -math.huge, 50)) --> 1.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op zremrangebyscore_op_t? the options, or nil for the defaults
---@param key tq_obj? names the sorted set
---@param min number the lowest score
---@param max number the highest score
---@return number removed how many were removed
function tq_mom_sync.zremrangebyscore_ext(g, db, op, key, min, max) end

---Releases a `tq_mom_zrange_res_t` and all it points to.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (not such a result, or released before)
---
---```lua
---local result = tq.zrange(g, db, tq_obj.new("load"), 0, -1)
---for i, member in ipairs(result.value) do print(tq_obj.from(member).value, result.score[i]) end --> eth0	12.5 --> eth1	80.0
---tq.zrange_res_free(result)
---```
---@param result tq_mom_zrange_res_t? what the command returned; null is no failure
---@return number status 0, or what went wrong
function tq_mom_sync.zrange_res_free(result) end

---Releases a `tq_mom_zrangebyscore_res_t` and all it points to.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (not such a result, or released before)
---
---```lua
---local result = tq.zrangebyscore(g, db, tq_obj.new("load"), 50, math.huge)
---for i, member in ipairs(result.value) do print(tq_obj.from(member).value, result.score[i]) end --> eth1	80.0
---tq.zrangebyscore_res_free(result)
---```
---@param result tq_mom_zrangebyscore_res_t? what the command returned; null is no failure
---@return number status 0, or what went wrong
function tq_mom_sync.zrangebyscore_res_free(result) end

---Releases a `tq_mom_zscore_res_t` and all it points to.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR` (not such a result, or released before)
---
---```lua
---local result = tq.zscore(g, db, eth1)
---print(result.score, result.exist) --> 80.0	1.0
---tq.zscore_res_free(result)
---```
---@param result tq_mom_zscore_res_t? what the command returned; null is no failure
---@return number status 0, or what went wrong
function tq_mom_sync.zscore_res_free(result) end

---Sends a message to the subscribers. Nothing is stored.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: Sends the object's value under its key; hostkit.md says who can subscribe.
---
---With options: `publish_ext`
---
---```lua
---print(tq.publish(g, db, tq_obj.new("alarms", "fan 2"))) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? names the channel and carries the message
---@return number subscribers how many got it
function tq_mom_sync.publish(g, db, key) end

---As `publish`, with options.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---```lua
---print(tq.publish_ext(g, db, tq.publish_op_t(), tq_obj.new("alarms", "fan 2"))) --> 0.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param op publish_op_t? the options, or nil for the defaults
---@param key tq_obj? names the channel and carries the message
---@return number subscribers how many got it
function tq_mom_sync.publish_ext(g, db, op, key) end

---Visits keys. The message comes as a `tq_mom_pubsub_msg_t` and is a `tq_mom_scan_all_msg_t`: cast it with
---`convertPtrToScanAllMsg`. It is valid until the callback returns.
---
---Statuses: `TQ_MOM_OK`, `TQ_MOM_INPUT_ERR`, `TQ_MOM_MALLOC_ERR`, `TQ_MOM_NO_READY`
---
---Host kit: hostkit.md says what a pattern matches, what is visited and what a callback may do. `count` 0 is no limit. Without a callback the result is how many keys match.
---
---```lua
---local function show(_, message) print(tq.convertPtrToScanAllMsg(message).key) end
---print(tq.scan(g, db, tq_obj.new("port/*"), 0, show, nil)) --> port/1 --> port/2 --> 2.0
---```
---@param g tq_global_t? the runtime
---@param db tq_mom_db_type_t the database
---@param key tq_obj? a pattern of keys
---@param count number how many keys to visit at most
---@param callback fun(g: tq_global_t, message: tq_mom_pubsub_msg_t, argument: any): integer? called for each key with the runtime, the message and `argument`; an integer other than 0 stops the scan; or nil
---@param argument any passed on to the callback
---@return number visited how many times the callback ran
function tq_mom_sync.scan(g, db, key, count, callback, argument) end

---@class set_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return set_op_t record
function tq_mom_sync.set_op_t() end

---@class get_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return get_op_t record
function tq_mom_sync.get_op_t() end

---@class hget_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return hget_op_t record
function tq_mom_sync.hget_op_t() end

---@class hmset_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return hmset_op_t record
function tq_mom_sync.hmset_op_t() end

---@class hmsetnx_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return hmsetnx_op_t record
function tq_mom_sync.hmsetnx_op_t() end

---@class hmupdate_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return hmupdate_op_t record
function tq_mom_sync.hmupdate_op_t() end

---@class del_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return del_op_t record
function tq_mom_sync.del_op_t() end

---@class exist_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return exist_op_t record
function tq_mom_sync.exist_op_t() end

---@class publish_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return publish_op_t record
function tq_mom_sync.publish_op_t() end

---@class psetex_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own
---@field milseconds number [ms] until the key goes; positive

---Makes a zeroed record, which Lua frees.
---@return psetex_op_t record
function tq_mom_sync.psetex_op_t() end

---@class sadd_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return sadd_op_t record
function tq_mom_sync.sadd_op_t() end

---@class srem_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return srem_op_t record
function tq_mom_sync.srem_op_t() end

---@class sismember_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return sismember_op_t record
function tq_mom_sync.sismember_op_t() end

---@class scard_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return scard_op_t record
function tq_mom_sync.scard_op_t() end

---@class smembers_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return smembers_op_t record
function tq_mom_sync.smembers_op_t() end

---@class lpush_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return lpush_op_t record
function tq_mom_sync.lpush_op_t() end

---@class rpush_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return rpush_op_t record
function tq_mom_sync.rpush_op_t() end

---@class lpop_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return lpop_op_t record
function tq_mom_sync.lpop_op_t() end

---@class rpop_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return rpop_op_t record
function tq_mom_sync.rpop_op_t() end

---@class linsert_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return linsert_op_t record
function tq_mom_sync.linsert_op_t() end

---@class llen_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return llen_op_t record
function tq_mom_sync.llen_op_t() end

---@class lrange_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return lrange_op_t record
function tq_mom_sync.lrange_op_t() end

---@class lrem_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return lrem_op_t record
function tq_mom_sync.lrem_op_t() end

---@class lset_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return lset_op_t record
function tq_mom_sync.lset_op_t() end

---@class zadd_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return zadd_op_t record
function tq_mom_sync.zadd_op_t() end

---@class zcard_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return zcard_op_t record
function tq_mom_sync.zcard_op_t() end

---@class zcount_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return zcount_op_t record
function tq_mom_sync.zcount_op_t() end

---@class zrange_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return zrange_op_t record
function tq_mom_sync.zrange_op_t() end

---@class zrangebyscore_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return zrangebyscore_op_t record
function tq_mom_sync.zrangebyscore_op_t() end

---@class zrangebyscorelimit_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return zrangebyscorelimit_op_t record
function tq_mom_sync.zrangebyscorelimit_op_t() end

---@class zrank_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return zrank_op_t record
function tq_mom_sync.zrank_op_t() end

---@class zrem_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return zrem_op_t record
function tq_mom_sync.zrem_op_t() end

---@class zremrangebyrank_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return zremrangebyrank_op_t record
function tq_mom_sync.zremrangebyrank_op_t() end

---@class zremrangebyscore_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return zremrangebyscore_op_t record
function tq_mom_sync.zremrangebyscore_op_t() end

---@class zscore_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return zscore_op_t record
function tq_mom_sync.zscore_op_t() end

---@class incr_op_t: tq_pointer
---@field flag number bits whose meaning is the store's own

---Makes a zeroed record, which Lua frees.
---@return incr_op_t record
function tq_mom_sync.incr_op_t() end

---Takes what a handle points to for a `tq_mom_hash_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToHashRes(tq.tq_mom_hash_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_hash_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToHashRes(handle) end

---Takes what a handle points to for a `tq_mom_set_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToSetRes(tq.tq_mom_set_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_set_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToSetRes(handle) end

---Takes what a handle points to for a `tq_mom_list_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToListRes(tq.tq_mom_list_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_list_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToListRes(handle) end

---Takes what a handle points to for a `tq_mom_get_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToGetRes(tq.tq_mom_get_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_get_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToGetRes(handle) end

---Takes what a handle points to for a `tq_mom_incr_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToIncrRes(tq.tq_mom_incr_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_incr_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToIncrRes(handle) end

---Takes what a handle points to for a `tq_mom_setnx_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToSetnxRes(tq.tq_mom_setnx_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_setnx_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToSetnxRes(handle) end

---Takes what a handle points to for a `tq_mom_smembers_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToSmembersRes(tq.tq_mom_smembers_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_smembers_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToSmembersRes(handle) end

---Takes what a handle points to for a `tq_mom_llen_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToLlenRes(tq.tq_mom_llen_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_llen_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToLlenRes(handle) end

---Takes what a handle points to for a `tq_mom_lrange_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToLrangeRes(tq.tq_mom_lrange_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_lrange_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToLrangeRes(handle) end

---Takes what a handle points to for a `tq_mom_linsert_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToLinsertRes(tq.tq_mom_linsert_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_linsert_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToLinsertRes(handle) end

---Takes what a handle points to for a `tq_mom_lminsert_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToLminsertRes(tq.tq_mom_lminsert_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_lminsert_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToLminsertRes(handle) end

---Takes what a handle points to for a `tq_mom_lmrem_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToLmremRes(tq.tq_mom_lmrem_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_lmrem_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToLmremRes(handle) end

---Takes what a handle points to for a `tq_mom_lset_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToLsetRes(tq.tq_mom_lset_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_lset_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToLsetRes(handle) end

---Takes what a handle points to for a `tq_mom_save_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToSaveRes(tq.tq_mom_save_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_save_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToSaveRes(handle) end

---Takes what a handle points to for a `tq_mom_zcard_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToZcardRes(tq.tq_mom_zcard_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_zcard_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToZcardRes(handle) end

---Takes what a handle points to for a `tq_mom_zrank_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToZrankRes(tq.tq_mom_zrank_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_zrank_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToZrankRes(handle) end

---Takes what a handle points to for a `tq_mom_zscore_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToZscoreRes(tq.tq_mom_zscore_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_zscore_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToZscoreRes(handle) end

---Takes what a handle points to for a `tq_mom_zcount_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToZcountRes(tq.tq_mom_zcount_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_zcount_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToZcountRes(handle) end

---Takes what a handle points to for a `tq_mom_zrange_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToZrangeRes(tq.tq_mom_zrange_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_zrange_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToZrangeRes(handle) end

---Takes what a handle points to for a `tq_mom_zrangebyscore_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToZrangebyscoreRes(tq.tq_mom_zrangebyscore_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_zrangebyscore_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToZrangebyscoreRes(handle) end

---Takes what a handle points to for a `tq_mom_sortedset_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToSortedsetRes(tq.tq_mom_sortedset_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_sortedset_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToSortedsetRes(handle) end

---Takes what a handle points to for a `tq_mom_scard_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToScardRes(tq.tq_mom_scard_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_scard_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToScardRes(handle) end

---Takes what a handle points to for a `tq_mom_sismember_res_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToSismemberRes(tq.tq_mom_sismember_res_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_sismember_res_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToSismemberRes(handle) end

---Fields of a hash.
---@class tq_mom_hash_res_t: tq_pointer
---@field value tq_obj? an object with the hash's key and the fields, and no value; the result's. Takes the pointer of any handle, which keeps what it owns.
---@field field_tag integer[] the numbers of the fields, ascending. Reads as a new table; takes a handle of `size_t *`, which gives up what it owns, not a table.
---@field field_change_tag integer[] those that have changed. Reads as a new table; takes a handle of `size_t *`, which gives up what it owns, not a table.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_hash_res_t record
function tq_mom_sync.tq_mom_hash_res_t() end

---Members of a set.
---@class tq_mom_set_res_t: tq_pointer
---@field value_array tq_pointer[] the members; the result's. Reads as a new table of untyped handles; takes a handle of `tq_obj **`, not a table.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_set_res_t record
function tq_mom_sync.tq_mom_set_res_t() end

---Elements of a list.
---@class tq_mom_list_res_t: tq_pointer
---@field value_array tq_pointer[] the elements; the result's. Reads as a new table of untyped handles; takes a handle of `tq_obj **`, not a table.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_list_res_t record
function tq_mom_sync.tq_mom_list_res_t() end

---The value of a key.
---@class tq_mom_get_res_t: tq_pointer
---@field value tq_obj? an object with the key and its value, or nil; the result's. Takes the pointer of any handle, which keeps what it owns.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_get_res_t record
function tq_mom_sync.tq_mom_get_res_t() end

---A number that was increased.
---@class tq_mom_incr_res_t: tq_pointer
---@field value number the new number. Exact up to 2^53.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_incr_res_t record
function tq_mom_sync.tq_mom_incr_res_t() end

---Whether a value was stored.
---@class tq_mom_setnx_res_t: tq_pointer
---@field value number 1 stored, 0 not
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_setnx_res_t record
function tq_mom_sync.tq_mom_setnx_res_t() end

---The members of a set.
---@class tq_mom_smembers_res_t: tq_pointer
---@field value_array tq_pointer[] the members; the result's. Reads as a new table of untyped handles; takes a handle of `tq_obj **`, not a table.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_smembers_res_t record
function tq_mom_sync.tq_mom_smembers_res_t() end

---The length of a list.
---@class tq_mom_llen_res_t: tq_pointer
---@field len number how many elements there are. Exact up to 2^53.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_llen_res_t record
function tq_mom_sync.tq_mom_llen_res_t() end

---A range of a list.
---@class tq_mom_lrange_res_t: tq_pointer
---@field value_array tq_pointer[] the elements; the result's. Reads as a new table of untyped handles; takes a handle of `tq_obj **`, not a table.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_lrange_res_t record
function tq_mom_sync.tq_mom_lrange_res_t() end

---The length of a list into which an element was put.
---@class tq_mom_linsert_res_t: tq_pointer
---@field len number the new length. Exact up to 2^53.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_linsert_res_t record
function tq_mom_sync.tq_mom_linsert_res_t() end

---The length of a list into which elements were put.
---@class tq_mom_lminsert_res_t: tq_pointer
---@field len number the new length
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_lminsert_res_t record
function tq_mom_sync.tq_mom_lminsert_res_t() end

---How many elements were removed from a list.
---@class tq_mom_lmrem_res_t: tq_pointer
---@field len number how many were removed
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_lmrem_res_t record
function tq_mom_sync.tq_mom_lmrem_res_t() end

---The status of replacing an element of a list.
---@class tq_mom_lset_res_t: tq_pointer
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_lset_res_t record
function tq_mom_sync.tq_mom_lset_res_t() end

---The status of saving the store.
---@class tq_mom_save_res_t: tq_pointer
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_save_res_t record
function tq_mom_sync.tq_mom_save_res_t() end

---The size of a sorted set.
---@class tq_mom_zcard_res_t: tq_pointer
---@field len number how many members there are. Exact up to 2^53.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_zcard_res_t record
function tq_mom_sync.tq_mom_zcard_res_t() end

---The rank of a member.
---@class tq_mom_zrank_res_t: tq_pointer
---@field rank number from the lowest score, 0. Exact up to 2^53.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_zrank_res_t record
function tq_mom_sync.tq_mom_zrank_res_t() end

---The score of a member.
---@class tq_mom_zscore_res_t: tq_pointer
---@field score number the score
---@field exist number not 0 when the member is in the sorted set
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_zscore_res_t record
function tq_mom_sync.tq_mom_zscore_res_t() end

---How many members have certain scores.
---@class tq_mom_zcount_res_t: tq_pointer
---@field len number how many members. Exact up to 2^53.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_zcount_res_t record
function tq_mom_sync.tq_mom_zcount_res_t() end

---Members by rank. `score[i]` belongs to `value[i]`.
---@class tq_mom_zrange_res_t: tq_pointer
---@field value tq_pointer[] the members; the result's. Reads as a new table of untyped handles; takes a handle of `tq_obj **`, not a table.
---@field score number[] their scores; the result's. Reads as a new table; takes a handle of `double *`, which gives up what it owns, not a table.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_zrange_res_t record
function tq_mom_sync.tq_mom_zrange_res_t() end

---Members by score. `score[i]` belongs to `value[i]`.
---@class tq_mom_zrangebyscore_res_t: tq_pointer
---@field value tq_pointer[] the members; the result's. Reads as a new table of untyped handles; takes a handle of `tq_obj **`, not a table.
---@field score number[] their scores; the result's. Reads as a new table; takes a handle of `double *`, which gives up what it owns, not a table.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_zrangebyscore_res_t record
function tq_mom_sync.tq_mom_zrangebyscore_res_t() end

---Members of a sorted set. `score[i]` belongs to `value_array[i]`.
---@class tq_mom_sortedset_res_t: tq_pointer
---@field value_array tq_pointer[] the members; the result's. Reads as a new table of untyped handles; takes a handle of `tq_obj **`, not a table.
---@field score number[] their scores; the result's. Reads as a new table; takes a handle of `double *`, which gives up what it owns, not a table.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_sortedset_res_t record
function tq_mom_sync.tq_mom_sortedset_res_t() end

---The size of a set.
---@class tq_mom_scard_res_t: tq_pointer
---@field len number how many members there are. Exact up to 2^53.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_scard_res_t record
function tq_mom_sync.tq_mom_scard_res_t() end

---Whether a member is in a set.
---@class tq_mom_sismember_res_t: tq_pointer
---@field len number not 0 when it is. Exact up to 2^53.
---@field error_code number 0, or the status of the failure

---Makes a zeroed record, which Lua frees.
---@return tq_mom_sismember_res_t record
function tq_mom_sync.tq_mom_sismember_res_t() end

---Takes what a handle points to for a `tq_mom_scan_all_msg_t`. Checks nothing.
---
---```lua
---print(tq.convertPtrToScanAllMsg(tq.tq_mom_scan_all_msg_t()) ~= nil) --> true
---```
---@param handle userdata? any handle
---@return tq_mom_scan_all_msg_t? result a handle of the same pointer, which owns nothing; nil for nil
function tq_mom_sync.convertPtrToScanAllMsg(handle) end

---A notification of a publish, a change or a scan.
---@class tq_mom_pubsub_msg_t: tq_pointer
---@field db number the database
---@field key string the key, or the channel. Cut to its room, silently; nil empties it.
---@field field string the field. Cut to its room, silently; nil empties it.
---@field cmd tq_mom_cmd_t the operation, a command code
---@field value tq_pointer? the bytes; `tq_obj.bytes(m.value, m.length)` copies them. Takes the pointer of any handle, which keeps what it owns.
---@field length number [bytes] of the value
---@field flag tq_mom_batch_over_flag_t a batch flag in the last message of a batch, else 0
---@field db_id number the database
---@field cluster_id number the store's own number
---@field error number 0, or a status

---Makes a zeroed record, which Lua frees.
---@return tq_mom_pubsub_msg_t record
function tq_mom_sync.tq_mom_pubsub_msg_t() end

---One key of a scan. Never set `key` in a record that the library filled, and set it to nil in one of a script's before it
---is collected, or the text leaks.
---@class tq_mom_scan_all_msg_t: tq_pointer
---@field vlen number [bytes] of the value
---@field key string? the key. Frees the text that was there and keeps a copy, which the record does not free.
---@field value tq_pointer? the bytes, which need not end in a NUL; `tq_obj.bytes(m.value, m.vlen)` copies them. Stores the address of the handle itself.

---Makes a zeroed record, which Lua frees.
---@return tq_mom_scan_all_msg_t record
function tq_mom_sync.tq_mom_scan_all_msg_t() end

---A report that a topic's subscribers do not keep up.
---@class tq_mom_congest_t: tq_pointer
---@field topic string the topic. Cut to its room, silently; nil empties it.
---@field remain_buffer number room that is left for messages. Exact up to 2^53.
---@field remain_time number time that is left. Exact up to 2^53.

---Makes a zeroed record, which Lua frees.
---@return tq_mom_congest_t record
function tq_mom_sync.tq_mom_congest_t() end

---A runtime: joins the client connection to the event loop.
---@class tq_global_t: tq_pointer
---@field rmc tq_pointer? the client connection, opaque. Takes a handle of this type, which gives up what it owns.
---@field master tq_pointer? the event-loop master. Takes a handle of this type, which gives up what it owns.

---Makes a zeroed record, which Lua frees.
---@return tq_global_t record
function tq_mom_sync.tq_global_t() end

---The event-loop master.
---@class tq_thread_master: tq_pointer
---@field index number its number
---@field timer tq_pointer lists of timers, one for each slot. Reads as a handle into the record; copies what the given handle points to.
---@field readfd tq_pointer descriptors that are read; room for 65536. Reads as a handle into the record; copies what the given handle points to.
---@field writefd tq_pointer descriptors that are written; room for 65536. Reads as a handle into the record; copies what the given handle points to.
---@field max_fd number the highest descriptor in use
---@field pfds tq_pointer? what is polled. Takes a handle of this type, which gives up what it owns.
---@field nfds number entries in use in `pfds`. Keeps the low 16 bits.
---@field pfds_size number room in `pfds`. Keeps the low 16 bits.
---@field alloc tq_pointer the runtime's own counter. Reads as a handle into the record; copies what the given handle points to.
---@field debug number bits, `TQ_THREAD_DEBUG_..._FLAG`
---@field flag tq_pointer bits, `TQ_THREAD_IS_FIRST_FETCH` and `TQ_THREAD_USE_POLL`. Reads as a handle into the record; copies what the given handle points to.
---@field tid number the thread's id
---@field t_recover tq_pointer? the event kept for recovery. Takes a handle of this type, which gives up what it owns.
---@field vec_m tq_pointer? opaque. Takes a handle of this type, which gives up what it owns.
---@field vec_m_flag number belongs to `vec_m`
---@field cur_thread tq_pointer? the event that runs. Takes a handle of this type, which gives up what it owns.
---@field debug_list tq_pointer events to debug. Reads as a handle into the record; copies what the given handle points to.

---@class tq_thread_master_class
---@overload fun(): tq_thread_master
tq_mom_sync.tq_thread_master = {}
---how many lists of timers a master has
tq_mom_sync.tq_thread_master.TQ_THREAD_TIMER_SLOT = 4
---how many lists of timers a master has
tq_mom_sync.tq_thread_master_TQ_THREAD_TIMER_SLOT = 4
---bit of `debug`: trace calls of the interface
tq_mom_sync.tq_thread_master.TQ_THREAD_DEBUG_INTERFACE_FLAG = 1
---bit of `debug`: trace calls of the interface
tq_mom_sync.tq_thread_master_TQ_THREAD_DEBUG_INTERFACE_FLAG = 1
---bit of `debug`: trace the procedure
tq_mom_sync.tq_thread_master.TQ_THREAD_DEBUG_PROCEDURE_FLAG = 2
---bit of `debug`: trace the procedure
tq_mom_sync.tq_thread_master_TQ_THREAD_DEBUG_PROCEDURE_FLAG = 2
---bit of `debug`: trace how long events run
tq_mom_sync.tq_thread_master.TQ_THREAD_DEBUG_EXEC_TIME_FLAG = 4
---bit of `debug`: trace how long events run
tq_mom_sync.tq_thread_master_TQ_THREAD_DEBUG_EXEC_TIME_FLAG = 4
---bit of `flag`: nothing has been fetched yet
tq_mom_sync.tq_thread_master.TQ_THREAD_IS_FIRST_FETCH = 1
---bit of `flag`: nothing has been fetched yet
tq_mom_sync.tq_thread_master_TQ_THREAD_IS_FIRST_FETCH = 1
---bit of `flag`: poll with `pfds` instead of select
tq_mom_sync.tq_thread_master.TQ_THREAD_USE_POLL = 2
---bit of `flag`: poll with `pfds` instead of select
tq_mom_sync.tq_thread_master_TQ_THREAD_USE_POLL = 2

---One event.
---@class tq_thread: tq_pointer
---@field next tq_pointer? the next event of its list. Takes a handle of this type, which gives up what it owns.
---@field prev tq_pointer? the previous one. Takes a handle of this type, which gives up what it owns.
---@field master tq_pointer? the master that it belongs to. Takes a handle of this type, which gives up what it owns.
---@field func tq_pointer? the handler, called with the event; a Lua function cannot be stored. Takes a handle of this type.
---@field zg tq_pointer? a context. Takes the pointer of any handle, which keeps what it owns.
---@field arg tq_pointer? the handler's argument. Takes the pointer of any handle, which keeps what it owns.
---@field u tq_thread_u the payload. Read-only; its fields can be set.
---@field pfd_index number its index in the master's `pfds`. Keeps the low 16 bits.
---@field name string its name, at most 10 bytes. Cut to its room, silently; nil empties it.

---@class tq_thread_class
---@overload fun(): tq_thread
tq_mom_sync.tq_thread = {}
---the first priority
tq_mom_sync.tq_thread.TQ_THREAD_PRIORITY_HIGH = 0
---the first priority
tq_mom_sync.tq_thread_TQ_THREAD_PRIORITY_HIGH = 0
---the second priority
tq_mom_sync.tq_thread.TQ_THREAD_PRIORITY_MIDDLE = 1
---the second priority
tq_mom_sync.tq_thread_TQ_THREAD_PRIORITY_MIDDLE = 1
---the last priority
tq_mom_sync.tq_thread.TQ_THREAD_PRIORITY_LOW = 2
---the last priority
tq_mom_sync.tq_thread_TQ_THREAD_PRIORITY_LOW = 2
---bit of the hidden `flag`: the user made the event
tq_mom_sync.tq_thread.TQ_THREAD_FLAG_CRT_BY_USR = 1
---bit of the hidden `flag`: the user made the event
tq_mom_sync.tq_thread_TQ_THREAD_FLAG_CRT_BY_USR = 1
---bit of the hidden `flag`: the event is linked in a list
tq_mom_sync.tq_thread.TQ_THREAD_FLAG_IN_LIST = 2
---bit of the hidden `flag`: the event is linked in a list
tq_mom_sync.tq_thread_TQ_THREAD_FLAG_IN_LIST = 2

---An event's payload: one of its fields, which share their bytes.
---@class tq_thread_u: tq_pointer
---@field val number a number
---@field fd number a descriptor
---@field sands tq_pointer a time. Reads as a handle into the record; copies what the given handle points to.

---Makes a zeroed record, which Lua frees.
---@return tq_thread_u record
function tq_mom_sync.tq_thread_u() end

---no failure
tq_mom_sync.TQ_MOM_OK = 0
---failed for a reason without a code of its own
tq_mom_sync.TQ_MOM_ERR = -1
---an argument is null, out of range or of the wrong kind
tq_mom_sync.TQ_MOM_INPUT_ERR = -2
---out of memory
tq_mom_sync.TQ_MOM_MALLOC_ERR = -3
---not connected
tq_mom_sync.TQ_MOM_NO_READY = -4
---the database is read-only from here
tq_mom_sync.TQ_MOM_GLOBAL_DB_NO_WRITE = -5

---a key with the NUL that ends it
tq_mom_sync.TQ_MOM_KEY_MAX_LEN = 512
---a command's name
tq_mom_sync.TQ_MOM_CMD_MAX_LEN = 32
---a field's name with the NUL that ends it
tq_mom_sync.TQ_MOM_FIELD_MAX_LEN = 128

---@alias tq_mom_db_type_t number

---switch chip
tq_mom_sync.TQ_MOM_ASIC_DB = 0
---tunnels
tq_mom_sync.TQ_MOM_TUNNER_DB = 1
---the store's process on the host
tq_mom_sync.TQ_MOM_TQMOMD_HOST = 2
---this process
tq_mom_sync.TQ_MOM_LOCAL_DB = 3
---applications
tq_mom_sync.TQ_MOM_APP_DB = 4
---the store's process, CE, global
tq_mom_sync.TQ_MOM_TQMOMD_CE_GLOBAL = 5
---forwarding
tq_mom_sync.TQ_MOM_FWD_DB = 6
---the store's process, CE, forwarding, global
tq_mom_sync.TQ_MOM_TQMOMD_CE_FWD_GLOBAL = 7
---UDP
tq_mom_sync.TQ_MOM_UDP_DB = 8
---the store's process, DE, global
tq_mom_sync.TQ_MOM_TQMOMD_DE_GLOBAL = 9
---forwarding over UDP
tq_mom_sync.TQ_MOM_UDP_FWD_DB = 10
---the store's process, DE, forwarding, global
tq_mom_sync.TQ_MOM_TQMOMD_DE_FWD_GLOBAL = 11
---monitoring
tq_mom_sync.TQ_MOM_MONITOR_DB = 12
---the store's process, monitoring, global
tq_mom_sync.TQ_MOM_TQMOMD_MONITOR_GLOBAL = 13
---topology
tq_mom_sync.TQ_MOM_TOPO_DB = 14
---the store's process, DE, standalone (spelt so)
tq_mom_sync.TQ_MOM_TQMOMD_DE_STADNALONE = 15
---forwarding of the switch chip
tq_mom_sync.TQ_MOM_ASIC_FWD_DB = 16
---the store's process on the host, forwarding
tq_mom_sync.TQ_MOM_TQMOMD_HOST_FWD = 17
---applications, extended
tq_mom_sync.TQ_MOM_APP_EXT_DB = 18
---the store's process, MS, global
tq_mom_sync.TQ_MOM_TQMOMD_MS_GLOBAL = 19
---forwarding, extended
tq_mom_sync.TQ_MOM_FWD_EXT_DB = 20
---the store's process, MS, extended, global
tq_mom_sync.TQ_MOM_TQMOMD_MS_EXT_GLOBAL = 21
---configuration
tq_mom_sync.TQ_MOM_CFG_DB = 22
---the store's process, configuration, global
tq_mom_sync.TQ_MOM_TQMOMD_CFG_GLOBAL = 23
---configuration, CP
tq_mom_sync.TQ_MOM_CFG_CP_DB = 24
---the store's process, configuration, CP
tq_mom_sync.TQ_MOM_TQMOMD_CFG_CP = 25
---IBC
tq_mom_sync.TQ_MOM_IBC_DB = 26
---the store's process, IBC, global
tq_mom_sync.TQ_MOM_TQMOMD_IBC_GLOBAL = 27
---capabilities
tq_mom_sync.TQ_MOM_CAP_DB = 28
---the store's process, capabilities
tq_mom_sync.TQ_MOM_TQMOMD_CAP = 29
---configuration, candidate
tq_mom_sync.TQ_MOM_CFG_CAN_DB = 30
---congestion control
tq_mom_sync.TQ_MOM_CGSTCTRL_DB = 31
---debugging
tq_mom_sync.TQ_MOM_DEBUG_DB = 32
---devices
tq_mom_sync.TQ_MOM_DEV_DB = 33
---capabilities, configuration that is loaded
tq_mom_sync.TQ_MOM_CAP_CFG_LOAD_DB = 34
---configuration that is loaded
tq_mom_sync.TQ_MOM_CFG_LOAD_DB = 35
---link aggregation across chassis
tq_mom_sync.TQ_MOM_MLAG_DB = 36
---the store's own
tq_mom_sync.TQ_MOM_INNER_DB = 37

---@alias tq_mom_cmd_t number

---a value was stored
tq_mom_sync.TQ_MOM_SET = 1
---a value was read
tq_mom_sync.TQ_MOM_GET = 2
---a key was deleted
tq_mom_sync.TQ_MOM_DEL = 3
---fields were written
tq_mom_sync.TQ_MOM_HSET = 4
---fields were read
tq_mom_sync.TQ_MOM_HMGET = 5
---fields were updated
tq_mom_sync.TQ_MOM_HMUPDATE = 6
---fields were deleted
tq_mom_sync.TQ_MOM_HDEL = 7
---all fields were read
tq_mom_sync.TQ_MOM_HGETALL = 8
---a field got an expiry
tq_mom_sync.TQ_MOM_PEXPIRE_FIELD = 9
---an element was put before the first
tq_mom_sync.TQ_MOM_LPUSH = 10
---an element was put behind the last
tq_mom_sync.TQ_MOM_RPUSH = 11
---the last element was taken
tq_mom_sync.TQ_MOM_RPOP = 12
---the first element was taken
tq_mom_sync.TQ_MOM_LPOP = 13
---a range of a list was read
tq_mom_sync.TQ_MOM_LRANGE = 14
---a list was measured
tq_mom_sync.TQ_MOM_LLEN = 15
---a key was looked for
tq_mom_sync.TQ_MOM_EXISTS = 16
---a value was stored with an expiry
tq_mom_sync.TQ_MOM_PSETEX = 17
---a member was added to a set
tq_mom_sync.TQ_MOM_SADD = 18
---a member was removed from a set
tq_mom_sync.TQ_MOM_SREM = 19
---a member was looked for
tq_mom_sync.TQ_MOM_SISMEMBER = 20
---the members of a set were counted
tq_mom_sync.TQ_MOM_SCARD = 21
---the members of a set were read
tq_mom_sync.TQ_MOM_SMEMBERS = 22
---a member was taken from a set
tq_mom_sync.TQ_MOM_SPOP = 23
---a message was published
tq_mom_sync.TQ_MOM_PUBLISH = 24
---an expiry in seconds was set
tq_mom_sync.TQ_MOM_EXPIRE = 25
---an expiry in milliseconds was set
tq_mom_sync.TQ_MOM_PEXPIRE = 26
---a key went by itself
tq_mom_sync.TQ_MOM_EXPIRED = 27
---a subscription was ended
tq_mom_sync.TQ_MOM_UNSUBSCRIBE = 28
---a subscription was made
tq_mom_sync.TQ_MOM_SUBSCRIBE = 29
---keys were visited
tq_mom_sync.TQ_MOM_SCAN = 30
---the server pushed by itself
tq_mom_sync.TQ_MOM_SERVERPUSH = 31
---a number was increased
tq_mom_sync.TQ_MOM_INCR = 32
---a value was stored for a new key
tq_mom_sync.TQ_MOM_SETNX = 33
---an element was put beside another
tq_mom_sync.TQ_MOM_LINSERT = 34
---elements were removed
tq_mom_sync.TQ_MOM_LREM = 35
---an element was replaced
tq_mom_sync.TQ_MOM_LSET = 36
---an index was visited
tq_mom_sync.TQ_MOM_SCAN_INDEX = 37
---elements were put beside another
tq_mom_sync.TQ_MOM_LMINSERT = 38
---members were added to a sorted set
tq_mom_sync.TQ_MOM_ZADD = 39
---members were removed from a sorted set
tq_mom_sync.TQ_MOM_ZREM = 40
---members were removed by rank
tq_mom_sync.TQ_MOM_ZREMRANGEBYRANK = 41
---members were removed by score
tq_mom_sync.TQ_MOM_ZREMRANGEBYSCORE = 42
---the members of a sorted set were counted
tq_mom_sync.TQ_MOM_ZCARD = 43
---a rank was read
tq_mom_sync.TQ_MOM_ZRANK = 44
---a score was read
tq_mom_sync.TQ_MOM_ZSCORE = 45
---members between scores were counted
tq_mom_sync.TQ_MOM_ZCOUNT = 46
---members were read by rank
tq_mom_sync.TQ_MOM_ZRANGE = 47
---members were read by score
tq_mom_sync.TQ_MOM_ZRANGEBYSCORE = 48
---several elements were removed
tq_mom_sync.TQ_MOM_LMREM = 49

---@alias tq_mom_batch_over_flag_t number

---the last message of a scan
tq_mom_sync.TQ_MOM_SCAN_OVER = 1
---of a batch of expiries
tq_mom_sync.TQ_MOM_BATCHPEXPIRE_OVER = 2
---of a batch of deletions by expiry
tq_mom_sync.TQ_MOM_BATCHPEXPIREDEL_OVER = 3
---of a batch of field expiries
tq_mom_sync.TQ_MOM_BATCHPEXPIREFIELD_OVER = 4
---of a batch of deletions
tq_mom_sync.TQ_MOM_BATCHDEL_OVER = 5

return tq_mom_sync
