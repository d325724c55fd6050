family "Value objects" {
  [[
Keys, values and elements are value objects. An object names a key and carries what a command needs of it: a value, or
numbered fields, which hold any bytes. What an object cannot do is a Lua error, and so is the use of one that was
released. On the host kit and on a device the module is the same, over different objects.]],
  setup = [[local o = tq_obj.new("motd", "hello")]],
}

func "new" {
  arg "key: string" "1 to 511 bytes without NUL",
  arg "value?: string" "any bytes",
  returns = ret "object: tq_obj" "which Lua frees",
  errors = "A key that no command can use, with the reason; a value that is no string.",
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

class "tq_obj.fields" {
  does = "What `tq_obj.message` takes: fields of `tq_mom_pubsub_msg_t`. `length` follows from the value.",
  field "db?: integer" "the database",
  field "key?: string" "the key, or topic",
  field "field?: string" "the field",
  field "cmd?: integer" "a command code: `tq.TQ_MOM_PUBLISH`, ...",
  field "value?: string" "any bytes",
  field "flag?: integer" "a batch flag",
  field "db_id?: integer" "the database's number",
  field "cluster_id?: integer" "the cluster's number",
  field "error?: integer" "a status",
}

func "message" {
  arg "fields: tq_obj.fields" "those not named are 0 or empty",
  returns = ret "message: tq_mom_pubsub_msg_t" "which Lua frees with the bytes of its value",
  errors = "A field that messages do not have, or of the wrong kind.",
  does = "Makes a message as subscribers get it, to test a handler.",
  example = [[
local message = tq_obj.message{db = db, key = "alarm/fan", value = "stalled"}
print(message.key, tq_obj.bytes(message.value, message.length)) --> alarm/fan	stalled]],
}

func "scan_message" {
  arg "fields: {key: string, value?: string}" "the key, and the bytes if it is a string's",
  returns = ret "message: tq_mom_pubsub_msg_t" "which Lua frees; the cast shows it as what it is",
  errors = "A key or a value that is no string.",
  does = "Makes a message as the callback of a scan gets it, to test one.",
  example = [[
local element = tq.convertPtrToScanAllMsg(tq_obj.scan_message{key = "port/1", value = "up"})
print(element.key, tq_obj.bytes(element.value, element.vlen)) --> port/1	up]],
}

class "tq_obj" {
  is_handle = true,
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
