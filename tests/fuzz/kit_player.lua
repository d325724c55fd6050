-- What the lines of a script use on the store of the host kit.
return function(env)
  local tq, tq_obj, probe = env.tq, require "tq_obj", require "kit_probe"
  local release_of = {tq_obj = "tq_obj_free"} -- by class name
  for _, command in ipairs(env.catalog.commands) do
    local class = command.name:find("_free$") and command.arguments[1].class
    if class then release_of[class.name] = command.name end
  end
  env.tq_obj = tq_obj

  local function is_float(value) env.is("float", math.type(value)) end

  -- Called for what is published; publishes itself, but not for ever.
  local depth, delivered = 0, 0
  local function deliver(message)
    delivered = delivered + 1
    env.is("string", type(message.key))
    if depth > 2 then return end
    depth = depth + 1
    if delivered % 3 == 0 then collectgarbage("step") end
    if delivered % 5 == 0 then is_float(tq.publish(env.g, 1, tq_obj.new("published", "again"))) end
    if delivered % 7 == 0 then
      is_float(tq.scan(env.g, 0, tq_obj.new("*"), 3, function() return delivered % 2 end, {}))
    end
    depth = depth - 1
  end

  local subscription

  local function connect()
    env.g = assert(tq.tq_global_init(nil, nil))
    env.is(0.0, tq.client_connect(env.g, 0))
    local record = tq.tq_mom_pubsub_msg_t()
    local number, subscriber = probe.subscribe(env.g, 1, "*", record, deliver)
    subscription = {number = number, subscriber = subscriber}
  end

  function env.finish()
    if not env.g then return end
    probe.unsubscribe(env.g, subscription.number, subscription.subscriber)
    env.is(0.0, tq.tq_global_finish(env.g))
    env.g = nil
  end

  function env.restart()
    env.finish()
    connect()
  end

  local start = env.start
  function env.start()
    env.finish()
    connect()
    env.lost = 0
    start()
  end

  -- The result of a call, its address noted under the number.
  function env.noted(number, handle)
    if type(handle) ~= "userdata" then error("fuzz: no result", 0) end
    env.is(0, env.own(handle))
    env.a[number] = env.ptr(handle)
    return handle
  end

  -- The same for an object that may not be there; another takes its place.
  function env.object(number, object, status)
    is_float(status)
    if object == nil then
      object = tq_obj.new("substitute", "value")
      object:__disown()
    end
    return env.noted(number, object)
  end

  local function read_object(object)
    if object ~= nil then
      assert(type(object.key) == "string")
      assert(object.value == nil or type(object.value) == "string")
      object:fields()
    end
  end

  -- Reads all that there is in a result.
  function env.read_result(result, class)
    for _, field in ipairs(env.catalog.class_by_name[class].fields) do
      local value = result[field.name]
      if field.kind == "object" then
        read_object(value)
      elseif field.kind == "objects" then
        for _, element in ipairs(value) do read_object(tq_obj.from(element)) end
      end
    end
  end

  -- Releases what a command returned; a number is checked.
  function env.settle(class, value)
    if class == nil then return is_float(value) end
    if value == nil then return env.is("tq_obj", class) end
    if class == "tq_obj" then read_object(value) else env.read_result(value, class) end
    env.is(0.0, tq[release_of[class]](value))
  end

  -- Scans; the callback may raise.
  function env.kit_scan(db, pattern, count, fails_at, body)
    local i = 0
    local ok, status = pcall(tq.scan, env.g, db, tq_obj.new(pattern), count, function(_, message, argument)
      i = i + 1
      env.is("argument", argument)
      local element = tq.convertPtrToScanAllMsg(message)
      env.is("string", type(element.key))
      if element.value ~= nil then env.is(element.vlen, #tq_obj.bytes(element.value, element.vlen) + 0.0) end
      if i > 6 then return 1 end
      body()
      if i == fails_at then error("boom", 0) end
    end, "argument")
    if ok then
      is_float(status)
    else
      env.is("boom", status)
      env.lost = env.lost + 1
    end
  end

  -- Once all is released and collected, nothing is left.
  function env.nothing_live()
    collectgarbage()
    collectgarbage()
    local results, objects = probe.live()
    env.is(0, results)
    env.is(0, objects)
  end
end
