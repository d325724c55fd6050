#include "hostkit/server_messages.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "hostkit/glob.h"
#include "hostkit/server_pattern.h"

namespace hostkit {
namespace {

constexpr std::chrono::milliseconds kRestOfMessage{50};

// Whether the reply is {what, ...} with that many elements, the first ones texts.
bool IsPush(const redisReply& reply, std::string_view what, std::size_t elements) {
  return reply.type == REDIS_REPLY_ARRAY && reply.elements == elements &&
         reply.element[0]->type == REDIS_REPLY_STRING && TextOf(*reply.element[0]) == what;
}

}  // namespace

Status ServerMessages::FindNode(ServerAddress* node) const {
  if (router_->shards().empty()) return {StatusCode::kUnavailable, "no node of the cluster has slots"};
  const ServerAddress* owner = router_->is_cluster() ? router_->slots().OwnerOf(0) : nullptr;
  *node = owner != nullptr ? *owner : router_->shards().front().master;
  return {};
}

bool ServerMessages::IsSubscribed(const std::string& server_pattern) const {
  return std::any_of(subscriptions_.begin(), subscriptions_.end(),
                     [&](const Subscription& known) { return known.server_pattern == server_pattern; });
}

template <typename Until> Status ServerMessages::ReadUntil(const CallEnd& end, Until until, bool* reached) {
  for (*reached = false; !*reached;) {
    ReplyPtr reply;
    std::string why;
    if (!connection_->Receive(end, &reply, &why)) return {StatusCode::kUnavailable, std::move(why)};
    if (reply == nullptr) return {};
    TakeMessage(*reply);
    *reached = until(*reply);
  }
  return {};
}

void ServerMessages::TakeMessage(const redisReply& reply) {
  constexpr std::size_t kPattern = 1, kChannel = 2, kPayload = 3, kElements = 4;
  if (!IsPush(reply, "pmessage", kElements)) return;
  const std::string_view channel = TextOf(*reply.element[kChannel]);
  for (const Subscription& known : subscriptions_) {
    if (known.server_pattern != TextOf(*reply.element[kPattern])) continue;
    const std::size_t beginning = ChannelBeginning(known.db).size();
    if (channel.size() < beginning) continue;
    arrived_.push_back({known.db, known.pattern, std::string(channel.substr(beginning)),
                        std::string(TextOf(*reply.element[kPayload]))});
  }
}

Status ServerMessages::Tell(std::string_view verb, const std::string& server_pattern, const CallEnd& end) {
  ServerCommand command(Effect::kReads, verb == "psubscribe" ? "PSUBSCRIBE" : "PUNSUBSCRIBE");
  command.Add(server_pattern);
  const ServerCommand* const commands[] = {&command};
  std::string why;
  if (connection_->Send(commands, end, &why) != Delivery::kAnswered) {
    connection_->Close();
    return {StatusCode::kUnavailable, std::move(why)};
  }
  bool told = false;
  Status refusal;
  Status status = ReadUntil(
      end,
      [&](const redisReply& reply) {
        if (reply.type == REDIS_REPLY_ERROR) refusal = StatusOf(reply);
        return reply.type == REDIS_REPLY_ERROR || IsPush(reply, verb, 3);
      },
      &told);
  if (!status.ok()) return status;
  if (!told) {
    connection_->Close();
    return {StatusCode::kUnavailable, "no answer in time"};
  }
  return refusal;
}

Status ServerMessages::Open(const CallEnd& end) {
  if (IsOpen()) return {};
  if (router_->is_cluster()) {
    if (Status status = router_->Refresh(end); !status.ok()) return status;
  }
  ServerAddress node;
  if (Status status = FindNode(&node); !status.ok()) return status;
  connection_ = std::make_unique<Connection>(std::move(node), options_);
  std::string why;
  if (connection_->Open(end, &why) != Delivery::kAnswered) return {StatusCode::kUnavailable, std::move(why)};
  for (const Subscription& known : subscriptions_) {
    if (Status status = Tell("psubscribe", known.server_pattern, end); !status.ok()) {
      connection_->Close();
      return status;
    }
  }
  return {};
}

Status ServerMessages::Subscribe(const Request& pattern, const CallEnd& end) {
  std::string server_pattern = ServerPattern(options_.prefix, pattern.db, pattern.name);
  if (Status status = Open(end); !status.ok()) return status;
  if (!IsSubscribed(server_pattern)) {
    if (Status status = Tell("psubscribe", server_pattern, end); !status.ok()) return status;
  }
  subscriptions_.push_back({pattern.db, std::string(pattern.name), std::move(server_pattern)});
  return {};
}

Status ServerMessages::Unsubscribe(const Request& pattern, const CallEnd& end) {
  const auto known = std::find_if(subscriptions_.begin(), subscriptions_.end(), [&](const Subscription& candidate) {
    return candidate.db == pattern.db && candidate.pattern == pattern.name;
  });
  if (known == subscriptions_.end()) return {};
  const std::string server_pattern = std::move(known->server_pattern);
  subscriptions_.erase(known);
  if (!IsOpen() || IsSubscribed(server_pattern)) return {};
  return Tell("punsubscribe", server_pattern, end);
}

Status ServerMessages::Publish(const Request& request, std::string_view message, const CallEnd& end,
                               std::int64_t* receivers) {
  const std::string channel = ChannelBeginning(request.db) + std::string(request.name);
  ServerCommand publish(Effect::kWrites, "PUBLISH");
  publish.Add(channel).Add(message);
  ServerAddress node;
  if (IsOpen()) {
    node = connection_->address();
  } else if (Status status = FindNode(&node); !status.ok()) {
    return status;
  }
  ReplyPtr reply;
  if (Status status = router_->RunOn(node, &publish, end, &reply); !status.ok()) return status;
  if (!Take(*reply, receivers)) return UnexpectedForm(true);

  const auto ours = std::count_if(subscriptions_.begin(), subscriptions_.end(), [&](const Subscription& known) {
    return known.db == request.db && GlobMatches(known.pattern, request.name);
  });
  std::ptrdiff_t missing = IsOpen() ? ours : 0;
  const auto count_ours = [&](const Message& arrived) {
    if (arrived.db == request.db && arrived.name == request.name && arrived.value == message) --missing;
  };
  while (missing > 0) {
    const std::size_t known = arrived_.size();
    bool any = false;
    if (!ReadUntil(
             end, [&](const redisReply&) { return true; }, &any)
             .ok() ||
        !any)
      break;
    std::for_each(arrived_.begin() + static_cast<std::ptrdiff_t>(known), arrived_.end(), count_ours);
  }
  return {};
}

Status ServerMessages::Poll(const CallEnd& end, std::vector<Message>* messages) {
  if (subscriptions_.empty()) return {};
  Status status = Open(CallEnd(options_.connect_timeout));
  while (status.ok()) {
    // A message that has begun to arrive is waited for a little.
    const bool arriving = connection_->HasInput();
    const CallEnd now(std::chrono::milliseconds(0));
    bool any = false;
    status = ReadUntil(
        arriving           ? CallEnd(kRestOfMessage)
        : arrived_.empty() ? end
                           : now,
        [](const redisReply&) { return true; }, &any);
    if (!any) break;
  }
  std::move(arrived_.begin(), arrived_.end(), std::back_inserter(*messages));
  arrived_.clear();
  return status;
}

}  // namespace hostkit
