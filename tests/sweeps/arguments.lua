-- Arguments that each command takes.
local support = require "support"
local recorder, tq = support.recorder, support.tq

local arrays = {fields = {}, scores = {}, members = {}}
for i = 1, 30 do arrays.fields[i], arrays.scores[i], arrays.members[i] = i, i, tq.get_op_t() end

local function argument_for(entry)
  local kind = entry.kind
  if arrays[kind] then return arrays[kind] end
  if kind == "global" or kind == "key" or kind == "void" then return nil end
  if entry.class then return tq[entry.class.name]() end
  if kind == "name" then return "name" end
  if kind == "callback" then return function() return 0 end end
  if kind == "any" then return {} end
  return 3
end

local arguments = {arrays = arrays}

function arguments.of(command)
  local list = {n = #command.arguments}
  for i, entry in ipairs(command.arguments) do list[i] = argument_for(entry) end
  return list
end

-- An array of the library's becomes the value of the array field, with its length. Returns the block.
function arguments.fill_array(record, class, field, length)
  local fields = recorder.layouts[class.layout].fields
  local block = recorder.alloc(length * 8)
  for i = 0, length - 1 do support.poke(block + i * recorder.word, support.size, 1) end
  support.poke(support.pointer_of(record) + fields[field.name].offset, support.pointer, block)
  support.poke(support.pointer_of(record) + fields[field.count].offset, support.size, length)
  return block
end

return arguments
