-- The part of tq_kit that is written in Lua: databases as tables, values as text.
local kit, native = ...

rawset(kit, "subscription", nil) -- nobody makes one but subscribe

-- How the elements of each kind go into the table of a key, and where they come from.
local kinds = {
  string = {
    part = "value",
    take = function(entry, bytes) entry.value = bytes end,
  },
  hash = {
    part = "fields",
    take = function(entry, bytes, tag, remaining)
      entry.fields[tag] = bytes
      if remaining then
        entry.field_remaining = entry.field_remaining or {}
        entry.field_remaining[tag] = remaining
      end
    end,
  },
  list = {
    part = "elements",
    take = function(entry, bytes) table.insert(entry.elements, bytes) end,
  },
  set = {
    part = "members",
    take = function(entry, bytes) table.insert(entry.members, bytes) end,
  },
  sorted_set = {
    part = "scores",
    take = function(entry, bytes, _, _, score) entry.scores[bytes] = score end,
  },
}

kit.dump = native.make_dump(function(keys, key, kind, remaining, ...)
  local entry = keys[key]
  if not entry then
    entry = {kind = kind, remaining = remaining}
    if kind ~= "string" then entry[kinds[kind].part] = {} end
    keys[key] = entry
  end
  kinds[kind].take(entry, ...)
end)

-- The type of a value in messages.
local function type_name(value)
  return type(value) == "userdata" and swig_type(value) or type(value)
end

-- Raises what is wrong with a table for load, and where.
local function refuse(where, expected, value)
  error(string.format("%s: %s expected, got %s", where, expected, type_name(value)), 0)
end

local function check_time(where, value)
  if value ~= nil and (math.type(value) ~= "integer" or value < 0) then
    refuse(where, "whole milliseconds, 0 or more,", value)
  end
end

local function check_bytes(where, value)
  if type(value) ~= "string" then refuse(where, "string", value) end
end

local function check_tag(where, tag)
  if math.type(tag) ~= "integer" or tag < 0 or tag > 0xffffffff then
    refuse(where, "field numbers from 0 to 4294967295", tag)
  end
end

local function elements_of_list(where, list)
  local elements = {}
  for i, bytes in ipairs(list) do
    check_bytes(where .. "[" .. i .. "]", bytes)
    elements[i] = {bytes}
  end
  for i in pairs(list) do
    if not (math.type(i) == "integer" and elements[i]) then refuse(where, "list without holes and other keys", i) end
  end
  return elements
end

-- What is stored for each kind: a list of {bytes, tag, remaining time of the field, score}.
local elements_of = {list = elements_of_list, set = elements_of_list}

function elements_of.string(where, value)
  check_bytes(where, value)
  return {{value}}
end

function elements_of.hash(where, fields, entry)
  local remaining = entry.field_remaining or {}
  if type(remaining) ~= "table" then refuse(where:gsub("fields$", "field_remaining"), "table", remaining) end
  local elements = {}
  for tag, bytes in pairs(fields) do
    check_tag(where, tag)
    check_bytes(where .. "[" .. tag .. "]", bytes)
    check_time("remaining time of " .. where .. "[" .. tag .. "]", remaining[tag])
    elements[#elements + 1] = {bytes, tag, remaining[tag]}
  end
  return elements
end

function elements_of.sorted_set(where, scores)
  local elements = {}
  for member, score in pairs(scores) do
    check_bytes(where .. ": member", member)
    if type(score) ~= "number" or score ~= score then refuse(where .. "[" .. member .. "]", "score", score) end
    elements[#elements + 1] = {member, nil, nil, score}
  end
  return elements
end

-- The kind of a key, which may be left to its one part to say.
local function kind_of(key, entry)
  local found
  for kind, about in pairs(kinds) do
    if entry[about.part] ~= nil and (entry.kind == nil or entry.kind == kind) then
      if found then refuse(key, "one of value, fields, elements, members, scores", entry) end
      found = kind
    end
  end
  if entry.kind ~= nil and not kinds[entry.kind] then
    refuse(key .. ".kind", "string, hash, list, set or sorted_set", entry.kind)
  end
  if not found then
    refuse(key, entry.kind and kinds[entry.kind].part or "value, fields, elements, members or scores", nil)
  end
  return found
end

-- Adds the elements of a key to the plan.
local function plan_key(plan, key, entry)
  if type(entry) == "string" then entry = {value = entry} end
  if type(entry) ~= "table" then refuse(key, "string or table", entry) end
  local kind = kind_of(key, entry)
  local part = kinds[kind].part
  if kind ~= "string" and type(entry[part]) ~= "table" then refuse(key .. "." .. part, "table", entry[part]) end
  check_time(key .. ".remaining", entry.remaining)
  local elements = elements_of[kind](key .. "." .. part, entry[part], entry)
  plan[#plan + 1] = {key, "string", 0, ""} -- due at once: what was there is gone
  for i, element in ipairs(elements) do
    -- The time starts with the last element, so that none comes too late.
    local remaining = i == #elements and entry.remaining or nil
    plan[#plan + 1] = {key, kind, remaining, table.unpack(element, 1, 4)}
  end
end

local function plan_keys(keys)
  local plan = {}
  for key, entry in pairs(keys) do
    if type(key) ~= "string" or #key == 0 or #key > 511 or key:find("\0", 1, true) then
      refuse("key", "text of 1 to 511 bytes without NUL", key)
    end
    plan_key(plan, key, entry)
  end
  return plan
end

kit.load = native.make_load(function(keys)
  local ok, plan = pcall(plan_keys, keys)
  if ok then return plan end
  return nil, plan
end)

local longest_string, widest_line, deepest = 200, 100, 8
local default_elements = 10

-- Bytes that a field of this name points to are as many as the other field says.
local counted_bytes = {
  tq_mom_pubsub_msg_t = {value = "length"},
  tq_mom_scan_all_msg_t = {value = "vlen"},
}

local escapes = {["\n"] = "\\n", ["\t"] = "\\t", ["\r"] = "\\r", ['"'] = '\\"', ["\\"] = "\\\\"}

local function quote(text)
  local shown = text:sub(1, longest_string)
  shown = shown:gsub('[%c"\\\127-\255]', function(c) return escapes[c] or string.format("\\x%02x", c:byte()) end)
  if #text <= longest_string then return '"' .. shown .. '"' end
  return string.format('"%s"... (%d bytes)', shown, #text)
end

local function number_text(number)
  local integer = math.tointeger(number)
  return integer and tostring(integer) or tostring(number)
end

-- "name {part, part}", over several lines where one is too short.
local function compose(name, parts)
  local head = name == "" and "{" or name .. " {"
  local line = head .. table.concat(parts, ", ") .. "}"
  if #line <= widest_line and not line:find("\n", 1, true) then return line end
  for i, part in ipairs(parts) do parts[i] = "  " .. part:gsub("\n", "\n  ") end
  return head .. "\n" .. table.concat(parts, ",\n") .. "\n}"
end

-- Numbers first, then texts.
local function sorted_keys(t)
  local keys = {}
  for key in pairs(t) do keys[#keys + 1] = key end
  table.sort(keys, function(a, b)
    if type(a) == "number" and type(b) == "number" then return a < b end
    if type(a) ~= type(b) then return type(a) < type(b) end
    return tostring(a) < tostring(b)
  end)
  return keys
end

local show

local function show_table(t, state)
  local parts = {}
  local length = #t
  for i = 1, math.min(length, state.elements) do parts[i] = show(t[i], state) end
  if length > state.elements then parts[#parts + 1] = string.format("... (%d elements)", length) end
  for _, key in ipairs(sorted_keys(t)) do
    if not (math.type(key) == "integer" and key >= 1 and key <= length) then
      local name = type(key) == "string" and key:match("^[%a_][%w_]*$") or "[" .. show(key, state) .. "]"
      parts[#parts + 1] = name .. " = " .. show(t[key], state)
    end
  end
  return compose("", parts)
end

-- The fields that the class and its bases declare.
local function field_names(class, names)
  for name in pairs(rawget(class, ".get") or {}) do names[name] = true end
  for _, base in ipairs(rawget(class, ".bases") or {}) do field_names(base, names) end
  return names
end

local function show_field(record, class_name, name, state)
  local value = record[name]
  local length_name = (counted_bytes[class_name] or {})[name]
  if length_name and value ~= nil then
    value = require "tq_obj".bytes(value, math.tointeger(record[length_name]))
  end
  return name .. " = " .. show(value, state)
end

local function show_record(record, class, state)
  local class_name = class[".type"]
  local parts = {}
  for _, name in ipairs(sorted_keys(field_names(class, {}))) do
    local ok, text = pcall(show_field, record, class_name, name, state)
    if not ok then return string.format("%s <%s>", class_name, (tostring(text):gsub("^.-: ", ""))) end
    parts[#parts + 1] = text
  end
  if (class[".fn"] or {}).fields then -- the numbered ones of a value object
    local fields = record:fields()
    for _, tag in ipairs(sorted_keys(fields)) do
      parts[#parts + 1] = string.format("[%d] = %s", tag, quote(fields[tag]))
    end
  end
  return compose(class_name, parts)
end

-- An untyped handle, which points to a value object if the kit knows one there.
local function show_pointer(handle, state)
  local ok, object = pcall(require "tq_obj".from, handle)
  if ok then return show(object, state) end
  return string.format("<%s %s>", swig_type(handle):match("[^|]*"), native.address(handle))
end

local function show_handle(handle, state)
  local address = native.address(handle)
  if not address then return tostring(handle) end
  local class = debug.getmetatable(handle)
  if type(class) ~= "table" or not rawget(class, ".get") then return show_pointer(handle, state) end
  local identity = class[".type"] .. address
  if state.seen[identity] then return string.format("%s <above>", class[".type"]) end
  state.seen[identity] = true
  local text = show_record(handle, class, state)
  state.seen[identity] = nil
  return text
end

function show(value, state)
  local kind = type(value)
  if kind == "string" then return quote(value) end
  if kind == "number" then return number_text(value) end
  if kind ~= "table" and kind ~= "userdata" then return tostring(value) end
  if state.depth == deepest then return "..." end
  state.depth = state.depth + 1
  local text
  if kind == "userdata" then
    text = show_handle(value, state)
  elseif state.seen[value] then
    text = "<above>"
  else
    state.seen[value] = true
    text = show_table(value, state)
    state.seen[value] = nil
  end
  state.depth = state.depth - 1
  return text
end

function kit.show(value, elements)
  if elements ~= nil and (math.type(elements) ~= "integer" or elements < 1) then
    error(string.format("bad argument #2 to 'show' (count of elements, 1 or more, expected, got %s)",
      type_name(elements)), 2)
  end
  return show(value, {seen = {}, depth = 0, elements = elements or default_elements})
end

function kit.printer(print_line)
  if type(print_line) ~= "function" then
    error(string.format("bad argument #1 to 'printer' (function expected, got %s)", type_name(print_line)), 2)
  end
  return function(...)
    local values = table.pack(...)
    for i = 1, values.n do
      local kind = type(values[i])
      if kind == "table" or kind == "userdata" then values[i] = kit.show(values[i]) end
    end
    return print_line(table.unpack(values, 1, values.n))
  end
end
