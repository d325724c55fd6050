---@meta tq_obj
-- Written by scripts/describe from api/. For editors; no program loads it.

---@class tq_obj_module
tq_obj = {}

---Makes an object.
---
---Errors: A key that no command can use, with the reason; a value that is no string.
---
---```lua
---print(tq_obj.new("motd", "hello")) --> tq_obj(motd = hello)
---```
---@param key string 1 to 511 bytes without NUL
---@param value? string any bytes
---@return tq_obj object which Lua frees
function tq_obj.new(key, value) end

---Returns the object behind an untyped handle.
---
---```lua
---tq.rpush(g, db, tq_obj.new("jobs", "boot"))
---local result = tq.lrange(g, db, tq_obj.new("jobs"), 0, -1)
---print(tq_obj.from(result.value_array[1]).value, tq.lrange_res_free(result)) --> boot	0.0
---```
---@param handle? tq_pointer points to an object: an element of a value array
---@return tq_obj? object owned by whoever owned it; nil for nil
function tq_obj.from(handle) end

---Copies the bytes behind a handle.
---
---```lua
---print(#tq_obj.bytes(nil, 0)) --> 0
---```
---@param handle? tq_pointer points to bytes: the value of a message
---@param length integer [bytes] how many; the message knows
---@return string bytes a copy
function tq_obj.bytes(handle, length) end

---Makes a message as subscribers get it, to test a handler.
---
---Errors: A field that messages do not have, or of the wrong kind.
---
---```lua
---local message = tq_obj.message{db = db, key = "alarm/fan", value = "stalled"}
---print(message.key, tq_obj.bytes(message.value, message.length)) --> alarm/fan	stalled
---```
---@param fields tq_obj.fields those not named are 0 or empty
---@return tq_mom_pubsub_msg_t message which Lua frees with the bytes of its value
function tq_obj.message(fields) end

---Makes a message as the callback of a scan gets it, to test one.
---
---Errors: A key or a value that is no string.
---
---```lua
---local element = tq.convertPtrToScanAllMsg(tq_obj.scan_message{key = "port/1", value = "up"})
---print(element.key, tq_obj.bytes(element.value, element.vlen)) --> port/1	up
---```
---@param fields {key: string, value?: string} the key, and the bytes if it is a string's
---@return tq_mom_pubsub_msg_t message which Lua frees; the cast shows it as what it is
function tq_obj.scan_message(fields) end

---What `tq_obj.message` takes: fields of `tq_mom_pubsub_msg_t`. `length` follows from the value.
---@class tq_obj.fields
---@field db? integer the database
---@field key? string the key, or topic
---@field field? string the field
---@field cmd? integer a command code: `tq.TQ_MOM_PUBLISH`, ...
---@field value? string any bytes
---@field flag? integer a batch flag
---@field db_id? integer the database's number
---@field cluster_id? integer the cluster's number
---@field error? integer a status

---A value object. Commands return them, too, once both modules are loaded, in either order.
---@class tq_obj: tq_pointer
---@field key string the key; assigning nil is an error
---@field value string? the value; nil takes it away
---@field [integer] string? field 0 to 4294967295; nil takes it away
---@field fields fun(self: tq_obj): table<integer, string> Returns the fields by number.
---@field __disown fun(self: tq_obj) Makes Lua give up the object: wanted before `tq_obj_free`.

return tq_obj
