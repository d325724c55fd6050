-- A look at the runtime under the client library: its global record, the event-loop master, the current event.
local tq = require "tq_mom_sync"

local g = assert(tq.tq_global_init(nil, nil), "no runtime")

-- Records are read in place. Pointers in them are handles, nil where they are null.
local master = tq.tq_global_get_master(g)
print("global record:  " .. swig_type(g))
print("client:         " .. swig_type(g.rmc))
print("same master:    " .. tostring(g.master == master))

print "master"
for _, field in ipairs {"index", "max_fd", "nfds", "pfds_size", "debug", "vec_m_flag"} do
  print(string.format("  %-12s %d", field, master[field]))
end
for _, field in ipairs {"pfds", "t_recover", "vec_m"} do
  print(string.format("  %-12s %s", field, master[field] or "none"))
end
print(string.format("  %-12s %s", "tid", master.tid > 0 and "a thread of this process" or "none"))

-- Values embedded in a record are reached through handles into it.
for _, field in ipairs {"alloc", "flag", "readfd", "timer", "debug_list"} do
  print(string.format("  %-12s %s", field, swig_type(master[field])))
end
print(string.format("  timer lists: %d", tq.tq_thread_master.TQ_THREAD_TIMER_SLOT))

local event = master.cur_thread
print(string.format("current event: %q, handler %s", event.name, swig_type(event.func)))
print(string.format("  belongs to the runtime: %s", swig_equals(event.zg, g)))
print(string.format("  linked: %s", event.next ~= nil or event.prev ~= nil))

-- Records of one's own start zeroed, and Lua frees them. The payload is a union: one value under several names.
local own = tq.tq_thread()
own.name = "heartbeat timer"
own.u.fd = 5
print(string.format("own event: %q, descriptor %d, value %d", own.name, own.u.fd, own.u.val))
print(string.format("  unknown field: %s", own.priority))
print(string.format("  event flag constant: %d", tq.tq_thread.TQ_THREAD_FLAG_IN_LIST))

assert(tq.tq_global_finish(g) == tq.TQ_MOM_OK)
