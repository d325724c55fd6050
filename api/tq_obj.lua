family "Value objects" {
  [[
Keys, values and elements are value objects. An object names a key and carries what a command needs of it: a value, or
numbered fields. Strings hold any bytes. What an object cannot do is a Lua error, and so is the use of one that was
released. The module is for the host kit; on a device objects come from the platform's own modules and from commands.]],
  setup = [[local o = tq_obj.new("motd", "hello")]],
}

func "new" {
  arg "key: string" "1 to 511 bytes without NUL",
  arg "value?: string" "any bytes",
  returns = ret "object: tq_obj" "which Lua frees",
  does = "Makes an object.",
  example = [[print(tq_obj.new("motd", "hello")) --> tq_obj(motd = hello)]],
}

func "from" {
  arg "handle?: tq_pointer" "points to an object: an element of a value array",
  returns = ret "object: tq_obj?" "owned by whoever owned it; nil for nil",
  does = "Returns the object behind an untyped handle.",
  example = [[
tq.rpush(g, db, tq_obj.new("jobs", "boot"))
local result = tq.lrange(g, db, tq_obj.new("jobs"), 0, -1)
print(tq_obj.from(result.value_array[1]).value, tq.lrange_res_free(result)) --> boot	0.0]],
}

func "bytes" {
  arg "handle?: tq_pointer" "points to bytes: the value of a message",
  arg "length: integer [bytes]" "how many; the message knows",
  returns = ret "bytes: string" "a copy",
  does = "Copies the bytes behind a handle.",
  example = [[print(#tq_obj.bytes(nil, 0)) --> 0]],
}

class "tq_obj" {
  does = "A value object. Commands return them, too, once both modules are loaded, in either order.",
  field "key: string" "the key; assigning nil is an error",
  field "value: string?" "the value; nil takes it away",
  field "[integer]: string?" "field 0 to 4294967295; nil takes it away",
  method "fields" {
    returns = ret "fields: table<integer, string>" "a new table of all fields",
    does = "Returns the fields by number.",
  },
  method "__disown" {
    does = "Makes Lua give up the object: wanted before `tq_obj_free`.",
  },
  example = [[
o[7] = "up"
print(o.key, o.value, o:fields()[7]) --> motd	hello	up]],
}
