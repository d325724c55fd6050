family "Runtime and connection" {
  "A runtime joins a connection to the store with an event loop. It is the first argument of every command.",
}

command "tq_global_init" {
  text "name" "the runtime's name, or nil",
  global "g" "a zeroed record to use, or nil for one of the library's",
  client = "tq_global_init",
  returns = result "tq_global_t" "the runtime, which lives until [`tq_global_finish`](#tq_global_finish); nil on failure",
  does = "Makes a runtime.",
  kit = [[
Each runtime has a store of its own. `name` is the path of a [snapshot](hostkit.md#snapshots) or the name of a
[server](hostkit.md#its-name), nil or empty for neither. Without `g` the record is the library's, shows `rmc` and `master`
and goes with the runtime. A given `g` only names the runtime by its address: the kit neither reads nor writes it. Keep it
as long as the runtime, for a new record at the address of a collected one still names the old runtime. Nil when the
snapshot is refused (the reason goes to stderr), when `g` is a runtime already, or out of memory.]],
  example = [[
local other = tq.tq_global_init(nil, nil)
print(tq.client_connect(other, 0), tq.tq_global_finish(other)) --> 0.0	0.0]],
}

command "tq_global_finish" {
  global "g" "the runtime",
  client = "tq_global_finish",
  returns = ok,
  statuses = {
    TQ_MOM_OK = "", TQ_MOM_ERR = "a call with callbacks is under way",
    TQ_MOM_INPUT_ERR = "no runtime, or finished before",
  },
  does = "Ends a runtime.",
  kit = [[
Drops the store and saves nothing. Results and objects stay valid. In a callback of a scan or a publish of this runtime,
or in a finalizer that runs meanwhile, it changes nothing and returns `TQ_MOM_ERR`. A scan that an error has left counts as
under way for calls from further down the C stack: call again from where the scan was called.]],
  example = [[
local other = tq.tq_global_init(nil, nil)
print(tq.tq_global_finish(other)) --> 0.0]],
}

command "tq_global_get_master" {
  global "g" "the runtime",
  client = "tq_global_get_master",
  returns = result "tq_thread_master" "the library's record, or nil without a runtime",
  does = "Returns the runtime's event-loop master.",
  kit = [[
A filled record: `tid` of the thread that made the runtime, `flag` `TQ_THREAD_USE_POLL`, `alloc` 1, `max_fd` -1, empty
timer lists, and a `cur_thread` named "kit" whose handler does what [`tq_global_run`](#tq_global_run) does.]],
  example = [[print(tq.tq_global_get_master(g).cur_thread.name) --> kit]],
}

command "tq_global_run" {
  global "g" "the runtime",
  client = "tq_global_run",
  returns = ok,
  statuses = {TQ_MOM_OK = "", TQ_MOM_INPUT_ERR = "no runtime"},
  does = "Runs the event loop and returns when it ends.",
  kit = "Removes everything that is due, delivers messages that have arrived and returns; it waits for nothing.",
  example = [[print(tq.tq_global_run(g)) --> 0.0]],
}

command "client_connect" {
  global "g" "the runtime",
  int "n" "the store's own number",
  returns = ok,
  statuses = {TQ_MOM_OK = "", TQ_MOM_INPUT_ERR = "no runtime"},
  does = "Connects a runtime to its store.",
  kit = "`n` is ignored; connecting again is no failure.",
  example = [[print(tq.client_connect(g, 0)) --> 0.0]],
}

command "client_connect_cluster" {
  global "g" "the runtime",
  int "n" "the store's own number",
  returns = ok,
  statuses = {TQ_MOM_OK = "", TQ_MOM_INPUT_ERR = "no runtime"},
  does = "Connects a runtime to a cluster of stores.",
  kit = "As [`client_connect`](#client_connect).",
  example = [[print(tq.client_connect_cluster(g, 0)) --> 0.0]],
}

command "debug_show_all" {
  global "g" "the runtime",
  client = "tq_mom_debug_show_all",
  returns = ok,
  statuses = {TQ_MOM_OK = "", TQ_MOM_INPUT_ERR = "no runtime"},
  does = "Prints the library's state.",
  kit = [[
Prints connection, keys by database and kind, subscriptions, and the results and objects that commands returned and
nobody has released, to stdout. Objects that a script made itself do not count.]],
  example = [[print(tq.debug_show_all(g)) --> 0.0]],
}

command "bgsave" {
  global "g" "the runtime",
  int "n" "the store's own number",
  returns = ok,
  statuses = {
    TQ_MOM_OK = "", TQ_MOM_INPUT_ERR = "no runtime", TQ_MOM_NO_READY = "",
    TQ_MOM_ERR = "the runtime has no file, or it cannot be written",
  },
  does = "Saves the store.",
  kit = "Writes the snapshot before it returns, and the reason of a failure to stderr; `n` is ignored.",
  example = [[print(tq.bgsave(g, 0)) --> -1.0]],
}
