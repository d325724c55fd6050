#include "hostkit/server_scan.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <thread>
#include <utility>

#include "hostkit/server_pattern.h"

namespace hostkit {
namespace {

// Beyond that many bytes a page leaves the values of its strings out.
constexpr std::int64_t kPageBytes = 1 << 20;
// Between two looks at a cluster whose slots move.
constexpr std::chrono::milliseconds kPause{100};
constexpr std::string_view kBeginning = "0";

}  // namespace

bool HashMemory::Place(std::uint64_t hash) {
  const std::size_t mask = table_.size() - 1;
  std::size_t place = hash & mask;
  while (table_[place] != 0 && table_[place] != hash) place = (place + 1) & mask;
  const std::uint64_t known = std::exchange(table_[place], hash);
  return known == 0;
}

bool HashMemory::Insert(std::uint64_t hash) {
  if (used_ * 2 >= table_.size()) {
    std::vector<std::uint64_t> larger(std::max<std::size_t>(table_.size() * 2, 64));
    larger.swap(table_);
    for (const std::uint64_t known : larger) {
      if (known != 0) Place(known);
    }
  }
  const bool fresh = Place(hash != 0 ? hash : 1);
  used_ += fresh ? 1 : 0;
  return fresh;
}

void HashMemory::Clear() {
  std::fill(table_.begin(), table_.end(), 0);
  used_ = 0;
}

ServerScan::ServerScan(Router* router, const ServerOptions& options, const Request& pattern, Bring bring, Bounds bounds)
    : router_(router),
      options_(options),
      db_(pattern.db),
      limit_(pattern.limit.count() != 0 ? pattern.limit : options.timeout),
      pattern_(ServerPattern(options.prefix, pattern.db, pattern.name)),
      key_offset_(options.prefix.size() + std::to_string(pattern.db).size() + 1),
      bring_(bring),
      bounds_(bounds) {}

CallEnd ServerScan::NewEnd() const { return CallEnd(limit_); }

Status ServerScan::Start() {
  if (Status status = PlanNodes(); !status.ok()) return status;
  std::int64_t keys = 0;
  for (const ServerAddress& node : nodes_) {
    ServerCommand size(Effect::kReads, "DBSIZE");
    ReplyPtr reply;
    std::int64_t count = 0;
    if (Status status = router_->RunOn(node, &size, NewEnd(), &reply); !status.ok()) return status;
    if (!Take(*reply, &count)) return UnexpectedForm(false);
    keys += count;
  }
  parts_ = static_cast<std::uint64_t>(std::max<std::int64_t>(keys - 1, 0) / bounds_.remembered + 1);
  return {};
}

Status ServerScan::PlanNodes() {
  nodes_.clear();
  if (router_->is_cluster()) {
    if (Status status = router_->Refresh(NewEnd()); !status.ok()) return status;
  }
  for (const Shard& shard : router_->shards()) {
    const bool left = std::any_of(shard.slots.begin(), shard.slots.end(), [&](const SlotRange& range) {
      for (int slot = range.first; slot <= range.last; ++slot) {
        if (!done_[static_cast<std::size_t>(slot)]) return true;
      }
      return false;
    });
    if (left || (!router_->is_cluster() && done_.none())) nodes_.push_back(shard.master);
  }
  return {};
}

Status ServerScan::FindOpenSlots(const ServerAddress& node, std::bitset<kSlotCount>* open) {
  ServerCommand nodes(Effect::kReads, "CLUSTER");
  nodes.Add("NODES");
  ReplyPtr reply;
  std::string lines;
  if (Status status = router_->RunOn(node, &nodes, NewEnd(), &reply); !status.ok()) return status;
  const bool text = Take(*reply, &lines);
  // Its own line ends in the slots, of which those on the move look like [93->-id] or [93-<-id].
  const std::size_t own = lines.find("myself");
  if (!text || own == std::string::npos) return UnexpectedForm(false);
  const std::string line = lines.substr(own, lines.find('\n', own) - own);
  for (std::size_t at = line.find('['); at != std::string::npos; at = line.find('[', at + 1)) {
    const int slot = std::atoi(line.c_str() + at + 1);
    if (slot >= 0 && slot < kSlotCount) open->set(static_cast<std::size_t>(slot));
  }
  return {};
}

Status ServerScan::FinishNode() {
  const ServerAddress node = nodes_.back();
  nodes_.pop_back();
  walking_ = false;
  if (!router_->is_cluster()) {
    done_.set();
    return {};
  }
  std::bitset<kSlotCount> open;
  if (Status status = FindOpenSlots(node, &open); !status.ok()) return status;
  if (Status status = router_->Refresh(NewEnd()); !status.ok()) return status;
  for (int slot = 0; slot < kSlotCount; ++slot) {
    const auto index = static_cast<std::size_t>(slot);
    const ServerAddress* owner = router_->slots().OwnerOf(slot);
    if (node_slots_[index] && !open[index] && owner != nullptr && *owner == node) done_.set(index);
  }
  return {};
}

bool ServerScan::TakeKey(const redisReply& key, const redisReply* value) {
  if (key.type != REDIS_REPLY_STRING || key.len < key_offset_) return false;
  const std::uint64_t hash = std::hash<std::string_view>()(TextOf(key));
  if ((hash >> 32) % parts_ != part_ || !seen_.Insert(hash)) return true;
  Pending& fresh = pending_.emplace_back();
  fresh.element.name = TextOf(key).substr(key_offset_);
  fresh.has_value = value == nullptr || value->type == REDIS_REPLY_STRING;
  if (value != nullptr && fresh.has_value) fresh.element.value = TextOf(*value);
  return true;
}

Status ServerScan::ReadPage() {
  const ServerAddress& node = nodes_.back();
  if (!std::exchange(walking_, true)) {
    cursor_ = kBeginning;
    node_slots_.reset();
    for (int slot = 0; router_->is_cluster() && slot < kSlotCount; ++slot) {
      const ServerAddress* owner = router_->slots().OwnerOf(slot);
      if (owner != nullptr && *owner == node) node_slots_.set(static_cast<std::size_t>(slot));
    }
  }
  ReplyPtr reply;
  std::string next;
  bool good = true;
  if (bring_ == Bring::kNames) {
    ServerCommand scan(Effect::kReads, "SCAN");
    scan.Add(cursor_).Add("MATCH").Add(pattern_).Add("COUNT").Add(bounds_.page);
    if (Status status = router_->RunOn(node, &scan, NewEnd(), &reply); !status.ok()) return status;
    good = reply->type == REDIS_REPLY_ARRAY && reply->elements == 2 && Take(*reply->element[0], &next) &&
           reply->element[1]->type == REDIS_REPLY_ARRAY;
    for (std::size_t index = 0; good && index < reply->element[1]->elements; ++index) {
      good = TakeKey(*reply->element[1]->element[index], nullptr);
    }
  } else {
    ServerCommand scan(Effect::kReads, Script::kScan, 0);
    scan.Add(cursor_).Add(pattern_).Add(bounds_.page).Add(kPageBytes);
    if (Status status = router_->RunOn(node, &scan, NewEnd(), &reply); !status.ok()) return status;
    good = reply->type == REDIS_REPLY_ARRAY && reply->elements % 2 == 1 && Take(*reply->element[0], &next);
    for (std::size_t index = 1; good && index < reply->elements; index += 2) {
      good = TakeKey(*reply->element[index], reply->element[index + 1]);
    }
  }
  if (!good) return UnexpectedForm(false);
  cursor_ = std::move(next);
  return {};
}

Status ServerScan::Advance(bool* over) {
  if (nodes_.empty()) {
    if (Status status = PlanNodes(); !status.ok()) return status;
    *over = nodes_.empty() && done_.all();
    if (*over) return {};
    if (nodes_.empty()) return {StatusCode::kUnavailable, "no node of the cluster has some of its slots"};
    if (done_.any()) {
      // Slots are on the move, or were.
      if (++replans_ * kPause > limit_) return {StatusCode::kUnavailable, "the slots keep moving"};
      std::this_thread::sleep_for(kPause);
    }
  }
  if (Status status = ReadPage(); !status.ok()) return status;
  return cursor_ == kBeginning ? FinishNode() : Status();
}

Status ServerScan::Next(std::size_t most, std::vector<Element>* batch) {
  const CallEnd end = NewEnd();
  while (pending_.empty()) {
    bool over = false;
    if (Status status = Advance(&over); !status.ok()) {
      // A lost master's replica takes over, and is walked from its beginning.
      walking_ = false;
      nodes_.clear();
      if (!router_->is_cluster() || status.code() != StatusCode::kUnavailable || end.Passed()) return status;
      std::this_thread::sleep_for(kPause);
    }
    if (!over) continue;
    if (part_ + 1 == parts_) return {};
    ++part_;
    replans_ = 0;
    seen_.Clear();
    done_.reset();
  }
  for (; most != 0 && !pending_.empty(); --most) {
    Pending& first = pending_.front();
    if (!first.has_value) {
      if (Status status = ReadValue(&first.element); !status.ok()) return status;
    }
    batch->push_back(std::move(first.element));
    pending_.pop_front();
  }
  return {};
}

Status ServerScan::ReadValue(Element* element) {
  ServerCommand read(Effect::kReads, Script::kElement, 1);
  read.AddKey(options_.prefix, db_, element->name);
  ReplyPtr reply;
  if (Status status = router_->Run(&read, NewEnd(), &reply); !status.ok()) return status;
  if (reply->type == REDIS_REPLY_STRING) element->value = TextOf(*reply);
  return {};
}

}  // namespace hostkit
