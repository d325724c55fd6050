family "Rehearsal" {
  [[
What a script does to the store, what it does when the store fails, and what it forgets to release. The library
`libtq_mom_watch.so` stands before the client library, of the host kit or of a device, and this module controls it:
`scripts/lua --watch` loads both. A call that the client library makes inside itself is not the script's and counts for
nothing here. A wrong argument is an error that names it and says what was expected.]],
  setup = [[local tq_watch = require "tq_watch"]],
}

class "tq_watch.call" {
  does = "A call of a client function, as `tq_watch.trace` tells of it.",
  field "call: string" "the function",
  field "text: string" "the whole line",
  field "db?: integer" "the database",
  field "key?: string" "the key; of several members the first one's",
  field "arguments: (integer|number|string)[]" "behind the runtime and the database; what is no number as text",
  field "result: integer|string" "a status or number as it is, all else as text",
  field "failed: boolean" "a status or error code below 0, or null without a status that says otherwise",
  field "fault: boolean" "whether a fault changed it",
  field "microseconds: integer [us]" "how long it took",
  field "time: number [s]" "when it began, since 1970",
  field "where?: string" "`source:line`; nil if no script called",
  field "source?: string" "the script's file",
  field "line?: integer" "the line in it",
}

class "tq_watch.counts" {
  does = "The calls of one function.",
  field "calls: integer" "how many there were",
  field "failures: integer" "how many of them failed",
  field "microseconds: integer [us]" "how long they took together",
}

class "tq_watch.plan" {
  does = "What a fault does to which calls: `call` and one of `status`, `null` and `delay` are needed.",
  field "call: string" "the function's name, or a pattern of names: `l*`",
  field "db?: integer" "the database; any if left out",
  field "key?: string" "a pattern of keys: `port/*`; any if left out",
  field "after?: integer" "how many calls pass first; none if left out",
  field "times?: integer" "how many calls are changed; all if left out",
  field "status?: integer" "what the function returns instead, or the `error_code` of the record that it returns",
  field "null?: boolean" "null instead of a record or an object",
  field "delay?: integer [ms]" "how long the call waits",
  field "after_call?: boolean" "the client function is called all the same: done, but the answer is lost",
}

class "tq_watch.active_fault" {
  does = "A fault. It stays in force until it is removed, held by the script or not.",
  method "hits" {returns = ret "calls: integer" "that it changed", does = "Counts the calls that the fault changed."},
  method "remove" {does = "Ends the fault."},
}

class "tq_watch.run" {
  does = "A run of `tq_watch.each_call`.",
  field "call: string" "the function that was made to fail",
  field "text: string" "it with its arguments",
  field "where?: string" "`source:line` of the call, as in `tq_watch.call`",
  field "source?: string" "the script's file",
  field "line?: integer" "the line in it",
  field "error?: any" "what the body raised; nil if it coped",
  field "leaked: integer" "how many more things were left unreleased than before",
}

class "tq_watch.unreleased" {
  does = "A result, an object or a runtime that is not released.",
  field "type: string" "its type",
  field "call: string" "the function that handed it out",
  field "key?: string" "the key of that call",
  field "age: number [s]" "since then",
  field "where?: string" "`source:line` of that call, as in `tq_watch.call`",
  field "source?: string" "the script's file",
  field "line?: integer" "the line in it",
}

func "trace" {
  arg "target?: fun(call: tq_watch.call)|string" "what is told of each call, or a file that gets a line each; nil ends it",
  arg "form?: string" "`json`: the file gets JSON objects",
  does = [[Tells of each call after it returned. The function's own calls are not told of, and its errors go to stderr with
their traceback.]],
  errors = "When the file cannot be written.",
  example = [[
tq_watch.trace(function(call) print(call.call, call.key, call.result) end)
tq.set(g, db, tq_obj.new("motd", "hello")) --> set	motd	0
tq_watch.trace(nil)]],
}

func "summary" {
  returns = ret "counts: table<string, tq_watch.counts>" "by function, those that were called",
  does = "Returns what was counted since the module was loaded, or since `tq_watch.reset`.",
  example = [[
tq_watch.reset()
tq.exists(g, db, nil)
print(tq_watch.summary().exists.calls, tq_watch.summary().exists.failures) --> 1	1]],
}

func "fault" {
  arg "plan: tq_watch.plan" "which calls, and what happens to them",
  returns = ret "fault: tq_watch.active_fault" "which need not be kept",
  does = [[Makes calls fail or wait. Of several faults for a call the oldest one applies. A record that a fault makes is the
watch library's, which takes it back in the release function's place. A release function can be made to return a status,
but what it releases is released.]],
  errors = "When the plan names no function of the client library, or a key where the library does not tell keys.",
  example = [[
local fault = tq_watch.fault {call = "lset", key = "port/*", times = 1, status = tq.TQ_MOM_NO_READY}
print(tq.lset(g, db, tq_obj.new("port/1", "up"), 0), fault:hits()) --> -4.0	1]],
}

func "each_call" {
  arg "body: function" "what is run; it should begin and end alike each time",
  arg "how?: {status: integer?, null: boolean?}" "as in `tq_watch.plan`; `TQ_MOM_NO_READY` if left out",
  returns = ret "runs: tq_watch.run[]" "with `errors`, how many runs raised one; `tostring` makes a line for each",
  does = [[Runs the body once for each call that it makes, and fails the first call the first time, the second the second
time, until a run meets no fault. An error of that last run is the body's own, and is raised.]],
  example = [[
local runs = tq_watch.each_call(function()
  local key = tq_obj.new("n")
  if tq.exists(g, db, key) < 0 then return end
  assert(tq.llen(g, db, key) >= 0, "no length")
end)
print(#runs, runs.errors, runs[2].call) --> 2	1	llen]],
}

func "live" {
  returns = ret "things: tq_watch.unreleased[]" "the oldest first",
  does = "Returns every result, popped object and runtime that is not released, since the module was loaded.",
  example = [[
local result = tq.smembers(g, db, tq_obj.new("s"))
local things = tq_watch.live()
print(things[#things].type, things[#things].key) --> tq_mom_smembers_res_t	s
tq.smembers_res_free(result)]],
}

func "assert_released" {
  errors = "When something is not released, with a line about each.",
  does = "Raises an error unless everything is released.",
  example = [[
local result = tq.smembers(g, db, tq_obj.new("s"))
print((pcall(tq_watch.assert_released))) --> false
tq.smembers_res_free(result)]],
}

func "guard" {
  arg "on: boolean" "whether uses are found",
  does = [[Finds uses of what was released: the process ends, and stderr has the line of the use, of the release and of the
call that handed it out. What is already handed out is not guarded. `docs/rehearsal.md` says what cannot be found.]],
  example = [[
tq_watch.guard(true)
local result = tq.smembers(g, db, tq_obj.new("s"))
print(tq.smembers_res_free(result)) --> 0.0
tq_watch.guard(false)]],
}

func "reset" {
  does = "Removes all faults and starts the counts anew.",
  example = [[
tq_watch.fault {call = "exists", status = -1}
tq_watch.reset()
print(tq.exists(g, db, tq_obj.new("a"))) --> 0.0]],
}

func "stop" {
  does = "Ends all watching and forgets what is not released.",
  example = [[
tq_watch.stop()
print(#tq_watch.live()) --> 0
tq_watch.start()]],
}

func "start" {
  does = "Begins to count calls and to note what is not released, as loading the module does.",
  example = [[
tq_watch.stop()
tq_watch.start()
tq.exists(g, db, tq_obj.new("a"))
print(tq_watch.summary().exists.calls) --> 1]],
}
