family "The runtime's records" {
  [[
The records behind a runtime, read and written in place. They are the library's: change one only if you know its event
loop. Embedded values, `alloc` and `flag` too, read as handles into the record and not as Lua numbers.]],
}

runtime_record "tq_global_t" {
  does = "A runtime: joins the client connection to the event loop.",
  record("rmc", "struct tq_mom_client_s *") "the client connection, opaque",
  record("master", "struct tq_thread_master *") "the event-loop master",
}

runtime_record "tq_thread_master" {
  does = "The event-loop master.",
  int "index" "its number",
  embedded("timer", "struct tq_thread_list [4]") "lists of timers, one for each slot",
  embedded("readfd", "fd_set") "descriptors that are read; room for 65536",
  embedded("writefd", "fd_set") "descriptors that are written; room for 65536",
  int "max_fd" "the highest descriptor in use",
  record("pfds", "struct pollfd *") "what is polled",
  short "nfds" "entries in use in `pfds`",
  short "pfds_size" "room in `pfds`",
  embedded("alloc", "u_int32_t") "the runtime's own counter",
  int "debug" "bits, `TQ_THREAD_DEBUG_..._FLAG`",
  embedded("flag", "u_int32_t") "bits, `TQ_THREAD_IS_FIRST_FETCH` and `TQ_THREAD_USE_POLL`",
  int "tid" "the thread's id",
  record("t_recover", "struct tq_thread *") "the event kept for recovery",
  record("vec_m", "struct vec_master_t *") "opaque",
  int "vec_m_flag" "belongs to `vec_m`",
  record("cur_thread", "struct tq_thread *") "the event that runs",
  embedded("debug_list", "struct tq_thread_debug_list") "events to debug",
  statics = {
    constant "TQ_THREAD_TIMER_SLOT" (4) "how many lists of timers a master has",
    constant "TQ_THREAD_DEBUG_INTERFACE_FLAG" (1) "bit of `debug`: trace calls of the interface",
    constant "TQ_THREAD_DEBUG_PROCEDURE_FLAG" (2) "bit of `debug`: trace the procedure",
    constant "TQ_THREAD_DEBUG_EXEC_TIME_FLAG" (4) "bit of `debug`: trace how long events run",
    constant "TQ_THREAD_IS_FIRST_FETCH" (1) "bit of `flag`: nothing has been fetched yet",
    constant "TQ_THREAD_USE_POLL" (2) "bit of `flag`: poll with `pfds` instead of select",
  },
}

runtime_record "tq_thread" {
  does = "One event.",
  hidden = {"type", "priority", "flag"},
  record("next", "struct tq_thread *") "the next event of its list",
  record("prev", "struct tq_thread *") "the previous one",
  record("master", "struct tq_thread_master *") "the master that it belongs to",
  handler "func" "the handler, called with the event; a Lua function cannot be stored",
  pointer "zg" "a context",
  pointer "arg" "the handler's argument",
  union "u" "the payload",
  short "pfd_index" "its index in the master's `pfds`",
  chars("name", "char [TQ_THREAD_NAME_LEN+1]") "its name, at most 10 bytes",
  statics = {
    constant "TQ_THREAD_PRIORITY_HIGH" (0) "the first priority",
    constant "TQ_THREAD_PRIORITY_MIDDLE" (1) "the second priority",
    constant "TQ_THREAD_PRIORITY_LOW" (2) "the last priority",
    constant "TQ_THREAD_FLAG_CRT_BY_USR" (1) "bit of the hidden `flag`: the user made the event",
    constant "TQ_THREAD_FLAG_IN_LIST" (2) "bit of the hidden `flag`: the event is linked in a list",
  },
}

runtime_record "tq_thread_u" {
  structure = "tq_thread::tq_thread_u", -- and only the typedef has a name of its own
  tag = "",
  does = "An event's payload: one of its fields, which share their bytes.",
  int "val" "a number",
  int "fd" "a descriptor",
  embedded("sands", "struct timeval") "a time",
}
