--- What the ring and invariant tests share: the client library stub, the peer module, child processes.
local catalog = require "catalog"

--- How many types and classes the tested module has.
local M = {type_count = catalog.type_count, class_count = #catalog.classes}

local function path_of(name)
  return assert(package.searchpath(name, package.cpath))
end

--- File of the tested module.
M.module_file = path_of "tq_mom_sync"

-- The module's client functions are undefined until somebody in the process provides them.
assert(package.loadlib(path_of "tq_client_stub", "*"))

M.peer = require "ring_peer"

local function read_file(name)
  local file = assert(io.open(name, "rb"))
  local text = file:read "a"
  file:close()
  return text
end

--- Runs code in a fresh interpreter process, with locals `support` and `peer`. Returns {status, out, err}; a process
--- that died by signal n has status 128 + n, one that hung 124.
function M.child(code)
  local interpreter = assert(os.getenv "TQ_LUA", "the environment variable TQ_LUA must hold the interpreter's command")
  local script, out, err = os.tmpname(), os.tmpname(), os.tmpname()
  local file = assert(io.open(script, "wb"))
  file:write("local support = require 'ring_support' local peer = support.peer\n", code)
  file:close()
  local shell = io.popen(string.format("ulimit -c 0; timeout 60 %s '%s' >'%s' 2>'%s'; echo $?", interpreter, script, out, err))
  local status = tonumber(shell:read "a")
  shell:close()
  local result = { status = status, out = read_file(out), err = read_file(err) }
  os.remove(script)
  os.remove(out)
  os.remove(err)
  return result
end

--- A type's cast list as the targets' mangled names.
function M.cast_names(descriptor)
  local names = {}
  for i, cast in ipairs(M.peer.type(descriptor).casts) do
    names[i] = cast.mangled
  end
  return names
end

--- The class's setter or getter function of an attribute, to be called with any first argument.
function M.setter(class, attribute)
  return debug.getregistry().SWIG[class][".set"][attribute]
end

function M.getter(class, attribute)
  return debug.getregistry().SWIG[class][".get"][attribute]
end

return M
