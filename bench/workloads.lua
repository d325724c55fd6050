-- What is measured, on a module m. prepare() returns run; run(n) does n operations. One operation is one turn of the
-- loop in run, less an empty turn, which the row "empty loop" measures. The collector is stopped meanwhile; in a row
-- with `gc`, two full collections after the n operations belong to them: the first finalises what they leave, the second
-- frees it. What the collections cost on an idle heap is in the run of n and in that of 2n, and cancels. `target` is
-- the number of x86-64 instructions that an operation may take, `count` the n at which instructions are counted.
return function(m)
  local g, key = m.tq_global_t(), m.psetex_op_t()

  local function integers(count)
    local list = {}
    for i = 1, count do list[i] = i end
    return list
  end

  local function pairs_of(count)
    local scores, members = {}, {}
    for i = 1, count do scores[i], members[i] = i + 0.5, key end
    return scores, members
  end

  local function hmset_of(count)
    local hmset, fields = m.hmset, integers(count)
    return function(n)
      for _ = 1, n do hmset(g, 0, key, fields) end
    end
  end

  local function zadd_of(count)
    local zadd, scores, members = m.zadd, pairs_of(count)
    return function(n)
      for _ = 1, n do zadd(g, 0, scores, members) end
    end
  end

  local function message()
    local record = m.tq_mom_pubsub_msg_t()
    record.field = "field-name"
    return record
  end

  return {
    {name = "empty loop", count = 1000, prepare = function()
      return function(n)
        for _ = 1, n do end
      end
    end},
    {name = "status command", target = 363, count = 1000, prepare = function()
      local set = m.set
      return function(n)
        for _ = 1, n do set(g, 0, key) end
      end
    end},
    {name = "command returning a handle", target = 1150, count = 1000, gc = true, prepare = function()
      local get_ext = m.get_ext
      return function(n)
        for _ = 1, n do get_ext(g, 0, nil, key) end
      end
    end},
    {name = "field read", target = 617, count = 1000, prepare = function()
      return function(n)
        local value
        for _ = 1, n do value = key.milseconds end
        return value
      end
    end},
    {name = "field write", target = 682, count = 1000, prepare = function()
      return function(n)
        for _ = 1, n do key.milseconds = 5 end
      end
    end},
    {name = "unknown field read", target = 981, count = 1000, prepare = function()
      return function(n)
        local value
        for _ = 1, n do value = key.no_such_field end
        return value
      end
    end},
    {name = "construct and collect", target = 1371, count = 1000, gc = true, prepare = function()
      local psetex_op_t = m.psetex_op_t
      return function(n)
        for _ = 1, n do psetex_op_t() end
      end
    end},
    {name = "hmset of 10 integers", target = 1721, count = 1000, prepare = function() return hmset_of(10) end},
    {name = "hmset of 10000 integers", target = 1026000, count = 2, prepare = function() return hmset_of(10000) end},
    {name = "zadd of 10 pairs", target = 2632, count = 1000, prepare = function() return zadd_of(10) end},
    {name = "zadd of 10000 pairs", target = 1650000, count = 2, prepare = function() return zadd_of(10000) end},
    {name = "scan message", target = 2250, count = 1000, gc = true, prepare = function()
      local scan = m.scan
      local function on_message() return 0 end
      return function(n) scan(g, 0, key, n, on_message, nil) end
    end},
    {name = "value array of 100 read", target = 70400, count = 10, gc = true, prepare = function()
      local range = m.zrange(g, 0, key, 0, -1)
      return function(n)
        local value
        for _ = 1, n do value = range.value end
        return value
      end
    end},
    {name = "string field write", target = 793, count = 1000, prepare = function()
      local record = message()
      return function(n)
        for _ = 1, n do record.field = "field-name" end
      end
    end},
    {name = "string field read", target = 690, count = 1000, prepare = function()
      local record = message()
      return function(n)
        local value
        for _ = 1, n do value = record.field end
        return value
      end
    end},
    {name = "argument error under pcall", target = 3600, count = 1000, gc = true, prepare = function()
      local pcall, set = pcall, m.set
      local function bad_call() set("text", 0, key) end
      return function(n)
        for _ = 1, n do pcall(bad_call) end
      end
    end},
  }
end
