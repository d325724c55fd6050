#include "hostkit/server_engine.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "hostkit/server_connection.h"
#include "hostkit/server_messages.h"
#include "hostkit/server_pattern.h"
#include "hostkit/server_router.h"
#include "hostkit/server_scan.h"

namespace hostkit {
namespace {

constexpr std::chrono::milliseconds kSavePoll{20};
constexpr std::int64_t kSummaryPage = 1000;

bool ClusterByEnvironment() {
  const char* value = std::getenv("TQ_MOM_CLUSTER");
  return value != nullptr && *value != '\0' && std::string_view(value) != "0";
}

class ServerEngine : public Engine {
 public:
  explicit ServerEngine(ServerOptions options)
      : options_(std::move(options)),
        router_(
            options_, [this](const ServerAddress& node) { return std::make_unique<Connection>(node, options_); },
            [](std::chrono::microseconds time) { std::this_thread::sleep_for(time); }),
        messages_(&router_, options_) {}

  bool Supports(Feature feature) const override { return feature == Feature::kMessagesByPoll; }

  Status Connect(bool cluster, TimeLimit limit) override {
    return router_.Connect(cluster || ClusterByEnvironment(),
                           CallEnd(limit.count() != 0 ? limit : options_.connect_timeout));
  }

  Status Save(TimeLimit limit) override;
  Status Summarize(const Request& request, DatabaseSummary* summary) override;
  Status Describe(TimeLimit limit, std::string* lines) override;

  Status FreezeClock() override { return NoClock(); }
  Status AdvanceClock(std::int64_t /*milliseconds*/) override { return NoClock(); }
  Status ThawClock() override { return NoClock(); }

  Status Delete(const Request& request, bool* deleted) override {
    return Call(request, Writing("DEL", request), deleted);
  }
  Status Exists(const Request& request, bool* exists) override {
    return Call(request, Reading("EXISTS", request), exists);
  }
  Status Inspect(const Request& request, KeyState* state) override;
  Status Expire(const Request& request, std::uint32_t milliseconds, bool* exists) override {
    if (milliseconds == 0) return Delete(request, exists);
    return Call(request, Writing(Script::kExpire, request).Add(std::int64_t{milliseconds}), exists);
  }
  Status Persist(const Request& request, std::uint32_t within, bool* persisted) override {
    return Call(request, Writing(Script::kPersist, request).Add(std::int64_t{within}), persisted);
  }

  Status Get(const Request& request, std::optional<std::string>* value) override {
    return Call(request, Reading("GET", request), value);
  }
  Status Set(const Request& request, std::string_view value,
             std::optional<std::uint32_t> expire_milliseconds) override {
    ServerCommand command = Writing("SET", request);
    command.Add(value);
    if (expire_milliseconds) command.Add("PX").Add(std::int64_t{*expire_milliseconds});
    return Call(request, command, nullptr);
  }
  Status SetIfAbsent(const Request& request, std::string_view value, bool* stored) override {
    return Call(request, Writing("SETNX", request).Add(value), stored);
  }
  Status Increment(const Request& request, std::int64_t* value) override {
    Status status = Call(request, Writing("INCR", request), value);
    if (status.code() == StatusCode::kFailed) *value = std::numeric_limits<std::int64_t>::max();
    return status;
  }

  Status HashSet(const Request& request, std::span<const FieldView> fields) override {
    return Call(request, AddFields(Writing(Script::kHashSet, request), fields), nullptr);
  }
  Status HashSetIfAbsent(const Request& request, std::span<const FieldView> fields, std::int64_t* written) override {
    return Call(request, AddFields(Writing(Script::kHashSetIfAbsent, request), fields), written);
  }
  Status HashGet(const Request& request, std::span<const FieldTag> tags, HashContents* hash) override {
    return Call(request, AddTags(Reading(Script::kHashGet, request), tags), hash);
  }
  Status HashGetAll(const Request& request, HashContents* hash) override {
    return Call(request, Reading(Script::kHashGetAll, request), hash);
  }
  Status HashExpire(const Request& request, std::span<const FieldTag> tags, std::uint32_t milliseconds,
                    std::int64_t* count) override {
    return Call(request, AddTags(Writing(Script::kHashExpire, request).Add(std::int64_t{milliseconds}), tags), count);
  }
  Status HashRemaining(const Request& request, std::vector<FieldRemaining>* fields) override {
    return Call(request, Reading(Script::kHashRemaining, request), fields);
  }

  Status ListPush(const Request& request, End end, std::string_view value, std::int64_t* length) override {
    return Call(request, Writing(end == End::kHead ? "LPUSH" : "RPUSH", request).Add(value), length);
  }
  Status ListPop(const Request& request, End end, std::optional<std::string>* value, std::int64_t* left) override;
  Status ListLength(const Request& request, std::int64_t* length) override {
    return Call(request, Reading("LLEN", request), length);
  }
  Status ListRange(const Request& request, std::int64_t start, std::int64_t stop,
                   std::vector<std::string>* values) override {
    return Call(request, Reading("LRANGE", request).Add(start).Add(stop), values);
  }
  Status ListInsert(const Request& request, std::string_view pivot, Where where, std::string_view value,
                    std::int64_t* length) override {
    ServerCommand command = Writing("LINSERT", request);
    command.Add(where == Where::kBefore ? "BEFORE" : "AFTER").Add(pivot).Add(value);
    Status status = Call(request, command, length);
    if (status.ok() && *length < 0) return {StatusCode::kFailed, "the list has no such element"};
    return status;
  }
  Status ListSet(const Request& request, std::int64_t position, std::string_view value) override {
    return Call(request, Writing("LSET", request).Add(position).Add(value), nullptr);
  }
  Status ListRemove(const Request& request, std::uint64_t most, std::string_view value,
                    std::int64_t* removed) override {
    constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return Call(request, Writing("LREM", request).Add(std::min(most, kMost)).Add(value), removed);
  }

  Status SetAdd(const Request& request, std::string_view member, bool* added) override {
    return Call(request, Writing("SADD", request).Add(member), added);
  }
  Status SetRemove(const Request& request, std::string_view member, bool* removed) override {
    return Call(request, Writing("SREM", request).Add(member), removed);
  }
  Status SetContains(const Request& request, std::string_view member, bool* contained) override {
    return Call(request, Reading("SISMEMBER", request).Add(member), contained);
  }
  Status SetSize(const Request& request, std::int64_t* size) override {
    return Call(request, Reading("SCARD", request), size);
  }
  Status SetMembers(const Request& request, std::vector<std::string>* members) override {
    return Call(request, Reading("SMEMBERS", request), members);
  }

  Status SortedAdd(const Request& request, std::span<const ScoredView> members, std::int64_t* added) override {
    ServerCommand command = Writing("ZADD", request);
    for (const ScoredView& scored : members) command.Add(scored.score).Add(scored.member);
    return Call(request, command, added);
  }
  Status SortedRemove(const Request& request, std::span<const std::string_view> members,
                      std::int64_t* removed) override {
    ServerCommand command = Writing("ZREM", request);
    for (const std::string_view member : members) command.Add(member);
    return Call(request, command, removed);
  }
  Status SortedSize(const Request& request, std::int64_t* size) override {
    return Call(request, Reading("ZCARD", request), size);
  }
  Status SortedCount(const Request& request, double min, double max, std::int64_t* count) override {
    return Call(request, Reading("ZCOUNT", request).Add(min).Add(max), count);
  }
  Status SortedRange(const Request& request, std::int64_t start, std::int64_t stop,
                     std::vector<ScoredMember>* members) override {
    return Call(request, Reading("ZRANGE", request).Add(start).Add(stop).Add("WITHSCORES"), members);
  }
  Status SortedRangeByScore(const Request& request, double min, double max,
                            std::vector<ScoredMember>* members) override {
    return Call(request, Reading("ZRANGEBYSCORE", request).Add(min).Add(max).Add("WITHSCORES"), members);
  }
  Status SortedRank(const Request& request, std::string_view member, std::optional<std::int64_t>* rank) override {
    return Call(request, Reading("ZRANK", request).Add(member), rank);
  }
  Status SortedScore(const Request& request, std::string_view member, std::optional<double>* score) override {
    return Call(request, Reading("ZSCORE", request).Add(member), score);
  }
  Status SortedRemoveRange(const Request& request, std::int64_t start, std::int64_t stop,
                           std::int64_t* removed) override {
    return Call(request, Writing("ZREMRANGEBYRANK", request).Add(start).Add(stop), removed);
  }
  Status SortedRemoveRangeByScore(const Request& request, double min, double max, std::int64_t* removed) override {
    return Call(request, Writing("ZREMRANGEBYSCORE", request).Add(min).Add(max), removed);
  }

  Status Subscribe(const Request& pattern) override { return messages_.Subscribe(pattern, EndOf(pattern.limit)); }
  Status Unsubscribe(const Request& pattern) override { return messages_.Unsubscribe(pattern, EndOf(pattern.limit)); }
  Status Publish(const Request& request, std::string_view message, std::int64_t* receivers) override {
    return messages_.Publish(request, message, EndOf(request.limit), receivers);
  }
  Status Poll(TimeLimit wait, std::vector<Message>* messages) override {
    return messages_.Poll(CallEnd(wait), messages);
  }

  Status Scan(const Request& pattern, Bring bring, std::unique_ptr<Cursor>* cursor) override {
    auto scan = std::make_unique<ServerScan>(&router_, options_, pattern, bring, ServerScan::Bounds());
    Status status = scan->Start();
    if (status.ok()) *cursor = std::move(scan);
    return status;
  }
  Status ReadElement(const Request& request, std::optional<Element>* element) override;

 private:
  static Status NoClock() { return {StatusCode::kNotSupported, "the server's clock is not ours to move"}; }

  CallEnd EndOf(TimeLimit limit) const { return CallEnd(limit.count() != 0 ? limit : options_.timeout); }

  template <typename What> ServerCommand Made(Effect effect, What what, const Request& request) const {
    ServerCommand command = [&] {
      if constexpr (std::is_same_v<What, Script>)
        return ServerCommand(effect, what, 1);
      else
        return ServerCommand(effect, what);
    }();
    command.AddKey(options_.prefix, request.db, request.name);
    return command;
  }
  template <typename What> ServerCommand Reading(What what, const Request& request) const {
    return Made(Effect::kReads, what, request);
  }
  template <typename What> ServerCommand Writing(What what, const Request& request) const {
    return Made(Effect::kWrites, what, request);
  }

  static ServerCommand AddFields(ServerCommand command, std::span<const FieldView> fields) {
    for (const FieldView& field : fields) command.Add(std::int64_t{field.tag}).Add(field.bytes);
    return command;
  }
  static ServerCommand AddTags(ServerCommand command, std::span<const FieldTag> tags) {
    std::vector<FieldTag> each(tags.begin(), tags.end());
    std::sort(each.begin(), each.end());
    each.erase(std::unique(each.begin(), each.end()), each.end());
    for (const FieldTag tag : each) command.Add(std::int64_t{tag});
    return command;
  }

  // Runs a command and takes its answer into *out; nullptr for one that is a plain OK.
  template <typename Out> Status Call(const Request& request, ServerCommand&& command, Out out) {
    return Call(request, command, out);
  }
  template <typename Out> Status Call(const Request& request, ServerCommand& command, Out out) {
    ReplyPtr reply;
    if (Status status = router_.Run(&command, EndOf(request.limit), &reply); !status.ok()) return status;
    return Take(*reply, out) ? Status() : UnexpectedForm(command.writes());
  }

  Status SaveOn(const ServerAddress& node, const CallEnd& end);
  Status Info(const ServerAddress& node, std::string_view section, const CallEnd& end, std::string* info);

  const ServerOptions options_;
  Router router_;
  ServerMessages messages_;
};

Kind KindOf(std::string_view type) {
  constexpr std::pair<std::string_view, Kind> kKinds[] = {{"string", Kind::kString},
                                                          {"hash", Kind::kHash},
                                                          {"list", Kind::kList},
                                                          {"set", Kind::kSet},
                                                          {"zset", Kind::kSortedSet}};
  for (const auto& [name, kind] : kKinds) {
    if (name == type) return kind;
  }
  return Kind::kNone;
}

Status ServerEngine::Inspect(const Request& request, KeyState* state) {
  ServerCommand command = Reading(Script::kInspect, request);
  ReplyPtr reply;
  if (Status status = router_.Run(&command, EndOf(request.limit), &reply); !status.ok()) return status;
  std::string type;
  std::int64_t left = 0;
  if (reply->type != REDIS_REPLY_ARRAY || reply->elements != 2 || !Take(*reply->element[0], &type) ||
      !Take(*reply->element[1], &left)) {
    return UnexpectedForm(false);
  }
  state->kind = KindOf(type);
  if (left >= 0) state->remaining = left;
  return {};
}

Status ServerEngine::ListPop(const Request& request, End end, std::optional<std::string>* value, std::int64_t* left) {
  ServerCommand command = Writing(Script::kPop, request);
  command.Add(end == End::kHead ? "LPOP" : "RPOP");
  ReplyPtr reply;
  if (Status status = router_.Run(&command, EndOf(request.limit), &reply); !status.ok()) return status;
  if (reply->type != REDIS_REPLY_ARRAY) return UnexpectedForm(true);
  if (reply->elements == 0) return {};
  if (reply->elements != 2 || !Take(*reply->element[0], value) || !Take(*reply->element[1], left)) {
    return UnexpectedForm(true);
  }
  return {};
}

Status ServerEngine::ReadElement(const Request& request, std::optional<Element>* element) {
  std::optional<std::string> value;
  Status status = Call(request, Reading(Script::kElement, request), &value);
  if (status.ok() && value) *element = {std::string(request.name), std::move(*value)};
  return status;
}

Status ServerEngine::Info(const ServerAddress& node, std::string_view section, const CallEnd& end, std::string* info) {
  ServerCommand command(Effect::kReads, "INFO");
  command.Add(section);
  ReplyPtr reply;
  if (Status status = router_.RunOn(node, &command, end, &reply); !status.ok()) return status;
  return Take(*reply, info) ? Status() : UnexpectedForm(false);
}

Status ServerEngine::SaveOn(const ServerAddress& node, const CallEnd& end) {
  ServerCommand save(Effect::kWrites, "BGSAVE");
  save.Add("SCHEDULE");
  std::string info;
  std::string saves_before;
  for (bool started = false;;) {
    if (Status status = Info(node, "persistence", end, &info); !status.ok()) {
      return started ? Status(StatusCode::kOutcomeUnknown, std::move(status).text()) : status;
    }
    const bool running = InfoValue(info, "rdb_bgsave_in_progress") != "0";
    if (started && !running && InfoValue(info, "rdb_saves") != saves_before) break;
    if (!started && !running) {
      saves_before = InfoValue(info, "rdb_saves");
      ReplyPtr reply;
      if (Status status = router_.RunOn(node, &save, end, &reply); !status.ok()) return status;
      started = true;
      continue;
    }
    std::this_thread::sleep_for(std::min<std::chrono::microseconds>(kSavePoll, end.Left()));
    if (end.Passed()) {
      return started ? Status(StatusCode::kOutcomeUnknown, ToText(node) + ": the save is not over in time")
                     : Status(StatusCode::kUnavailable, ToText(node) + ": another save is not over in time");
    }
  }
  if (InfoValue(info, "rdb_last_bgsave_status") == "ok") return {};
  return {StatusCode::kFailed, ToText(node) + ": the save failed"};
}

Status ServerEngine::Save(TimeLimit limit) {
  const CallEnd end = EndOf(limit);
  if (router_.is_cluster()) {
    if (Status status = router_.Refresh(end); !status.ok()) return status;
  }
  for (const Shard& shard : router_.shards()) {
    if (Status status = SaveOn(shard.master, end); !status.ok()) return status;
  }
  return {};
}

Status ServerEngine::Summarize(const Request& request, DatabaseSummary* summary) {
  const std::string pattern = ServerPattern(options_.prefix, request.db, "*");
  const CallEnd end = EndOf(request.limit);
  std::size_t* const counts[] = {&summary->strings, &summary->hashes,      &summary->lists,
                                 &summary->sets,    &summary->sorted_sets, &summary->expiring};
  for (const Shard& shard : router_.shards()) {
    std::string cursor = "0";
    do {
      ServerCommand command(Effect::kReads, Script::kSummarize, 0);
      command.Add(cursor).Add(pattern).Add(kSummaryPage);
      ReplyPtr reply;
      if (Status status = router_.RunOn(shard.master, &command, end, &reply); !status.ok()) return status;
      std::string next;
      if (reply->type != REDIS_REPLY_ARRAY || reply->elements != 1 + std::size(counts) ||
          !Take(*reply->element[0], &next)) {
        return UnexpectedForm(false);
      }
      for (std::size_t index = 0; index < std::size(counts); ++index) {
        std::int64_t count = 0;
        if (!Take(*reply->element[index + 1], &count)) return UnexpectedForm(false);
        *counts[index] += static_cast<std::size_t>(count);
      }
      cursor = std::move(next);
    } while (cursor != "0");
  }
  return {};
}

Status ServerEngine::Describe(TimeLimit limit, std::string* lines) {
  if (!router_.is_cluster()) {
    *lines = "server " + ToText(options_.nodes.front()) + '\n';
    return {};
  }
  if (Status status = router_.Refresh(EndOf(limit)); !status.ok()) return status;
  for (const Shard& shard : router_.shards()) {
    *lines += "node " + ToText(shard.master) + ": slots";
    for (const SlotRange& range : shard.slots) {
      *lines += ' ' + std::to_string(range.first) + '-' + std::to_string(range.last);
    }
    *lines += "; replicas";
    for (const ServerAddress& replica : shard.replicas) *lines += ' ' + ToText(replica);
    *lines += shard.replicas.empty() ? " none\n" : "\n";
  }
  return {};
}

}  // namespace

Status OpenServerEngine(std::string_view url, std::unique_ptr<Engine>* engine) {
  ServerOptions options;
  std::string error;
  if (!ParseServerUrl(url, &options, &error)) return {StatusCode::kFailed, std::move(error)};
  *engine = std::make_unique<ServerEngine>(std::move(options));
  return {};
}

}  // namespace hostkit
