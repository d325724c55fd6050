-- Makes up the lines of fuzzing scripts. A model of handles, records and who owns them says what each line does, so
-- that the line can check it, and which pointers may be followed: a record that nobody can reach any more is dead.
local generator = {}

local random = math.random
local format, concat = string.format, table.concat

local function chance(percent) return random(100) <= percent end
local function one_of(list) return list[random(#list)] end

-- Lua source of a value.
local function quote(value)
  if value ~= value then return "0/0" end
  if value == 1 / 0 then return "1/0" end
  if value == -1 / 0 then return "-1/0" end
  if type(value) == "string" or type(value) == "number" then return format("%q", value):gsub("\\\n", "\\n") .. "" end
  return tostring(value)
end
generator.quote = quote

local numbers = {
  0, 1, -1, 2, 7, 0.5, -0.5, 1.9, -1.9, -0.0, 32767, 32768, -32769, 65536, 2147483647, 2147483648, -2147483648,
  -2147483649, 2147483646.5, 4294967294.5, 4294967295, 4294967296, 2 ^ 53, -2 ^ 53, 2 ^ 63, -2 ^ 63, 1e300, -1e300,
  1 / 0, -1 / 0, 0 / 0, math.maxinteger, math.mininteger, "12", "0x10", " 7 ", "-1.9", "1e2",
}

local function any_number()
  if chance(30) then return random(-100, 100) end
  return one_of(numbers)
end
generator.any_number = any_number

local function saturate(number, low, high)
  if number ~= number then return 0 end
  if number >= high then return high end
  if number <= low then return low end
  return number >= 0 and math.floor(number) or math.ceil(number)
end

-- What becomes of a number; nil for one that is refused.
local convert = {}

function convert.int(value) return math.tointeger(saturate(tonumber(value), -2147483648, 2147483647)) end
function convert.short(value) return (string.unpack("i2", string.pack("i4", convert.int(value)))) end
function convert.double(value) return tonumber(value) + 0.0 end
function convert.unsigned(value)
  value = tonumber(value)
  if value ~= value or value < 0 then return nil end
  return math.tointeger(saturate(value, 0, 4294967295))
end
convert.size_t = convert.unsigned
function convert.int64(value)
  local double = tonumber(value) + 0.0
  if double ~= double then return 0 end
  if double >= 2.0 ^ 63 then return math.maxinteger end
  if double <= -2.0 ^ 63 then return math.mininteger end
  return math.tointeger(double >= 0 and math.floor(double) or math.ceil(double))
end
convert.llong = convert.int64

local function timeout(value)
  local seconds = tonumber(value)
  if type(value) ~= "number" and type(value) ~= "string" or seconds == nil then seconds = 0 end
  local whole = convert.int(seconds)
  return format("{seconds = %d, microseconds = %d}", whole, convert.int((seconds - whole) * 1000000.0))
end

local kSlots = 14
local kPlain = {"true", "false", "{}", "print", "'text'", "7", "1.5", "coroutine.create(print)"}

-- A generator of lines for the functions, classes and types that the player has found.
function generator.new(env)
  local catalog, types, layouts = env.catalog, env.support.types, env.recorder.layouts
  local self = {}
  local slots = {}         -- handles by number
  local out = {}           -- the pieces of the current line
  local ids = 0            -- of records
  local blocks = 0         -- of the module that live
  local depth = 0          -- of nested functions
  local wild = {}          -- records that nobody owns: what Lua has given up, and the library's
  local ops = {}

  local function emit(...) out[#out + 1] = format(...) end
  self.emit = emit

  local function new_id()
    ids = ids + 1
    return ids
  end

  local function alive(record)
    while record do
      if not record.alive then return false end
      record = record.parent
    end
    return true
  end

  -- Whether the handle's record may be read and written through it.
  local function usable(handle)
    return handle.class ~= nil and handle.record.class == handle.class and alive(handle.record)
  end

  local function kill(record)
    record.alive = false
    if record.own_block then blocks = blocks - 1 end
    if record.key then blocks = blocks - 1 end
  end

  -- The text that a record owns must go before the record does.
  local function drop_text(record)
    if not record.key then return end
    emit("view(%q, a[%d]).key = nil", record.class.mangled, record.id)
    record.key = nil
    record.cells.key = nil
    blocks = blocks - 1
  end

  local function put(slot, handle)
    local old = slots[slot]
    slots[slot] = handle
    if handle then handle.references = (handle.references or 0) + 1 end
    if old then
      old.references = old.references - 1
      if old.references == 0 and old.own then
        old.own = false
        kill(old.record)
      end
    end
  end

  -- A slot for a new value. What it holds can go.
  local function free_slot()
    local slot = random(kSlots)
    local old = slots[slot]
    if old and old.own and old.references == 1 then drop_text(old.record) end
    return slot
  end

  local function pick(accepts)
    local start = random(kSlots)
    for i = 0, kSlots - 1 do
      local slot = (start + i - 1) % kSlots + 1
      if slots[slot] and (accepts == nil or accepts(slots[slot])) then return slot, slots[slot] end
    end
  end

  local function pick_usable() return pick(usable) end

  local function give_up(handle)
    handle.own_word = 0
    if not handle.own then return end
    handle.own = false
    wild[#wild + 1] = handle.record
  end

  local function new_record(class, own_block)
    local record = {id = new_id(), class = class, alive = true, cells = {}, own_block = own_block}
    if own_block then blocks = blocks + 1 end
    return record
  end

  local function new_handle(record, class, mangled, own)
    return {record = record, class = class, type = mangled, own = own, own_word = own and 1 or 0}
  end

  -- A block of the library's, zeroed; text that frees it and forgets it comes later.
  local function library_record(class, size)
    local record = new_record(class, false)
    if class then
      emit("lib(%d, %q)", record.id, class.layout)
    else
      emit("lib(%d, %d)", record.id, size)
    end
    wild[#wild + 1] = record
    return record
  end

  local function release(record) return record.release or format("free(%d)", record.id) end

  local function address(record) return record and format("a[%d]", record.id) or "0" end

  function ops.new()
    local class = chance(30) and catalog.class_by_name[one_of {"tq_thread", "tq_thread_master", "tq_global_t",
      "tq_mom_scan_all_msg_t", "tq_thread_u"}] or one_of(catalog.classes)
    local slot = free_slot()
    local record = new_record(class, true)
    emit("s[%d] = new(%q, %d)", slot, class.name, record.id)
    put(slot, new_handle(record, class, class.mangled, true))
  end

  function ops.new_with_arguments()
    local class = one_of(catalog.classes)
    emit("raises('Error in %s expected 0..0 args, got %d', tq.%s, %s)", class.constructor, 2, class.name, "1, nil")
  end

  function ops.new_without_memory()
    emit("is(nil, without_memory(1, tq.%s))", one_of(catalog.classes).name)
  end

  -- A handle of a type without a class, or a second one of a type with one, to the library's memory.
  function ops.view()
    local slot = free_slot()
    local mangled = one_of(types).mangled
    local class = catalog.class_by_mangled[mangled]
    local record = library_record(class, 16384)
    emit("s[%d] = view(%q, a[%d])", slot, mangled, record.id)
    put(slot, new_handle(record, class, mangled, false))
  end

  function ops.drop()
    local slot = free_slot()
    emit("s[%d] = nil", slot)
    put(slot, nil)
  end

  function ops.copy()
    local from, handle = pick()
    if not from then return end
    local slot = free_slot()
    if slots[slot] == handle then return end
    emit("s[%d] = s[%d]", slot, from)
    put(slot, handle)
  end

  function ops.disown()
    local slot, handle = pick(function(handle) return handle.class end)
    if not slot then return end
    emit("s[%d]:__disown() is(0, own(s[%d]))", slot, slot)
    give_up(handle)
  end

  -- The destructor hook, called by the script.
  function ops.destroy()
    local slot, handle = pick(function(handle) return handle.class end)
    if not slot then return end
    if handle.own then drop_text(handle.record) end
    emit("getmetatable(s[%d]).__gc(s[%d])", slot, slot)
    if handle.own then
      emit("gone(%d)", handle.record.id)
      handle.own = false
      kill(handle.record)
    end
  end

  function ops.free()
    if #wild == 0 then return end
    local record = table.remove(wild, random(#wild))
    if record.locked then
      wild[#wild + 1] = record
      return
    end
    drop_text(record)
    emit(release(record))
    kill(record)
  end

  function ops.collect()
    emit(one_of {"collectgarbage()", "collectgarbage('step', 10)", "collectgarbage('step')",
      "collectgarbage('setpause', 50)", "collectgarbage('setpause', 200)"})
  end

  -- A scan under way keeps its arguments and a block of its own.
  function ops.live()
    if depth == 0 then emit("live(%d)", blocks) end
  end

  function ops.compare()
    local i = pick()
    local j = pick()
    if not i then return end
    emit("is(ptr(s[%d]) == ptr(s[%d]), swig_equals(s[%d], s[%d]))", i, j, i, j)
    if slots[i].class and slots[j].class then
      emit("is(ptr(s[%d]) == ptr(s[%d]), s[%d] == s[%d])", i, j, i, j)
    end
  end

  function ops.describe()
    local slot, handle = pick(function(handle) return handle.class end)
    if not slot then return end
    emit("is(%q, swig_type(s[%d])) is('<%s userdata: ', tostring(s[%d]):match('^.-: '))", handle.class.readable, slot,
      handle.class.name, slot)
  end

  function ops.namespace()
    emit("tq.fuzz = %s is(%s, tq.fuzz) tq.fuzz = nil is(nil, tq.fuzz)", "'x'", "'x'")
  end

  function ops.unknown_field()
    local slot = pick(function(handle) return handle.class end)
    if not slot then return end
    emit("is(nil, s[%d].no_such_field) raises('Assignment not possible', set, s[%d], 'no_such_field', 1)", slot, slot)
  end

  -- Fields

  -- The union's numbers lie in the same bytes.
  local function cell_of(field)
    if field.class.name == "tq_thread_u" and field.kind == "int" then return "number" end
    return field.name
  end

  -- The record of an embedded value. Its bytes are those of its parent.
  local function inner(record, field)
    record.inner = record.inner or {}
    local part = record.inner[field.name]
    if not part then
      part = new_record(catalog.class_by_mangled[field.mangled or "_p_tq_thread_u"], false)
      part.parent = record
      record.inner[field.name] = part
    end
    return part
  end

  local function embedded_type(field) return field.mangled or "_p_tq_thread_u" end

  local readers = {}

  local function read_number(slot, record, field)
    local value = record.cells[cell_of(field)]
    if value == nil then value = 0 end
    if value == "unknown" then
      emit("is('float', math.type(s[%d].%s))", slot, field.name)
    else
      emit("is(%s, s[%d].%s)", quote(value + 0.0), slot, field.name)
    end
  end
  for _, kind in ipairs {"int", "size_t", "llong", "int64", "double", "short"} do readers[kind] = read_number end

  function readers.chars(slot, record, field)
    emit("is(%s, s[%d].%s)", quote(record.cells[field.name] or ""), slot, field.name)
  end

  function readers.cstring(slot, record, field)
    emit("is(%s, s[%d].%s)", quote(record.cells[field.name]), slot, field.name)
  end

  local function read_pointer(slot, record, field)
    local target = record.cells[field.name]
    if target == nil then
      emit("is(nil, s[%d].%s)", slot, field.name)
      return
    end
    local to = free_slot()
    emit("s[%d] = s[%d].%s points(%q, a[%d], s[%d])", to, slot, field.name, field.mangled, target.id, to)
    put(to, new_handle(target, catalog.class_by_mangled[field.mangled], field.mangled, false))
  end
  for _, kind in ipairs {"object", "void", "record", "func"} do readers[kind] = read_pointer end

  function readers.bytes(slot, record, field)
    if record.cells[field.name] then return end
    emit("is(nil, s[%d].%s)", slot, field.name)
  end

  local function read_array(slot, record, field)
    local array = record.cells[field.name]
    if array == nil then
      emit("elements({}, s[%d].%s)", slot, field.name)
    elseif alive(array) and array.elements then
      emit("elements({%s}, s[%d].%s%s)", concat(array.elements, ", "), slot, field.name,
        field.kind == "objects" and ", true" or "")
    end
  end
  for _, kind in ipairs {"objects", "scores", "tags"} do readers[kind] = read_array end

  local function read_embedded(slot, record, field)
    local part = inner(record, field)
    local to = free_slot()
    emit("s[%d] = s[%d].%s a[%d] = ptr(s[%d]) is(0, own(s[%d]))", to, slot, field.name, part.id, to, to)
    put(to, new_handle(part, part.class, embedded_type(field), false))
  end
  readers.embedded, readers.union = read_embedded, read_embedded

  local function pick_field()
    local slot, handle = pick_usable()
    if not slot then return end
    return slot, handle.record, one_of(handle.class.fields)
  end

  function ops.read()
    local slot, record, field = pick_field()
    if slot then readers[field.kind](slot, record, field) end
  end

  local writers = {}

  local function write_number(slot, record, field)
    local value = any_number()
    local stored = convert[field.kind](value)
    if stored == nil then
      emit("raises('number must not be negative', set, s[%d], %q, %s)", slot, field.name, quote(value))
      return
    end
    emit("s[%d].%s = %s", slot, field.name, quote(value))
    record.cells[cell_of(field)] = stored
    if record.inner and record.inner.sands then record.inner.sands.byte = nil end
    read_number(slot, record, field)
  end
  for _, kind in ipairs {"int", "size_t", "llong", "int64", "double", "short"} do writers[kind] = write_number end

  local function some_text()
    local text = string.rep(one_of {"", "x", "key:", "\xff\x01"}, random(0, 200)) .. one_of {"", "end"}
    return chance(10) and text .. "\0hidden" or text
  end

  function writers.chars(slot, record, field)
    if chance(10) then
      emit("s[%d].%s = nil", slot, field.name)
      record.cells[field.name] = ""
    else
      local text = some_text()
      emit("s[%d].%s = %s", slot, field.name, quote(text))
      record.cells[field.name] = text:match("^[^\0]*"):sub(1, layouts[field.class.layout].fields[field.name].size - 1)
    end
    readers.chars(slot, record, field)
  end

  function writers.cstring(slot, record, field)
    if chance(10) then
      emit("raises('memory error', without_memory, 1, set, s[%d], %q, 'lost')", slot, field.name)
    elseif chance(20) then
      emit("s[%d].%s = nil", slot, field.name)
      if record.key then blocks = blocks - 1 end
      record.key, record.cells.key = nil, nil
    else
      local text = some_text()
      emit("s[%d].%s = %s", slot, field.name, quote(text))
      if not record.key then blocks = blocks + 1 end
      record.key, record.cells.key = true, text:match("^[^\0]*")
    end
    readers.cstring(slot, record, field)
  end

  -- Pointers that Lua lends: the pointee stays with its owner.
  local function write_lent(slot, record, field)
    local from, handle = pick(function(handle)
      return field.kind == "object" or field.kind == "void" or handle.type == field.mangled
    end)
    if chance(20) or not from then
      emit("s[%d].%s = nil is(nil, s[%d].%s)", slot, field.name, slot, field.name)
      record.cells[field.name] = nil
      return
    end
    emit("s[%d].%s = s[%d] is(%d, own(s[%d]))", slot, field.name, from, handle.own_word, from)
    record.cells[field.name] = handle.record
  end
  writers.object, writers.void, writers.func = write_lent, write_lent, write_lent

  -- Pointers that the record takes over.
  function writers.record(slot, record, field)
    local from, handle = pick(function(handle) return handle.type == field.mangled end)
    if chance(20) or not from then
      emit("s[%d].%s = nil is(nil, s[%d].%s)", slot, field.name, slot, field.name)
      record.cells[field.name] = nil
      return
    end
    emit("s[%d].%s = s[%d] is(0, own(s[%d]))", slot, field.name, from, from)
    record.cells[field.name] = handle.record
    give_up(handle)
  end

  local formats = {objects = "T", scores = "d", tags = "T"}

  local function write_array(slot, record, field)
    if chance(20) then
      emit("s[%d].%s = nil elements({}, s[%d].%s)", slot, field.name, slot, field.name)
      record.cells[field.name] = nil
      return
    end
    local array = new_record(nil, false)
    array.elements = {}
    for i = 1, random(0, 20) do
      array.elements[i] = field.kind == "scores" and quote(random(-100, 100) / 4) or quote(random(0, 5))
    end
    emit("array(a[%d] and %d, %q, {name = %q, count = %q}, %d, %q, {%s})", record.id, record.id, field.class.layout,
      field.name, field.count, array.id, formats[field.kind], concat(array.elements, ", "))
    wild[#wild + 1] = array
    -- Arrays that share a count have its length all of them.
    for _, other in ipairs(field.class.fields) do
      local held = record.cells[other.name]
      if other ~= field and other.count == field.count and held then
        emit("s[%d].%s = nil", slot, other.name)
        record.cells[other.name] = nil
      end
    end
    record.cells[field.name] = array
    read_array(slot, record, field)
  end
  for _, kind in ipairs {"objects", "scores", "tags"} do writers[kind] = write_array end

  function writers.bytes(slot, record, field)
    local from = pick()
    emit("s[%d].%s = s[%d] is(recorder.address(s[%d]), ptr(s[%d].%s))", slot, field.name, from, from, slot, field.name)
    record.cells[field.name] = true
  end

  local function number_of(byte) return string.unpack("i4", string.char(byte):rep(4)) end

  -- Bytes written through the handle into the record, then copied to another record's field of the type.
  function writers.embedded(slot, record, field)
    local part = inner(record, field)
    local size = layouts[field.class.layout].fields[field.name].size
    local from, other = pick(function(handle)
      return handle.type == embedded_type(field) and alive(handle.record) and handle.record.byte
    end)
    if from and chance(50) then
      emit("s[%d].%s = s[%d]", slot, field.name, from)
      part.byte = other.record.byte
    else
      part.byte = random(0, 255)
      emit("fill(s[%d].%s, %d, %d)", slot, field.name, size, part.byte)
    end
    emit("filled(s[%d].%s, %d, %d)", slot, field.name, size, part.byte)
    if record.class and record.class.name == "tq_thread_u" then record.cells.number = number_of(part.byte) end
  end

  function writers.union(slot, _, field)
    emit("raises('This variable is immutable', set, s[%d], %q, s[%d].%s)", slot, field.name, slot, field.name)
  end

  function ops.write()
    local slot, record, field = pick_field()
    if slot then writers[field.kind](slot, record, field) end
  end

  local is_number = {int = true, size_t = true, llong = true, int64 = true, double = true, short = true}
  local takes_handle = {record = true, func = true, objects = true, scores = true, tags = true, embedded = true}
  local takes_over = {record = true, scores = true, tags = true}

  function ops.write_wrong_kind()
    local slot, _, field = pick_field()
    if not slot or field.kind == "object" or field.kind == "bytes" or field.kind == "union" then return end
    local kind_error = format("Error in %s::%s (arg 2), expected '%s' got ", field.class.structure, field.name,
      field.text)
    local from, handle = pick()
    if chance(50) and field.kind ~= "void" then
      if takes_handle[field.kind] then
        if handle.type == field.mangled then return end
        emit("raises('Error in %s_%s_set (arg 2), expected ', set, s[%d], %q, s[%d])", field.class.name, field.name,
          slot, field.name, from)
        if takes_over[field.kind] then
          emit("is(0, own(s[%d]))", from)
          give_up(handle)
        end
      else
        emit("raises(%q, set, s[%d], %q, s[%d])", kind_error, slot, field.name, from)
      end
      return
    end
    local is_text = field.kind == "chars" or field.kind == "cstring"
    local value = one_of(kPlain)
    if tonumber(value) and (is_number[field.kind] or is_text) or value == "'text'" and is_text then return end
    emit("raises(%q, set, s[%d], %q, %s)", kind_error, slot, field.name, value)
  end

  -- Accessors called with the wrong arguments, and without a record.
  function ops.accessors()
    local field = one_of(one_of(catalog.classes).fields)
    local class = field.class.name
    local get, set = format("getter(%q, %q)", class, field.name), format("setter(%q, %q)", class, field.name)
    local choice = random(4)
    if choice == 1 then
      emit("is(nil, %s(nil))", get)
      if is_number[field.kind] then emit("%s(nil, 5)", set) end
      if field.kind == "chars" or field.kind == "cstring" then emit("%s(nil, 'text')", set) end
    elseif choice == 2 then
      local slot, handle = pick()
      if slot and handle.type ~= field.class.mangled then
        emit("raises('Error in %s_%s_get (arg 1), expected ', %s, s[%d])", class, field.name, get, slot)
      end
    elseif choice == 3 then
      emit("raises('Error in %s::%s (arg 1), expected ', %s, %s)", field.class.structure, field.name, get,
        one_of(kPlain))
    else
      local slot = pick(function(handle) return handle.class == field.class and usable(handle) end)
      if slot then
        emit("raises('Error in %s::%s expected 1..1 args, got 2', %s, s[%d], nil)", field.class.structure, field.name,
          get, slot)
        if field.kind ~= "union" then
          emit("raises('Error in %s::%s expected 2..2 args, got 3', %s, s[%d], nil, nil)", field.class.structure,
            field.name, set, slot)
        end
      end
    end
  end

  -- Commands. An argument is {text, native}: its source, and that of what the client library gets; one that is wrong
  -- has a stage and a message. Kinds are checked before conversions, each from left to right.
  local function wrong_kind(text) return {text = text, stage = "kind"} end

  local function handle_argument(class)
    if chance(8) then return wrong_kind(one_of(kPlain)) end
    if chance(8) then
      local slot, handle = pick()
      if slot and handle.type ~= class.mangled then
        return {text = format("s[%d]", slot), stage = "convert"}
      end
    end
    local slot, handle = pick(function(handle) return handle.class == class and usable(handle) end)
    if slot and chance(80) then
      return {text = format("s[%d]", slot), native = format("ptr(s[%d])", slot), record = handle.record}
    end
    return {text = "nil", native = "0"}
  end

  local function number_argument(kind)
    if chance(5) then
      local slot = pick()
      if slot and chance(30) then return wrong_kind(format("s[%d]", slot)) end
      return wrong_kind(one_of {"true", "{}", "nil", "'text'", "print"})
    end
    local value = any_number()
    local stored = convert[kind](value)
    if stored == nil then return {text = quote(value), stage = "convert", message = "number must not be negative"} end
    return {text = quote(value), native = quote(stored)}
  end

  local function any_handle()
    local slot = pick()
    if slot and chance(85) then return {text = format("s[%d]", slot), native = format("ptr(s[%d])", slot)} end
    return {text = "nil", native = "0"}
  end

  local refusals = {
    fields = {"input error, errcode_1", "input error, errcode_3"},
    scores = {"input error, expect array", "input error"},
    members = {"input error, expect array", "input error"},
  }

  local elements = {
    fields = function()
      local value = chance(70) and random(-5, 100) or one_of {4294967297, math.maxinteger, math.mininteger, -1}
      return quote(value), quote((string.unpack("i4", string.pack("i8", value))))
    end,
    scores = function()
      local value = any_number()
      return quote(value), quote(tonumber(value) + 0.0)
    end,
    members = function()
      local argument = any_handle()
      return argument.text, argument.native
    end,
  }
  local wrong_elements = {
    fields = {"2.0", "'2'", "true", "{}"}, scores = {"'x'", "true", "{}"}, members = {"'x'", "5", "{}"},
  }

  local function array_argument(kind, length)
    if chance(5) then
      return {text = one_of {"nil", "7", "'text'", "print"}, stage = "convert", message = refusals[kind][1]}
    end
    local texts, natives = {}, {}
    for i = 1, length do texts[i], natives[i] = elements[kind]() end
    -- A hole at the end would leave the length open.
    if texts[length] == "nil" then
      texts[length], natives[length] = "view('_p_void', 1)", "1"
    end
    local argument = {}
    if chance(5) and length > 0 then
      texts[random(length)] = one_of(wrong_elements[kind])
      argument.stage, argument.message = "convert", refusals[kind][2]
    end
    argument.text, argument.native = format("{%s}", concat(texts, ", ")), format("{%s}", concat(natives, ", "))
    argument.length = length
    return argument
  end

  local arguments = {
    global = function() return handle_argument(catalog.class_by_name.tq_global_t) end,
    op = function(entry) return handle_argument(entry.class) end,
    res = function(entry) return handle_argument(entry.class) end,
    int = function() return number_argument("int") end,
    unsigned = function() return number_argument("unsigned") end,
    size_t = function() return number_argument("size_t") end,
    double = function() return number_argument("double") end,
    key = function() return chance(10) and {text = one_of(kPlain), native = "0"} or any_handle() end,
    void = function()
      if chance(10) then return wrong_kind(one_of(kPlain)) end
      if chance(3) then
        return {text = "recorder.light(4096)", stage = "convert", message = "expected a void* at argument number 1"}
      end
      return any_handle()
    end,
    timeout = function()
      if chance(10) then
        local text = one_of(kPlain)
        local value = tonumber(text)
        return {text = text, native = timeout(value)}
      end
      local value = any_number()
      return {text = quote(value), native = timeout(value)}
    end,
    name = function()
      if chance(10) then return wrong_kind(one_of {"true", "{}", "print"}) end
      local value = one_of {"", "router", "a longer name of a runtime", 12}
      return {text = quote(value), native = quote(tostring(value))}
    end,
    fields = function(_, length) return array_argument("fields", length) end,
    scores = function(_, length) return array_argument("scores", length) end,
    members = function(_, length) return array_argument("members", length) end,
    callback = function()
      if chance(20) then
        local text = one_of {"5", "'text'", "{}", "true"}
        return {text = text, stage = "convert", message = "input error: cb is not function"}
      end
      return {text = "nil", native = "0"}
    end,
    any = function() return {text = one_of {"nil", "'x'", "{}"}, native = "0"} end,
  }

  -- The message of the first argument that is wrong.
  local function refusal(command, values)
    for _, stage in ipairs {"kind", "convert"} do
      for i, value in ipairs(values) do
        if value.stage == stage then
          if value.message then return value.message end
          return format("Error in %s (arg %d), expected ", stage == "kind" and command.called or command.name, i)
        end
      end
    end
  end

  local function texts_of(values, key)
    local texts = {}
    for i, value in ipairs(values) do texts[i] = value[key] end
    return texts
  end

  -- What the client function gets: an array takes its elements and their number, two arrays one number.
  local function natives_of(values)
    local natives = {}
    for i, value in ipairs(values) do
      natives[#natives + 1] = value.native
      local following = values[i + 1]
      if value.length and not (following and following.length) then natives[#natives + 1] = tostring(value.length) end
    end
    return natives
  end

  local function call(command)
    local values, length, arrays = {}, random(0, 12), 0
    for i, entry in ipairs(command.arguments) do
      values[i] = arguments[entry.kind](entry, length)
      if values[i].length then arrays = arrays + 1 end
    end
    local texts = texts_of(values, "text")
    local source = concat(texts, ", ")
    if chance(4) then
      texts[#texts + (chance(50) and 1 or 0)] = #texts > 0 and chance(50) and "nil" or nil
      if #texts ~= #values then
        emit("refused('Error in %s expected %d..%d args, got %d', tq.%s%s)", command.called, #values, #values, #texts,
          command.name, #texts > 0 and ", " .. concat(texts, ", ") or "")
        return
      end
      texts = texts_of(values, "text")
    end
    local message = refusal(command, values)
    if message then
      emit("refused(%q, tq.%s, %s)", message, command.name, source)
      return
    end
    if arrays > 0 and length > 0 and chance(5) then
      emit("refused('memory error', without_memory, %d, tq.%s, %s)", random(arrays), command.name, source)
      return
    end
    local natives = natives_of(values)
    local result, written = tostring(random(-5, 100)), tostring(random(-5, 100))
    local to, handle
    local kind = command.results[1].kind
    if command.cast then
      result = natives[1]
      local slot = texts[1]:match("^s%[(%d+)%]$")
      local target = slot and slots[tonumber(slot)]
      if target then
        local class = command.results[1].class
        to, handle = free_slot(), new_handle(target.record, class, class.mangled, false)
      end
    elseif kind == "object" or kind == "res" then
      result = "0"
      if chance(80) then
        local class = command.results[1].class
        local record = library_record(class, 32)
        result = address(record)
        to, handle = free_slot(), new_handle(record, class, class and class.mangled or "_p_tq_obj", false)
      end
    end
    local option
    for i, entry in ipairs(command.arguments) do
      if entry.kind == "op" and values[i].record then option = values[i].record end
      -- These two hand the client a record of their own.
      if entry.kind == "op" and command.client ~= command.called then
        if command.called:find("^_tq_mom_hm") and values[i].record then natives[i] = "any" end
      end
    end
    if command.called:find("^_tq_mom_hm") then
      natives = {table.unpack(natives, 1, 4)}
    end
    emit("%scall(%q, %s, %s, {%s}, %s)", to and format("s[%d] = ", to) or "", command.name, result, written,
      concat(natives, ", "), source)
    if to then put(to, handle) end
    if option and option.cells.flag ~= "unknown" then emit("flagged(%d)", option.cells.flag or 0) end
  end

  function ops.call() call(one_of(catalog.commands)) end

  -- What `body` emits, as the text of a function's body.
  local function nested(body)
    local outer = out
    out = {}
    depth = depth + 1
    body()
    depth = depth - 1
    local text = concat(out, " ")
    out = outer
    return text
  end

  function ops.thread()
    if depth > 2 then return end
    emit("thread(function() %s end)", nested(function()
      for _ = 1, random(1, 5) do
        self.operation()
        if chance(50) then emit("yield()") end
      end
    end))
  end

  -- A callback for each message, which may raise, yield, collect, scan and call.
  function ops.scan()
    if depth > 2 then return end
    local global = arguments.global()
    while global.stage do global = arguments.global() end
    local db, key = any_number(), arguments.key()
    local count = random(0, 1000)
    local messages, numbers_list, bodies = {}, {}, {}
    for i = 1, random(0, 4) do
      messages[i] = library_record(catalog.class_by_name.tq_mom_pubsub_msg_t)
      messages[i].locked = true
      numbers_list[i] = tostring(messages[i].id)
    end
    local fails = #messages > 0 and chance(25) and random(#messages)
    local failure = fails and one_of {"error('boom', 0)", "yield()"}
    -- What the client gets is known before the callbacks change the slots.
    emit("local g, key, argument = %s, %s, %s", global.text, key.text, one_of {"nil", "'x'", "5"})
    emit("local expected = {%s, %d, %s, %d}", global.native, convert.int(db), key.native, count)
    for i, message in ipairs(messages) do
      bodies[i] = format("function(m) %s end", nested(function()
        local to = free_slot()
        emit("s[%d] = m", to)
        put(to, new_handle(message, message.class, message.class.mangled, false))
        for _ = 1, random(0, 4) do self.operation() end
        emit(i == fails and failure or "return " ..
          one_of {"", "nil", "0", "1", "-1", "1.0", "'x'", "4294967297", "true"})
      end))
      if i == fails then break end
    end
    emit("scan(%d, {%s}, {%s}, %s, expected, argument, g, %s, key, %d)", random(0, 9), concat(numbers_list, ", "),
      concat(bodies, ", "), fails and (failure == "yield()" and "'attempt to yield'" or "'boom'") or "nil", quote(db),
      count)
    for _, message in ipairs(messages) do message.locked = nil end
  end

  local weights = {
    new = 12, new_with_arguments = 1, new_without_memory = 1, view = 3, drop = 5, copy = 3, disown = 1, destroy = 2,
    free = 8, collect = 4, compare = 2, describe = 2, namespace = 1, unknown_field = 1, read = 20, write = 25,
    write_wrong_kind = 4, accessors = 3, call = 35, thread = 2, scan = 3, live = 1,
  }
  local table_of_ops = {}

  -- Adds the operations of another part of the model.
  function self.add(operations, operation_weights)
    for name, operation in pairs(operations) do ops[name] = operation end
    for name, weight in pairs(operation_weights) do weights[name] = weight end
    table_of_ops = {}
    local names = {}
    for name in pairs(weights) do names[#names + 1] = name end
    table.sort(names)
    for _, name in ipairs(names) do
      for _ = 1, weights[name] do table_of_ops[#table_of_ops + 1] = ops[name] end
    end
  end
  self.add({}, {})

  function self.operation() one_of(table_of_ops)() end

  -- The next line; it stands for itself.
  function self.line()
    out = {}
    repeat self.operation() until #out > 0
    return "do " .. concat(out, " ") .. " end"
  end

  -- The lines that leave nothing behind.
  function self.last_lines()
    local lines = {}
    for slot = 1, kSlots do
      out = {}
      if slots[slot] then
        local handle = slots[slot]
        if handle.own and handle.references == 1 then drop_text(handle.record) end
        emit("s[%d] = nil", slot)
        put(slot, nil)
        lines[#lines + 1] = concat(out, " ")
      end
    end
    for _, record in ipairs(wild) do
      out = {}
      drop_text(record)
      emit(release(record))
      kill(record)
      lines[#lines + 1] = concat(out, " ")
    end
    lines[#lines + 1] = format("live(%d)", blocks)
    lines[#lines + 1] = self.at_end
    return lines
  end

  -- For other parts of the model.
  self.random, self.chance, self.one_of = random, chance, one_of
  self.pick, self.put, self.free_slot = pick, put, free_slot
  self.new_record, self.new_handle, self.give_up, self.kill, self.alive = new_record, new_handle, give_up, kill, alive
  self.nested, self.wild = nested, wild
  function self.depth() return depth end
  return self
end

return generator
