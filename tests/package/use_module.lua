-- use_module.lua DIRECTORY [CLIENT_LIBRARY]: uses the module that lies in the directory, and no other.
local directory, client = ...
package.cpath = directory .. "/?.so"
if client then
  assert(package.loadlib(client, "*"))
end
local mom = require "tq_mom_sync"
assert(mom == tq_mom_sync)
assert(mom.TQ_MOM_NO_READY == -4)

local op = mom.get_op_t()
assert(swig_type(op):find("tq_mom_get_op_t", 1, true), swig_type(op))

local g = mom.tq_global_init(nil, nil)
assert(g)
local status = mom.exists(g, 0, nil)
assert(math.type(status) == "float" and status < 0, status)
mom.tq_global_finish(g)
print "module used"
