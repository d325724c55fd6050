---@meta tq_watch
-- Written by scripts/describe from api/. For editors; no program loads it.

---@class tq_watch
tq_watch = {}

---Tells of each call after it returned. The function's own calls are not told of, and its errors go to stderr with
---their traceback.
---
---Errors: When the file cannot be written.
---
---```lua
---tq_watch.trace(function(call) print(call.call, call.key, call.result) end)
---tq.set(g, db, tq_obj.new("motd", "hello")) --> set	motd	0
---tq_watch.trace(nil)
---```
---@param target? fun(call: tq_watch.call)|string what is told of each call, or a file that gets a line each; nil ends it
---@param form? string `json`: the file gets JSON objects
function tq_watch.trace(target, form) end

---Returns what was counted since the module was loaded, or since `tq_watch.reset`.
---
---```lua
---tq_watch.reset()
---tq.exists(g, db, nil)
---print(tq_watch.summary().exists.calls, tq_watch.summary().exists.failures) --> 1	1
---```
---@return table<string, tq_watch.counts> counts by function, those that were called
function tq_watch.summary() end

---Makes calls fail or wait. Of several faults for a call the oldest one applies. A record that a fault makes is the
---watch library's, which takes it back in the release function's place. A release function can be made to return a status,
---but what it releases is released.
---
---Errors: When the plan names no function of the client library, or a key where the library does not tell keys.
---
---```lua
---local fault = tq_watch.fault {call = "lset", key = "port/*", times = 1, status = tq.TQ_MOM_NO_READY}
---print(tq.lset(g, db, tq_obj.new("port/1", "up"), 0), fault:hits()) --> -4.0	1
---```
---@param plan tq_watch.plan which calls, and what happens to them
---@return tq_watch.active_fault fault which need not be kept
function tq_watch.fault(plan) end

---Runs the body once for each call that it makes, and fails the first call the first time, the second the second
---time, until a run meets no fault. An error of that last run is the body's own, and is raised.
---
---```lua
---local runs = tq_watch.each_call(function()
---  local key = tq_obj.new("n")
---  if tq.exists(g, db, key) < 0 then return end
---  assert(tq.llen(g, db, key) >= 0, "no length")
---end)
---print(#runs, runs.errors, runs[2].call) --> 2	1	llen
---```
---@param body function what is run; it should begin and end alike each time
---@param how? {status: integer?, null: boolean?} as in `tq_watch.plan`; `TQ_MOM_NO_READY` if left out
---@return tq_watch.run runs with `errors`, how many runs raised one; `tostring` makes a line for each
function tq_watch.each_call(body, how) end

---Returns every result, popped object and runtime that is not released, since the module was loaded.
---
---```lua
---local result = tq.smembers(g, db, tq_obj.new("s"))
---local things = tq_watch.live()
---print(things[#things].type, things[#things].key) --> tq_mom_smembers_res_t	s
---tq.smembers_res_free(result)
---```
---@return tq_watch.unreleased things the oldest first
function tq_watch.live() end

---Raises an error unless everything is released.
---
---Errors: When something is not released, with a line about each.
---
---```lua
---local result = tq.smembers(g, db, tq_obj.new("s"))
---print((pcall(tq_watch.assert_released))) --> false
---tq.smembers_res_free(result)
---```
function tq_watch.assert_released() end

---Finds uses of what was released: the process ends, and stderr has the line of the use, of the release and of the
---call that handed it out. What is already handed out is not guarded. `docs/rehearsal.md` says what cannot be found.
---
---```lua
---tq_watch.guard(true)
---local result = tq.smembers(g, db, tq_obj.new("s"))
---print(tq.smembers_res_free(result)) --> 0.0
---tq_watch.guard(false)
---```
---@param on boolean whether uses are found
function tq_watch.guard(on) end

---Removes all faults and starts the counts anew.
---
---```lua
---tq_watch.fault {call = "exists", status = -1}
---tq_watch.reset()
---print(tq.exists(g, db, tq_obj.new("a"))) --> 0.0
---```
function tq_watch.reset() end

---Ends all watching and forgets what is not released.
---
---```lua
---tq_watch.stop()
---print(#tq_watch.live()) --> 0
---tq_watch.start()
---```
function tq_watch.stop() end

---Begins to count calls and to note what is not released, as loading the module does.
---
---```lua
---tq_watch.stop()
---tq_watch.start()
---tq.exists(g, db, tq_obj.new("a"))
---print(tq_watch.summary().exists.calls) --> 1
---```
function tq_watch.start() end

---A call of a client function, as `tq_watch.trace` tells of it.
---@class tq_watch.call
---@field call string the function
---@field text string the whole line
---@field db? integer the database
---@field key? string the key; of several members the first one's
---@field arguments (integer|number|string) [] behind the runtime and the database; what is no number as text
---@field result integer|string a status or number as it is, all else as text
---@field failed boolean a status or error code below 0, or null without a status that says otherwise
---@field fault boolean whether a fault changed it
---@field microseconds integer [us] how long it took
---@field time number [s] when it began, since 1970
---@field where? string `source:line`; nil if no script called
---@field source? string the script's file
---@field line? integer the line in it

---The calls of one function.
---@class tq_watch.counts
---@field calls integer how many there were
---@field failures integer how many of them failed
---@field microseconds integer [us] how long they took together

---What a fault does to which calls: `call` and one of `status`, `null` and `delay` are needed.
---@class tq_watch.plan
---@field call string the function's name, or a pattern of names: `l*`
---@field db? integer the database; any if left out
---@field key? string a pattern of keys: `port/*`; any if left out
---@field after? integer how many calls pass first; none if left out
---@field times? integer how many calls are changed; all if left out
---@field status? integer what the function returns instead, or the `error_code` of the record that it returns
---@field null? boolean null instead of a record or an object
---@field delay? integer [ms] how long the call waits
---@field after_call? boolean the client function is called all the same: done, but the answer is lost

---A fault. It stays in force until it is removed, held by the script or not.
---@class tq_watch.active_fault
---@field hits fun(self: tq_watch.active_fault): integer Counts the calls that the fault changed.
---@field remove fun(self: tq_watch.active_fault) Ends the fault.

---A run of `tq_watch.each_call`.
---@class tq_watch.run
---@field call string the function that was made to fail
---@field text string it with its arguments
---@field where? string `source:line` of the call, as in `tq_watch.call`
---@field source? string the script's file
---@field line? integer the line in it
---@field error? any what the body raised; nil if it coped
---@field leaked integer how many more things were left unreleased than before

---A result, an object or a runtime that is not released.
---@class tq_watch.unreleased
---@field type string its type
---@field call string the function that handed it out
---@field key? string the key of that call
---@field age number [s] since then
---@field where? string `source:line` of that call, as in `tq_watch.call`
---@field source? string the script's file
---@field line? integer the line in it

return tq_watch
