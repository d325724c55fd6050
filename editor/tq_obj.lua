---@meta tq_obj
-- Written by scripts/describe from api/. For editors; no program loads it.

---@class tq_obj_module
tq_obj = {}

---Makes an object.
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

---A value object. Commands return them, too, once both modules are loaded, in either order.
---@class tq_obj: tq_pointer
---@field key string the key; assigning nil is an error
---@field value string? the value; nil takes it away
---@field [integer] string? field 0 to 4294967295; nil takes it away
---@field fields fun(self: tq_obj): table<integer, string> Returns the fields by number.
---@field __disown fun(self: tq_obj) Makes Lua give up the object: wanted before `tq_obj_free`.

return tq_obj
