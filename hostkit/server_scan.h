// A scan of all keys of a database, over all masters.
//
// A server hands out a key twice when its table shrinks meanwhile, and a cluster when a slot moves. So the scan
// remembers what it has handed out; to do that in bounded memory, it walks a large store several times, each time for
// another part of the keys. What a slot's move may have hidden is walked again.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/engine.h"
#include "hostkit/server_router.h"

namespace hostkit {

// A set of 64-bit hashes.
class HashMemory {
 public:
  // Remembers a hash; false if it is there already. Throws std::bad_alloc.
  bool Insert(std::uint64_t hash);
  void Clear();

 private:
  bool Place(std::uint64_t hash);

  std::vector<std::uint64_t> table_;  // 0 is a free place
  std::size_t used_ = 0;
};

class ServerScan : public Cursor {
 public:
  // How many keys it remembers, and with that walks for at once, and how many it asks a node for at a time.
  struct Bounds {
    std::int64_t remembered = 1 << 20;
    std::int64_t page = 1000;
  };

  // The router and the options must outlive the scan. Call Start first.
  ServerScan(Router* router, const ServerOptions& options, const Request& pattern, Bring bring, Bounds bounds);

  Status Start();
  Status Next(std::size_t most, std::vector<Element>* batch) override;

 private:
  CallEnd NewEnd() const;
  // Finds the nodes that have slots which are not done.
  Status PlanNodes();
  Status ReadPage();
  // What a page says of a key; value is null if it was not asked for. False if the key is none of this database's.
  bool TakeKey(const redisReply& key, const redisReply* value);
  // Reads the values that a page had no room for.
  Status ReadValue(Element* element);
  // One step: a page, and what there is to do before and after it. *over: all slots of the part are done.
  Status Advance(bool* over);
  // The slots that are on their way to the node or from it.
  Status FindOpenSlots(const ServerAddress& node, std::bitset<kSlotCount>* open);
  // Notes which slots a walked node has had from its walk's beginning to its end.
  Status FinishNode();

  Router* const router_;
  const ServerOptions& options_;
  const int db_;
  const std::chrono::milliseconds limit_;
  const std::string pattern_;
  const std::size_t key_offset_;  // where a key's name begins
  const Bring bring_;
  const Bounds bounds_;

  std::uint64_t parts_ = 1;
  std::uint64_t part_ = 0;
  HashMemory seen_;
  std::bitset<kSlotCount> done_;  // of this part
  std::vector<ServerAddress> nodes_;
  std::bitset<kSlotCount> node_slots_;  // of the node that is being walked
  bool walking_ = false;
  int replans_ = 0;  // walks of this part that were for slots on the move
  std::string cursor_;
  struct Pending {
    Element element;
    bool has_value;
  };
  std::deque<Pending> pending_;
};

}  // namespace hostkit
