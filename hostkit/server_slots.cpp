#include "hostkit/server_slots.h"

#include <algorithm>
#include <cstddef>

namespace hostkit {
namespace {

// CRC-16/XMODEM, by which a cluster spreads keys.
constexpr std::array<std::uint16_t, 256> MakeCrcTable() {
  std::array<std::uint16_t, 256> table = {};
  for (unsigned int byte = 0; byte < table.size(); ++byte) {
    unsigned int crc = byte << 8;
    for (int bit = 0; bit < 8; ++bit) crc = (crc << 1) ^ ((crc & 0x8000U) != 0 ? 0x1021U : 0U);
    table[byte] = static_cast<std::uint16_t>(crc);
  }
  return table;
}

constexpr auto kCrcTable = MakeCrcTable();

bool TakeNode(const redisReply& reply, const ServerAddress& asked, ServerAddress* node) {
  if (reply.type != REDIS_REPLY_ARRAY || reply.elements < 2) return false;
  const redisReply& host = *reply.element[0];
  const redisReply& port = *reply.element[1];
  if (port.type != REDIS_REPLY_INTEGER || port.integer <= 0 || port.integer > UINT16_MAX) return false;
  if (host.type != REDIS_REPLY_STRING && host.type != REDIS_REPLY_NIL) return false;
  const std::string_view name = host.type == REDIS_REPLY_STRING ? TextOf(host) : std::string_view();
  *node = {name.empty() || name == "?" ? asked.host : std::string(name), static_cast<int>(port.integer)};
  return true;
}

}  // namespace

int SlotOf(std::string_view key) {
  if (const std::size_t open = key.find('{'); open != std::string_view::npos) {
    const std::size_t close = key.find('}', open + 1);
    if (close != std::string_view::npos && close != open + 1) key = key.substr(open + 1, close - open - 1);
  }
  unsigned int crc = 0;
  for (const char byte : key) crc = (crc << 8) ^ kCrcTable[((crc >> 8) ^ static_cast<unsigned char>(byte)) & 0xFFU];
  return static_cast<int>(crc % kSlotCount);
}

bool SlotMap::Load(const redisReply& reply, const ServerAddress& asked) {
  if (reply.type != REDIS_REPLY_ARRAY) return false;
  SlotMap fresh;
  for (std::size_t index = 0; index < reply.elements; ++index) {
    const redisReply& range = *reply.element[index];
    if (range.type != REDIS_REPLY_ARRAY || range.elements < 3) return false;
    const redisReply& first = *range.element[0];
    const redisReply& last = *range.element[1];
    if (first.type != REDIS_REPLY_INTEGER || last.type != REDIS_REPLY_INTEGER) return false;
    if (first.integer < 0 || last.integer < first.integer || last.integer >= kSlotCount) return false;
    Shard shard;
    if (!TakeNode(*range.element[2], asked, &shard.master)) return false;
    for (std::size_t node = 3; node < range.elements; ++node) {
      if (!TakeNode(*range.element[node], asked, &shard.replicas.emplace_back())) return false;
    }
    const SlotRange slots = {static_cast<int>(first.integer), static_cast<int>(last.integer)};
    for (int slot = slots.first; slot <= slots.last; ++slot) fresh.Assign(slot, shard.master);
    Shard& owner = fresh.shards_[fresh.owners_[static_cast<std::size_t>(slots.first)]];
    owner.replicas = std::move(shard.replicas);
    owner.slots.push_back(slots);
  }
  *this = std::move(fresh);
  return true;
}

void SlotMap::Assign(int slot, const ServerAddress& master) {
  auto known = std::find_if(shards_.begin(), shards_.end(), [&](const Shard& shard) { return shard.master == master; });
  if (known == shards_.end()) known = shards_.insert(shards_.end(), Shard{master, {}, {}});
  owners_[static_cast<std::size_t>(slot)] = static_cast<std::uint16_t>(known - shards_.begin());
}

const ServerAddress* SlotMap::OwnerOf(int slot) const {
  const std::uint16_t owner = owners_[static_cast<std::size_t>(slot)];
  return owner != kNobody ? &shards_[owner].master : nullptr;
}

}  // namespace hostkit
