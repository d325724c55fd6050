-- The description of the API: loads the files beside this one and returns what they say. README.md shows how an entry
-- is written. Nothing here comes from the modules that are described; the tests hold the two against each other.
local description = {modules = {}, module_by_name = {}, class_by_name = {}, function_by_name = {}}

-- What every example starts from.
description.prologue = [[
local tq, tq_obj = require "tq_mom_sync", require "tq_obj"
local g, db = tq.tq_global_init(nil, nil), tq.TQ_MOM_APP_DB
tq.client_connect(g, 0)]]

local files = {
  {module = "tq_mom_sync", "handles", "connection", "strings", "expiry", "hashes", "lists", "sets", "sorted_sets",
    "publish_scan", "options", "results", "messages", "runtime", "constants"},
  {module = "tq_obj", "tq_obj"},
  {module = "tq_kit", "tq_kit"},
  {module = "tq_watch", "tq_watch"},
}

-- What a value is: `native` is its C type, `lua` its type for an editor, `set` what an assignment to such a field does.
local kinds = {
  global = {native = "tq_global_t *", lua = "tq_global_t?"},
  int = {native = "int", lua = "number"},
  database = {kind = "int", native = "int", lua = "tq_mom_db_type_t"},
  unsigned = {native = "unsigned int", lua = "number"},
  size_t = {native = "size_t", lua = "number"},
  double = {native = "double", lua = "number"},
  short = {native = "short", lua = "number", set = "Keeps the low 16 bits."},
  int64 = {native = "int64_t", lua = "number", set = "Exact up to 2^53."},
  llong = {native = "long long", lua = "number", set = "Exact up to 2^53."},
  command_code = {kind = "int", native = "tq_mom_cmd_t", lua = "tq_mom_cmd_t"},
  batch_flag = {kind = "int", native = "tq_mom_batch_over_flag_t", lua = "tq_mom_batch_over_flag_t"},
  timeout = {native = "struct timeval", lua = "number"},
  name = {native = "char *", lua = "string?"},
  key = {native = "tq_obj *", lua = "tq_obj?"},
  fields = {native = "int32_t *", lua = "integer[]"},
  scores = {native = "double *", lua = "number[]"},
  members = {native = "void **", lua = "tq_obj[]"},
  callback = {native = "tq_mom_scan_cb",
    lua = "fun(g: tq_global_t, message: tq_mom_pubsub_msg_t, argument: any): integer?"},
  any = {native = "void *", lua = "any"},
  void = {native = "void *", lua = "userdata?"},
  status = {native = "int", lua = "number"},
  out = {native = "int *", lua = "number"},
  object = {native = "tq_obj *", lua = "tq_obj?", set = "Takes the pointer of any handle, which keeps what it owns."},
  objects = {native = "tq_obj **", lua = "tq_pointer[]",
    set = "Reads as a new table of untyped handles; takes a handle of `tq_obj **`, not a table."},
  score_array = {kind = "scores", native = "double *", lua = "number[]",
    set = "Reads as a new table; takes a handle of `double *`, which gives up what it owns, not a table."},
  tags = {native = "size_t *", lua = "integer[]",
    set = "Reads as a new table; takes a handle of `size_t *`, which gives up what it owns, not a table."},
  chars = {lua = "string", set = "Cut to its room, silently; nil empties it."},
  string = {kind = "cstring", native = "char *", lua = "string?",
    set = "Frees the text that was there and keeps a copy, which the record does not free."},
  pointer = {kind = "void", native = "void *", lua = "tq_pointer?",
    set = "Takes the pointer of any handle, which keeps what it owns."},
  bytes = {native = "unsigned char *", lua = "tq_pointer?", set = "Stores the address of the handle itself."},
  record = {lua = "tq_pointer?", set = "Takes a handle of this type, which gives up what it owns."},
  func = {native = "int (*)(struct tq_thread *)", lua = "tq_pointer?", set = "Takes a handle of this type."},
  embedded = {lua = "tq_pointer", set = "Reads as a handle into the record; copies what the given handle points to."},
  union = {native = "tq_thread_u", lua = "tq_thread_u", set = "Read-only; its fields can be set."},
}

-- "time [ms]" is a name and a unit, "value?: string" an optional name and a type.
local function parse(head)
  local rest, unit = head:match("^(.-)%s*%[(.-)%]$")
  rest = rest or head
  local name, type_name = rest:match("^([^:]+):%s*(.+)$")
  name = name or rest
  return name:gsub("%?$", ""), unit, type_name, name:find("%?$") and true or nil
end

local function value(kind_name, head, text)
  local kind = kinds[kind_name]
  local name, unit = parse(head)
  return {name = name, unit = unit, text = text, kind = kind.kind or kind_name, native = kind.native, type = kind.lua,
    set = kind.set}
end

-- The words of an entry.
local words = {}

for _, kind in ipairs {"global", "int", "unsigned", "double", "short", "int64", "status", "out", "object",
  "command_code", "batch_flag", "pointer", "bytes", "union", "any", "callback", "string"} do
  words[kind] = function(head)
    return function(text) return value(kind, head, text) end
  end
end
words.size = function(head) return function(text) return value("size_t", head, text) end end
words.long_long = function(head) return function(text) return value("llong", head, text) end end
words.handler = function(head) return function(text) return value("func", head, text) end end
words.text = function(head) return function(text) return value("name", head, text) end end

words.g = value("global", "g", "the runtime")
words.db = value("database", "db", "the database")
words.key = function(text) return value("key", "key", text) end
words.other = function(head) return function(text) return value("key", head, text) end end
words.timeout = value("timeout", "timeout [s]", "bounds how long the call may take; what is no number counts as 0")
words.fields = function(text) return value("fields", "fields", text) end
words.scores = function(text) return value("scores", "scores", text) end
words.members = function(text) return value("members", "members", text) end

-- Results.
words.ok = value("status", "status", "0, or what went wrong")
words.number = words.status
words.result = function(class_name)
  return function(text)
    local result = value("record", "result", text)
    result.kind, result.class, result.type, result.native = "res", class_name, class_name .. "?", class_name .. " *"
    return result
  end
end

-- Fields.
local function array(kind)
  return function(name, count)
    return function(text)
      local field = value(kind, name, text)
      field.count = count
      return field
    end
  end
end
words.objects, words.score_array, words.tags = array "objects", array "score_array", array "tags"

local function native(kind)
  return function(name, native_type)
    return function(text)
      local field = value(kind, name, text)
      field.native = native_type
      return field
    end
  end
end
words.chars, words.record, words.embedded = native "chars", native "record", native "embedded"

local module, family -- that the next entries belong to

-- A family of functions, classes or constants. `setup` runs before each example of the family.
function words.family(title)
  return function(about)
    family = about
    family.title, family.about, family.functions, family.classes = title, about[1], {}, {}
    family.constants, family.globals = {}, {}
    family.module = module
    module.families[#module.families + 1] = family
    return family
  end
end

local function list_of(results)
  if results == nil then return {} end
  return results.text and {results} or results
end

local function add_function(entry)
  entry.family, entry.module = entry.family or family, module
  local list = entry.family.functions
  list[#list + 1] = entry
  module.functions[#module.functions + 1] = entry
  if module.name == "tq_mom_sync" then description.function_by_name[entry.name] = entry end
  return entry
end


-- The statuses that every function on a database can give, beside those that its entry names.
local function statuses_of(entry)
  local statuses = entry.statuses or {}
  if entry.arguments[2] and entry.arguments[2].name == "db" then
    statuses = {TQ_MOM_OK = "", TQ_MOM_INPUT_ERR = "", TQ_MOM_MALLOC_ERR = "", TQ_MOM_NO_READY = ""}
    if entry.writes then statuses.TQ_MOM_GLOBAL_DB_NO_WRITE = "" end
    for name, text in pairs(entry.statuses or {}) do statuses[name] = text end
  end
  return statuses
end

local function make_command(name, entry)
  entry.name = name
  entry.client = entry.client or "tq_mom_" .. name .. "_sync"
  entry.called = entry.helper or entry.client
  entry.arguments = table.move(entry, 1, #entry, 1, {})
  entry.results = list_of(entry.returns)
  entry.statuses = statuses_of(entry)
  return add_function(entry)
end

-- What the _ext form of a command says differently is in the command's `ext`.
local function add_extended(plain)
  local ext = plain.ext or {}
  local name = plain.name .. "_ext"
  local arguments = {table.unpack(ext, 1, #ext)}
  if #ext == 0 then arguments = {table.unpack(plain.arguments, 3)} end
  local option = value("record", "op", "the options, or nil for the defaults")
  option.kind, option.class, option.type = "op", plain.options, plain.options .. "?"
  option.native = "tq_mom_" .. plain.options .. " *"
  local entry = {plain.arguments[1], plain.arguments[2], option, table.unpack(arguments)}
  entry.plain, entry.options = plain, plain.options
  entry.helper = ext.helper
  entry.returns = ext.returns or plain.returns
  entry.writes, entry.statuses, entry.kit = plain.writes, plain.statuses, ext.kit
  entry.does = ext.does or string.format("As [`%s`](#%s), with options.", plain.name, plain.name)
  entry.example = ext.example or plain.example:gsub("tq%." .. plain.name .. "%(g, db, ",
    string.format("tq.%s(g, db, tq.%s(), ", name, plain.options))
  return make_command(name, entry)
end

function words.command(name)
  return function(entry)
    local plain = make_command(name, entry)
    if plain.options then add_extended(plain) end
  end
end

-- A result record is released by the function that is named after it.
local function add_releases()
  local released = {}
  for _, entry in ipairs {table.unpack(module.functions)} do
    local class_name = entry.results[1] and entry.results[1].class
    local what = class_name and class_name:match("^tq_mom_(%w+_res)_t$")
    if what and not released[what] then
      released[what] = true
      local name = what .. "_free"
      local result = words.result(class_name)("what the command returned; null is no failure")
      description.class_by_name[class_name].release = name
      make_command(name, {
        result, client = "tq_mom_" .. name, family = entry.family, releases = class_name, returns = words.ok,
        statuses = {TQ_MOM_OK = "", TQ_MOM_INPUT_ERR = "not such a result, or released before"},
        does = string.format("Releases a [`%s`](#%s) and all it points to.", class_name, class_name),
        example = entry.example,
      })
    end
  end
end

local function add_class(entry)
  entry.fields, entry.methods, entry.family, entry.module = {}, {}, family, module
  for _, member in ipairs(entry) do
    member.class = entry
    table.insert(member.is_method and entry.methods or entry.fields, member)
  end
  family.classes[#family.classes + 1] = entry
  module.classes[#module.classes + 1] = entry
  assert(not description.class_by_name[entry.name], entry.name)
  description.class_by_name[entry.name] = entry
  return entry
end

-- A structure `<what>_s` with the typedef `<what>_t`; its class has the typedef's name unless `name` says another.
local function add_record(what, entry)
  entry.layout, entry.structure, entry.is_handle = what .. "_t", what .. "_s", true
  entry.name = entry.name or entry.layout
  return add_class(entry)
end

-- The option record of the commands that name it: a flag, and what the entry adds.
function words.option(what)
  return function(entry)
    entry.name = what .. "_op_t"
    table.insert(entry, 1, words.int "flag" "bits whose meaning is the store's own")
    add_record("tq_mom_" .. what .. "_op", entry)
  end
end

-- A result record: what the entry says, and the status. `cast` names the function that makes a handle of it.
function words.result_record(what)
  return function(entry)
    entry[#entry + 1] = words.int "error_code" "0, or the status of the failure"
    add_record("tq_mom_" .. what .. "_res", entry)
  end
end

function words.message_record(what)
  return function(entry) add_record("tq_mom_" .. what, entry) end
end

-- A structure of the runtime. Without `what` ending in _t the structure's name is the class's.
function words.runtime_record(name)
  return function(entry)
    local what = name:match("^(.*)_t$")
    if what then return add_record(what, entry) end
    entry.name, entry.layout, entry.structure, entry.is_handle = name, name, entry.structure or name, true
    add_class(entry)
  end
end

local function add_casts()
  for _, class in ipairs(module.classes) do
    if class.cast then
      local pointer = value("void", "handle", "any handle")
      make_command(class.cast, {
        pointer, client = class.cast, cast = class, family = class.family,
        returns = words.result(class.name) "a handle of the same pointer, which owns nothing; nil for nil",
        does = string.format("Takes what a handle points to for a [`%s`](#%s). Checks nothing.", class.name,
          class.name),
        example = string.format("print(tq.%s(tq.%s()) ~= nil) --> true", class.cast, class.name),
      })
    end
  end
end

function words.constant(name)
  return function(number)
    return function(text) return {name = name, value = number, text = text} end
  end
end

function words.constants(list)
  for _, constant in ipairs(list) do
    constant.family, constant.type, constant.status = family, list.type, list.statuses
    family.constants[#family.constants + 1] = constant
    module.constants[#module.constants + 1] = constant
  end
end

-- Entries of a plain Lua module. `arg "name?: type [unit]"` is an argument that may be left out, `ret` a result.
local function typed(head)
  return function(text)
    local name, unit, type_name, optional = parse(head)
    return {name = name, unit = unit, type = assert(type_name, head), optional = optional, text = text}
  end
end
words.arg, words.ret, words.field = typed, typed, typed

function words.func(name)
  return function(entry)
    entry.name = name
    entry.arguments, entry.results = table.move(entry, 1, #entry, 1, {}), list_of(entry.returns)
    add_function(entry)
  end
end

-- A function that loading the module makes global.
function words.global_func(name)
  return function(entry)
    entry.name, entry.family = name, family
    entry.arguments, entry.results = table.move(entry, 1, #entry, 1, {}), list_of(entry.returns)
    table.insert(family.globals, entry)
    table.insert(module.globals, entry)
  end
end

function words.class(name)
  return function(entry)
    entry.name = name
    add_class(entry)
  end
end

function words.method(name)
  return function(entry)
    entry.name, entry.is_method = name, true
    entry.arguments, entry.results = table.move(entry, 1, #entry, 1, {}), list_of(entry.returns)
    return entry
  end
end

local directory = debug.getinfo(1, "S").source:match("^@(.*/)") or "./"

for _, list in ipairs(files) do
  module = {name = list.module, families = {}, functions = {}, classes = {}, constants = {},
    globals = {}}
  description.modules[#description.modules + 1] = module
  description.module_by_name[module.name] = module
  for _, file in ipairs(list) do
    assert(loadfile(directory .. file .. ".lua", "t", setmetatable({}, {__index = words})))()
    family.file = file
  end
  add_releases()
  add_casts()
end

return description
