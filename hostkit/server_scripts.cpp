#include "hostkit/server_scripts.h"

#include <array>
#include <bit>
#include <cstdint>

namespace hostkit {
namespace {

// Goes before every script about hashes and expiry.
constexpr std::string_view kPrelude = R"lua(
local key = KEYS[1]

local function now()
  local time = redis.call('time')
  return time[1] * 1000 + math.floor(time[2] / 1000)
end

-- What the key itself was told, whatever its fields made of it. Nothing: it does not expire.
local function own_deadline(is_hash)
  local kept = is_hash and redis.call('hget', key, ':expires')
  if kept then return tonumber(kept) end
  local deadline = redis.call('pexpiretime', key)
  return deadline >= 0 and deadline or nil
end

local function set_deadline(deadline)
  if deadline then
    redis.call('pexpireat', key, string.format('%.0f', deadline))
  else
    redis.call('persist', key)
  end
end

-- Drops the fields that are due and lets the key go with the last field that is not.
local function settle(own)
  local all, time = redis.call('hgetall', key), now()
  local deadlines, last, lasting = {}, nil, false
  for i = 1, #all, 2 do
    local tag = all[i]:match('^(%d+):expires$')
    if tag then deadlines[tag] = tonumber(all[i + 1]) end
  end
  for i = 1, #all, 2 do
    local name = all[i]
    if not name:find(':expires$') then
      local deadline = deadlines[name]
      if not deadline then
        lasting = true
      elseif deadline <= time then
        redis.call('hdel', key, name, name .. ':expires')
      else
        last = math.max(last or deadline, deadline)
      end
    end
  end
  if lasting or last and own and own <= last then
    redis.call('hdel', key, ':expires')
    set_deadline(own)
  elseif last then
    redis.call('hset', key, ':expires', own and string.format('%.0f', own) or 'never')
    set_deadline(last)
  else
    redis.call('del', key)
  end
end

-- A field that lasts has been written: the key goes by what it was told.
local function release()
  local kept = redis.call('hget', key, ':expires')
  if kept then
    redis.call('hdel', key, ':expires')
    set_deadline(tonumber(kept))
  end
end

local function is_hash() return redis.call('type', key).ok == 'hash' end

-- Calls a command in pieces that the stack has room for.
local function call_all(command, arguments)
  for first = 1, #arguments, 1000 do
    redis.call(command, key, unpack(arguments, first, math.min(first + 999, #arguments)))
  end
end
)lua";

struct ScriptRow {
  bool prelude;
  std::string_view text;
};

constexpr ScriptRow kScripts[] = {
    {true, R"lua(
if redis.call('exists', key) == 0 then return 0 end
local deadline = now() + ARGV[1]
if is_hash() then
  set_deadline(deadline)
  settle(deadline)
else
  set_deadline(deadline)
end
return 1)lua"},

    {true, R"lua(
if redis.call('exists', key) == 0 then return 0 end
local hash = is_hash()
local own, within = own_deadline(hash), tonumber(ARGV[1])
if not own or within > 0 and own - now() > within then return 0 end
redis.call('persist', key)
if hash then settle(nil) end
return 1)lua"},

    {true, R"lua(
local own = own_deadline(is_hash())
return {redis.call('type', key).ok, own and math.max(own - now(), 0) or -1})lua"},

    {false, R"lua(
local value = redis.call(ARGV[1], KEYS[1])
if not value then return {} end
return {value, redis.call('llen', KEYS[1])})lua"},

    {true, R"lua(
local deadlines = {}
for i = 1, #ARGV, 2 do deadlines[#deadlines + 1] = ARGV[i] .. ':expires' end
call_all('hset', ARGV)
call_all('hdel', deadlines)
release()
return redis.status_reply('OK'))lua"},

    {true, R"lua(
local time, written = now(), 0
for i = 1, #ARGV, 2 do
  local tag = ARGV[i]
  local deadline = redis.call('hget', key, tag .. ':expires')
  if deadline and tonumber(deadline) <= time or redis.call('hexists', key, tag) == 0 then
    redis.call('hset', key, tag, ARGV[i + 1])
    redis.call('hdel', key, tag .. ':expires')
    written = written + 1
  end
end
if written > 0 then release() end
return written)lua"},

    {true, R"lua(
if redis.call('hlen', key) == 0 then return false end
local time, found = now(), {}
for first = 1, #ARGV, 1000 do
  local names = {}
  for i = first, math.min(first + 999, #ARGV) do
    names[#names + 1] = ARGV[i]
    names[#names + 1] = ARGV[i] .. ':expires'
  end
  local values = redis.call('hmget', key, unpack(names))
  for i = 1, #names, 2 do
    local deadline = values[i + 1]
    if values[i] and not (deadline and tonumber(deadline) <= time) then
      found[#found + 1] = names[i]
      found[#found + 1] = values[i]
    end
  end
end
return found)lua"},

    {true, R"lua(
local all = redis.call('hgetall', key)
if #all == 0 then return false end
local time, dead, found = now(), {}, {}
for i = 1, #all, 2 do
  local tag = all[i]:match('^(%d+):expires$')
  if tag and tonumber(all[i + 1]) <= time then dead[tag] = true end
end
for i = 1, #all, 2 do
  if all[i]:find('^%d+$') and not dead[all[i]] then
    found[#found + 1] = all[i]
    found[#found + 1] = all[i + 1]
  end
end
return found)lua"},

    {true, R"lua(
if redis.call('hlen', key) == 0 then return 0 end
local own, time, count, seen = own_deadline(true), now(), 0, {}
local milliseconds = tonumber(ARGV[1])
for i = 2, #ARGV do
  local tag = ARGV[i]
  local deadline = redis.call('hget', key, tag .. ':expires')
  if not seen[tag] and redis.call('hexists', key, tag) == 1 and not (deadline and tonumber(deadline) <= time) then
    seen[tag] = true
    count = count + 1
    redis.call('hset', key, tag .. ':expires', string.format('%.0f', time + milliseconds))
  end
end
if count > 0 then settle(own) end
return count)lua"},

    {true, R"lua(
local all, time, found = redis.call('hgetall', key), now(), {}
for i = 1, #all, 2 do
  local tag = all[i]:match('^(%d+):expires$')
  if tag and tonumber(all[i + 1]) > time then
    found[#found + 1] = tag
    found[#found + 1] = tonumber(all[i + 1]) - time
  end
end
return found)lua"},

    {false, R"lua(
local kind = redis.call('type', KEYS[1]).ok
if kind == 'none' then return false end
return kind == 'string' and redis.call('get', KEYS[1]) or '')lua"},

    {false, R"lua(
local page = redis.call('scan', ARGV[1], 'match', ARGV[2], 'count', ARGV[3])
local found, left = {page[1]}, tonumber(ARGV[4])
for _, key in ipairs(page[2]) do
  -- A key that is arriving with its slot cannot be read here yet.
  local kind = redis.pcall('type', key).ok
  if kind ~= 'none' then
    local value = kind and '' or 0
    if kind == 'string' then
      left = left - redis.call('strlen', key)
      value = left >= 0 and redis.call('get', key) or 0
    end
    found[#found + 1] = key
    found[#found + 1] = value
  end
end
return found)lua"},

    {false, R"lua(
local page = redis.call('scan', ARGV[1], 'match', ARGV[2], 'count', ARGV[3])
local counts = {string = 0, hash = 0, list = 0, set = 0, zset = 0, expiring = 0}
for _, key in ipairs(page[2]) do
  local kind = redis.pcall('type', key).ok or 'arriving'
  if counts[kind] then
    counts[kind] = counts[kind] + 1
    local own = kind == 'hash' and redis.call('hget', key, ':expires')
    if own and own ~= 'never' or not own and redis.call('pttl', key) >= 0 then counts.expiring = counts.expiring + 1 end
  end
end
return {page[1], counts.string, counts.hash, counts.list, counts.set, counts.zset, counts.expiring})lua"},
};

constexpr std::size_t kScriptCount = std::size(kScripts);
static_assert(kScriptCount == static_cast<std::size_t>(Script::kSummarize) + 1);

struct Named {
  std::string text;
  std::string digest;
};

const Named& NamedOf(Script script) {
  static const auto all = [] {
    std::array<Named, kScriptCount> made;
    for (std::size_t index = 0; index < kScriptCount; ++index) {
      made[index].text = std::string(kScripts[index].prelude ? kPrelude : "") + std::string(kScripts[index].text);
      made[index].digest = Sha1(made[index].text);
    }
    return made;
  }();
  return all[static_cast<std::size_t>(script)];
}

}  // namespace

std::string_view TextOf(Script script) { return NamedOf(script).text; }
std::string_view DigestOf(Script script) { return NamedOf(script).digest; }

std::string Sha1(std::string_view text) {
  std::string padded(text);
  padded += '\x80';
  while (padded.size() % 64 != 56) padded += '\0';
  for (int shift = 56; shift >= 0; shift -= 8) {
    padded += static_cast<char>(static_cast<std::uint64_t>(text.size()) * 8 >> shift & 0xFFU);
  }
  std::array<std::uint32_t, 5> hash = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
  for (std::size_t block = 0; block < padded.size(); block += 64) {
    std::array<std::uint32_t, 80> words = {};
    for (std::size_t byte = 0; byte < 64; ++byte) {
      words[byte / 4] = words[byte / 4] << 8 | static_cast<unsigned char>(padded[block + byte]);
    }
    for (std::size_t i = 16; i < 80; ++i) {
      words[i] = std::rotl(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
    }
    auto [a, b, c, d, e] = hash;
    for (std::size_t i = 0; i < 80; ++i) {
      const auto [mixed, constant] = i < 20   ? std::pair((b & c) | (~b & d), 0x5A827999U)
                                     : i < 40 ? std::pair(b ^ c ^ d, 0x6ED9EBA1U)
                                     : i < 60 ? std::pair((b & c) | (b & d) | (c & d), 0x8F1BBCDCU)
                                              : std::pair(b ^ c ^ d, 0xCA62C1D6U);
      const std::uint32_t next = std::rotl(a, 5) + mixed + e + constant + words[i];
      e = d;
      d = c;
      c = std::rotl(b, 30);
      b = a;
      a = next;
    }
    hash = {hash[0] + a, hash[1] + b, hash[2] + c, hash[3] + d, hash[4] + e};
  }
  std::string digest;
  for (const std::uint32_t word : hash) {
    for (int shift = 28; shift >= 0; shift -= 4) digest += "0123456789abcdef"[word >> shift & 0xFU];
  }
  return digest;
}

}  // namespace hostkit
