-- Lines for the store of the host kit: value objects, commands on them, results and their release, scans that call
-- back. What a command does to the store is not checked here, but that nothing is used after its end, and nothing is
-- left over.
return function(model, catalog)
  local random, chance, one_of, emit = model.random, model.chance, model.one_of, model.emit
  local format, concat = string.format, table.concat
  local quote = require "generator".quote
  local ops = {}

  local function is_object(handle) return handle.object and model.alive(handle.record) end

  local function some_key()
    return one_of {"a", "b", "port/1", "port/2", "list", "hash", "zset", string.rep("k", 100)}
  end
  local function some_bytes() return one_of {"", "1", "12", "x\0y", string.rep("v", random(0, 300))} end

  function ops.new_object()
    local record = model.new_record(nil, false)
    record.release = format("is(0.0, tq.tq_obj_free(view('_p_tq_obj', a[%d])))", record.id)
    record.key_text, record.value, record.fields = some_key(), some_bytes(), {}
    local slot = model.free_slot()
    emit("s[%d] = tq_obj.new(%s, %s)", slot, quote(record.key_text), quote(record.value))
    emit("a[%d] = ptr(s[%d])", record.id, slot)
    local handle = model.new_handle(record, nil, "_p_tq_obj", true)
    handle.object = true
    model.put(slot, handle)
  end

  function ops.write_object()
    local slot, handle = model.pick(is_object)
    if not slot then return end
    local record = handle.record
    if chance(30) then
      record.value = chance(20) and nil or some_bytes()
      emit("s[%d].value = %s is(%s, s[%d].value)", slot, quote(record.value), quote(record.value), slot)
    elseif chance(30) then
      record.key_text = some_key()
      emit("s[%d].key = %s is(%s, s[%d].key)", slot, quote(record.key_text), quote(record.key_text), slot)
    else
      local tag = random(0, 5)
      local bytes = chance(20) and nil or some_bytes()
      emit("s[%d][%d] = %s is(%s, s[%d][%d])", slot, tag, quote(bytes), quote(bytes), slot, tag)
    end
  end

  function ops.read_object()
    local slot, handle = model.pick(is_object)
    if not slot then return end
    local record = handle.record
    if record.fields then
      emit("is(%s, s[%d].key) is(%s, s[%d].value)", quote(record.key_text), slot, quote(record.value), slot)
    else
      emit("is('string', type(s[%d].key)) s[%d]:fields() tostring(s[%d])", slot, slot, slot)
    end
  end

  function ops.disown_object()
    local slot, handle = model.pick(is_object)
    if not slot then return end
    emit("s[%d]:__disown() is(0, own(s[%d]))", slot, slot)
    model.give_up(handle)
  end

  function ops.destroy_object()
    local slot, handle = model.pick(function(handle) return handle.object end)
    if not slot then return end
    emit("getmetatable(s[%d]).__gc(s[%d])", slot, slot)
    if handle.own then
      handle.own = false
      model.kill(handle.record)
    end
  end

  -- Arguments that no command refuses. Any handle is taken as a key, and what is no live object is told from one.
  local function key_argument()
    if chance(5) then return "nil" end
    local slot = model.pick(chance(90) and is_object or nil)
    if slot and chance(70) then return format("s[%d]", slot) end
    return format("tq_obj.new(%s, %s)", quote(some_key()), quote(some_bytes()))
  end

  local function list_of(element, count)
    local list = {}
    for i = 1, count do list[i] = element() end
    return format("{%s}", concat(list, ", "))
  end

  local function member()
    return format("tq_obj.new(%s, %s)", quote(one_of {"zset", "zset", "a"}), quote(some_bytes()))
  end

  local arguments = {
    global = function() return chance(97) and "g" or "nil" end,
    int = function() return quote(one_of {0, 0, 0, 1, 2, -1, 5, 37, 38, 1000}) end,
    unsigned = function() return quote(one_of {0, 1, 2, 10, 1000, 4294967295}) end,
    size_t = function() return quote(one_of {0, 1, 2, 5, 4294967295}) end,
    double = function() return quote(random(-10, 10) / 2) end,
    key = key_argument,
    timeout = function() return "0.5" end,
    fields = function(length) return list_of(function() return tostring(random(0, 5)) end, length) end,
    scores = function(length) return list_of(function() return quote(random(-10, 10) / 2) end, length) end,
    members = function(length) return list_of(member, length) end,
    op = function(_, entry) return chance(50) and "nil" or format("tq.%s()", entry.class.name) end,
  }

  local callable, results = {}, {}
  for _, command in ipairs(catalog.commands) do
    local first = command.arguments[1]
    local takes_global = first and first.kind == "global" and #command.arguments > 2
    if takes_global and command.name ~= "scan" then
      callable[#callable + 1] = command
      if command.results[1].kind ~= "status" then results[#results + 1] = command end
    end
  end

  local function call_text(command)
    local texts, length = {}, random(0, 4)
    for i, entry in ipairs(command.arguments) do
      if i == 2 then
        texts[i] = one_of {"0", "0", "0", "1", "38"}
      else
        texts[i] = arguments[entry.kind](length, entry)
      end
    end
    return format("tq.%s(%s)", command.name, concat(texts, ", "))
  end

  local function class_of(command)
    local result = command.results[1]
    return result.kind == "object" and "tq_obj" or result.kind == "res" and result.class.name or nil
  end

  -- A call whose result is released at once: it leaves the model as it is.
  local function settled_call()
    local command = one_of(callable)
    emit("settle(%s, (%s))", quote(class_of(command)), call_text(command))
  end
  ops.settled_call = settled_call

  function ops.kept_call()
    local command = one_of(results)
    local class = class_of(command)
    local record = model.new_record(nil, false)
    local text = call_text(command)
    local slot = model.free_slot()
    local handle
    if class == "tq_obj" then
      record.release = format("is(0.0, tq.tq_obj_free(view('_p_tq_obj', a[%d])))", record.id)
      handle = model.new_handle(record, nil, "_p_tq_obj", false)
      handle.object = true
      emit("s[%d] = object(%d, %s)", slot, record.id, text)
    else
      local entry = catalog.class_by_name[class]
      record.release = format("settle(%q, view(%q, a[%d]))", class, entry.mangled, record.id)
      handle = model.new_handle(record, nil, entry.mangled, false)
      handle.result = class
      emit("s[%d] = noted(%d, %s)", slot, record.id, text)
    end
    model.wild[#model.wild + 1] = record
    model.put(slot, handle)
  end

  function ops.read_result()
    local slot, handle = model.pick(function(handle) return handle.result and model.alive(handle.record) end)
    if slot then emit("read_result(s[%d], %q)", slot, handle.result) end
  end

  function ops.cast()
    local casts = {}
    for _, command in ipairs(catalog.commands) do
      if command.cast then casts[#casts + 1] = command end
    end
    local slot = model.pick()
    if slot then emit("is(ptr(s[%d]), ptr(tq.%s(s[%d])))", slot, one_of(casts).name, slot) end
  end

  local function scan()
    local body = model.nested(function()
      for _ = 1, random(0, 3) do
        local choice = random(7)
        if choice == 1 then
          emit("collectgarbage('step')")
        elseif choice == 2 then
          emit(one_of {"is(-1.0, tq.tq_global_finish(g))", "is(0.0, tq.tq_global_run(g))"})
        elseif choice == 3 and model.depth() < 3 then
          scan()
        elseif choice == 4 then
          emit("settle(nil, tq.publish(g, 1, tq_obj.new('port/1', 'from a scan')))")
        elseif choice == 5 then
          emit("collectgarbage()")
        else
          settled_call()
        end
      end
    end)
    emit("kit_scan(%s, %s, %d, %d, function() %s end)", one_of {"0", "0", "1", "38"},
      quote(one_of {"*", "port/*", "a"}), random(0, 4), chance(15) and random(3) or 0, body)
  end
  ops.kit_scan = scan

  function ops.restart()
    if model.depth() == 0 then emit("restart()") end
  end

  model.add(ops, {
    call = 0, scan = 0, new_object = 15, write_object = 10, read_object = 8, disown_object = 1, destroy_object = 2,
    settled_call = 25, kept_call = 12, read_result = 8, kit_scan = 5, restart = 1, cast = 3,
  })
  model.at_end = "nothing_live()"
end
