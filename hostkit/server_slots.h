// Which node of a cluster has which keys.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "hostkit/server_reply.h"
#include "hostkit/server_url.h"

namespace hostkit {

inline constexpr int kSlotCount = 16384;

// The slot of a key: of the part between its first '{' and the next '}', if there is something, else of the whole.
int SlotOf(std::string_view key);

struct SlotRange {
  int first;
  int last;
};

struct Shard {
  ServerAddress master;
  std::vector<ServerAddress> replicas;
  std::vector<SlotRange> slots;
};

class SlotMap {
 public:
  SlotMap() { owners_.fill(kNobody); }

  // Takes the reply to CLUSTER SLOTS in. A node that does not know its own host is at `asked`, the address that the
  // reply came from. False if it is no such reply; the map is then as before.
  bool Load(const redisReply& reply, const ServerAddress& asked);
  // What a redirection says of one slot.
  void Assign(int slot, const ServerAddress& master);

  // Null: nobody has the slot.
  const ServerAddress* OwnerOf(int slot) const;
  // Those that have slots, in the order of their slots.
  const std::vector<Shard>& shards() const { return shards_; }

 private:
  static constexpr std::uint16_t kNobody = UINT16_MAX;

  std::vector<Shard> shards_;
  std::array<std::uint16_t, kSlotCount> owners_;
};

}  // namespace hostkit
