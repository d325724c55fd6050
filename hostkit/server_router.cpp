#include "hostkit/server_router.h"

#include <algorithm>
#include <array>
#include <utility>

namespace hostkit {
namespace {

// How often a single server that is lost is tried. A cluster is tried for as long as the call has time: it may find
// another master.
constexpr int kRescues = 3;
// How many redirections are followed without a pause.
constexpr int kHurriedAttempts = 6;

}  // namespace

Router::Router(const ServerOptions& options, LinkMaker make_link, Sleeper sleep)
    : options_(options),
      make_link_(std::move(make_link)),
      sleep_(std::move(sleep)),
      single_{Shard{options.nodes.front(), {}, {}}} {}

Link& Router::LinkTo(const ServerAddress& node) {
  std::unique_ptr<Link>& link = links_[node];
  if (link == nullptr) link = make_link_(node);
  return *link;
}

void Router::Pause(int attempts, const CallEnd& end) {
  using std::chrono::microseconds;
  sleep_(std::min(microseconds(2000) * (1 << std::min(attempts, 6)), end.Left()));
}

Status Router::Connect(bool cluster, const CallEnd& end) {
  cluster_ = cluster;
  if (cluster) {
    for (int attempts = 0;; ++attempts) {
      Status status = Refresh(end);
      if (!status.ok()) return status;
      if (!slots_.shards().empty()) return {};
      if (end.Passed()) return {StatusCode::kUnavailable, "no node of the cluster has slots"};
      Pause(attempts, end);
    }
  }
  ServerCommand ping(Effect::kReads, "PING");
  ReplyPtr reply;
  return RunOn(single_.front().master, &ping, end, &reply);
}

Status Router::Refresh(const CallEnd& end) {
  std::vector<ServerAddress> nodes;
  for (const Shard& shard : slots_.shards()) {
    nodes.push_back(shard.master);
    nodes.insert(nodes.end(), shard.replicas.begin(), shard.replicas.end());
  }
  nodes.insert(nodes.end(), options_.nodes.begin(), options_.nodes.end());
  Status status;
  for (const ServerAddress& node : nodes) {
    ServerCommand ask(Effect::kReads, "CLUSTER");
    ask.Add("SLOTS");
    std::string why;
    const ServerCommand* const commands[] = {&ask};
    switch (LinkTo(node).Exchange(commands, end.Within(options_.connect_timeout), &replies_, &why)) {
      case Delivery::kAnswered:
        if (Judge(*replies_.front()) != Verdict::kDone) {
          status = StatusOf(*replies_.front());
        } else if (slots_.Load(*replies_.front(), node)) {
          stale_ = false;
          return {};
        } else {
          status = {StatusCode::kFailed, ToText(node) + ": not the slots of a cluster"};
        }
        break;
      case Delivery::kRefused:
      case Delivery::kNotSent:
      case Delivery::kUnanswered: status = {StatusCode::kUnavailable, std::move(why)}; break;
    }
  }
  return status;
}

Router::Next Router::Redirect(const ServerCommand& command, const redisReply& redirection, bool ask, Attempt* attempt) {
  attempt->status = {StatusCode::kFailed, std::string(TextOf(redirection))};
  if (!cluster_) {
    attempt->status = {StatusCode::kFailed, "the server is a node of a cluster: connect to the cluster"};
    return Next::kReturn;
  }
  const auto target = ParseRedirection(TextOf(redirection), attempt->node);
  if (!target || target->slot != command.slot()) return Next::kReturn;
  if (!ask) {
    slots_.Assign(target->slot, target->node);
    stale_ = true;
  }
  attempt->status = {StatusCode::kUnavailable, "the slots keep moving"};
  attempt->asking = ask;
  attempt->moved_to = target->node;
  return Next::kRepeat;
}

Router::Next Router::Try(ServerCommand* command, const CallEnd& end, Attempt* attempt, ReplyPtr* reply) {
  static const ServerCommand asking(Effect::kReads, "ASKING");
  ServerCommand wait(Effect::kReads, "WAIT");
  std::array<const ServerCommand*, 3> commands;
  std::size_t count = 0;
  if (attempt->asking) commands[count++] = &asking;
  const std::size_t position = count;
  commands[count++] = command;
  const bool waits = options_.wait > 0 && command->writes();
  if (waits) {
    // The answer must still have time to arrive.
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end.Left() * 7 / 8).count();
    wait.Add(std::int64_t{options_.wait}).Add(std::max<std::int64_t>(left, 1));
    commands[count++] = &wait;
  }

  std::string why;
  switch (LinkTo(attempt->node).Exchange({commands.data(), count}, end, &replies_, &why)) {
    case Delivery::kNotSent: attempt->status = {StatusCode::kUnavailable, std::move(why)}; return Next::kRescue;
    case Delivery::kUnanswered:
      attempt->status = {command->writes() ? StatusCode::kOutcomeUnknown : StatusCode::kUnavailable, std::move(why)};
      return command->writes() ? Next::kReturn : Next::kRescue;
    case Delivery::kRefused: attempt->status = {StatusCode::kUnavailable, std::move(why)}; return Next::kReturn;
    case Delivery::kAnswered: break;
  }

  const redisReply& answer = *replies_[position];
  const Verdict verdict = Judge(answer);
  switch (verdict) {
    case Verdict::kDone: break;
    case Verdict::kMoved:
    case Verdict::kAsk: return Redirect(*command, answer, verdict == Verdict::kAsk, attempt);
    case Verdict::kNoScript: command->SpellOutScript(); return Next::kRepeat;
    case Verdict::kLater:
      stale_ = true;
      attempt->status = StatusOf(answer);
      return Next::kPause;
    case Verdict::kRefused: attempt->status = StatusOf(answer); return Next::kReturn;
  }
  attempt->status = {};
  if (std::int64_t replicas; waits && (!Take(*replies_.back(), &replicas) || replicas < options_.wait)) {
    attempt->status = {StatusCode::kOutcomeUnknown, ToText(attempt->node) + ": done, but too few replicas have it yet"};
  }
  *reply = std::move(replies_[position]);
  return Next::kReturn;
}

Status Router::Run(ServerCommand* command, const CallEnd& end, ReplyPtr* reply) {
  if (!cluster_) return RunOn(single_.front().master, command, end, reply);
  Attempt attempt;
  for (int attempts = 0;; ++attempts) {
    if (!attempt.moved_to) {
      if (stale_) {
        // Without an answer the slots are as last seen.
        if (Status status = Refresh(end); !status.ok()) attempt.status = std::move(status);
      }
      attempt.asking = false;
      if (const ServerAddress* owner = slots_.OwnerOf(command->slot()); owner != nullptr) attempt.moved_to = *owner;
    }
    Next next = Next::kPause;
    if (attempt.moved_to) {
      attempt.node = *std::exchange(attempt.moved_to, std::nullopt);
      next = Try(command, end, &attempt, reply);
    } else {
      attempt.status = {StatusCode::kUnavailable, "no node of the cluster has the key's slot"};
      stale_ = true;
    }
    if (next == Next::kReturn || end.Passed()) return attempt.status;
    if (next == Next::kRescue) stale_ = true;
    if (next != Next::kRepeat || attempts >= kHurriedAttempts) Pause(attempts, end);
  }
}

Status Router::RunOn(const ServerAddress& node, ServerCommand* command, const CallEnd& end, ReplyPtr* reply) {
  Attempt attempt;
  attempt.node = node;
  int rescues = 0;
  for (int attempts = 0;; ++attempts) {
    const Next next = Try(command, end, &attempt, reply);
    if (next == Next::kReturn || end.Passed()) return attempt.status;
    if (next == Next::kRescue && ++rescues == kRescues) return attempt.status;
    if (next != Next::kRepeat) Pause(attempts, end);
  }
}

}  // namespace hostkit
