-- The description in api/, and how messages and type tables spell what it names.
local description = require "api.description"

local module = description.module_by_name.tq_mom_sync
local catalog = {
  classes = module.classes, class_by_name = {}, commands = module.functions, command_by_name = {},
  constants = module.constants,
}

-- Types that no class has, by mangled name.
catalog.classless = {
  _p_char = "char *",
  _p_double = "double *",
  _p_f_p_struct_tq_thread__int = "int (*)(struct tq_thread *)",
  _p_fd_set = "fd_set *",
  _p_int = "intptr_t *|int *|int_least32_t *|int_fast32_t *|int32_t *|int_fast16_t *",
  _p_long_long = "int_least64_t *|int_fast64_t *|int64_t *|long long *|intmax_t *",
  _p_p_tq_obj = "tq_obj **",
  _p_p_void = "void **",
  _p_pollfd = "struct pollfd *",
  _p_short = "short *|int_least16_t *|int16_t *",
  _p_signed_char = "signed char *|int_least8_t *|int_fast8_t *|int8_t *",
  _p_size_t = "size_t *",
  _p_timeval = "struct timeval *",
  _p_tq_mom_batch_over_flag_t = "tq_mom_batch_over_flag_t *",
  _p_tq_mom_client_s = "struct tq_mom_client_s *",
  _p_tq_mom_cmd_t = "tq_mom_cmd_t *",
  _p_tq_mom_db_type_t = "tq_mom_db_type_t *",
  _p_tq_obj = "tq_obj *",
  _p_tq_thread_debug_list = "struct tq_thread_debug_list *",
  _p_tq_thread_list = "struct tq_thread_list *|tq_thread_list *",
  _p_u_int32_t = "u_int32_t *",
  _p_unsigned_char = "unsigned char *|uint_least8_t *|uint_fast8_t *|uint8_t *",
  _p_unsigned_int = "uintptr_t *|uint_least32_t *|uint_fast32_t *|uint32_t *|unsigned int *|uint_fast16_t *",
  _p_unsigned_long_long = "uint_least64_t *|uint_fast64_t *|uint64_t *|unsigned long long *|uintmax_t *",
  _p_unsigned_short = "unsigned short *|uint_least16_t *|uint16_t *",
  _p_vec_master_t = "struct vec_master_t *",
  _p_void = "void *",
}

-- Kinds of fields that read as handles, or store what one points to.
local handles = {
  object = true, objects = true, scores = true, tags = true, void = true, bytes = true, record = true, func = true,
  embedded = true,
}

-- "struct tq_thread_list [4]" and "tq_obj **" are reached through handles of _p_tq_thread_list and _p_p_tq_obj.
local function mangled(native)
  if native:find "%(" then return "_p_f_p_struct_tq_thread__int" end
  local name = native:gsub("^struct ", ""):gsub(" %[.*", ""):gsub(" ?%*+$", ""):gsub(" ", "_")
  return "_" .. string.rep("p_", math.max(1, select(2, native:gsub("%*", "")))) .. name
end

for _, class in ipairs(catalog.classes) do
  catalog.class_by_name[class.name] = class
  class.pointer = class.tag and class.name .. " *" or string.format("struct %s *", class.structure)
  class.readable = class.pointer
  if not class.tag then class.readable = string.format("%s|%s *", class.readable, class.structure) end
  if class.layout ~= class.structure and not class.tag then
    class.readable = string.format("%s|%s *", class.readable, class.layout)
  end
  class.mangled = "_p_" .. class.structure:match "[%w_]+$"
  class.constructor = class.structure .. "::" .. class.structure:match("[%w_]+$")
  for _, field in ipairs(class.fields) do
    field.text = field.native
    if handles[field.kind] then field.mangled = mangled(field.native) end
  end
end

catalog.type_count = #catalog.classes
for _ in pairs(catalog.classless) do catalog.type_count = catalog.type_count + 1 end

local function resolve(value) value.class = catalog.class_by_name[value.class] end

for _, command in ipairs(catalog.commands) do
  catalog.command_by_name[command.name] = command
  for _, list in ipairs {command.arguments, command.results} do
    for i, value in ipairs(list) do
      list[i] = setmetatable({class = value.class}, {__index = value})
      resolve(list[i])
    end
  end
end

return catalog
