#include "hostkit/server_reply.h"

#include <charconv>
#include <cstdlib>
#include <system_error>

namespace hostkit {
namespace {

// What the answers that are errors mean, by how their texts begin.
struct ErrorRow {
  std::string_view beginning;
  Verdict verdict;
  StatusCode code;
};

constexpr ErrorRow kErrors[] = {
    {"WRONGTYPE", Verdict::kRefused, StatusCode::kWrongKind},
    {"ERR value is not an integer", Verdict::kRefused, StatusCode::kWrongKind},
    {"MOVED", Verdict::kMoved, StatusCode::kFailed},
    {"ASK", Verdict::kAsk, StatusCode::kFailed},
    {"NOSCRIPT", Verdict::kNoScript, StatusCode::kFailed},
    {"TRYAGAIN", Verdict::kLater, StatusCode::kUnavailable},
    {"CLUSTERDOWN", Verdict::kLater, StatusCode::kUnavailable},
    {"LOADING", Verdict::kLater, StatusCode::kUnavailable},
    {"MASTERDOWN", Verdict::kLater, StatusCode::kUnavailable},
    {"BUSY ", Verdict::kLater, StatusCode::kUnavailable},
    {"NOREPLICAS", Verdict::kRefused, StatusCode::kReadOnly},
    {"OOM", Verdict::kRefused, StatusCode::kOutOfMemory},
    {"READONLY", Verdict::kRefused, StatusCode::kReadOnly},
    {"MISCONF", Verdict::kRefused, StatusCode::kReadOnly},
    {"NOPERM", Verdict::kRefused, StatusCode::kReadOnly},
    {"ERR The user executing the script can't", Verdict::kRefused, StatusCode::kReadOnly},
    {"NOAUTH", Verdict::kRefused, StatusCode::kUnavailable},
    {"WRONGPASS", Verdict::kRefused, StatusCode::kUnavailable},
    {"ERR max number of clients", Verdict::kRefused, StatusCode::kUnavailable},
};

ErrorRow RowOf(const redisReply& error) {
  const std::string_view text = TextOf(error);
  for (const ErrorRow& row : kErrors) {
    if (text.starts_with(row.beginning)) return row;
  }
  return {"", Verdict::kRefused, StatusCode::kFailed};
}

bool ParseScore(const redisReply& reply, double* score) {
  if (reply.type != REDIS_REPLY_STRING || reply.len == 0) return false;
  char* end;
  *score = std::strtod(reply.str, &end);  // ended by NUL, and never in a locale of its own
  return end == reply.str + reply.len;
}

template <typename Number> bool ParseWhole(std::string_view text, Number* number) {
  const auto [parsed, failure] = std::from_chars(text.data(), text.data() + text.size(), *number);
  return failure == std::errc() && parsed == text.data() + text.size();
}

template <typename Value> bool TakeOptional(const redisReply& reply, std::optional<Value>* value) {
  if (reply.type == REDIS_REPLY_NIL) return true;
  return Take(reply, &value->emplace());
}

// Calls take(first, second) for each pair of elements; false as soon as it returns false.
template <typename TakePair> bool ForEachPair(const redisReply& reply, TakePair take) {
  if (reply.type != REDIS_REPLY_ARRAY || reply.elements % 2 != 0) return false;
  for (std::size_t index = 0; index < reply.elements; index += 2) {
    if (!take(*reply.element[index], *reply.element[index + 1])) return false;
  }
  return true;
}

}  // namespace

Verdict Judge(const redisReply& reply) {
  return reply.type == REDIS_REPLY_ERROR ? RowOf(reply).verdict : Verdict::kDone;
}

Status StatusOf(const redisReply& refusal) { return {RowOf(refusal).code, std::string(TextOf(refusal))}; }

Status UnexpectedForm(bool writes) {
  return {writes ? StatusCode::kOutcomeUnknown : StatusCode::kFailed, "an answer of an unexpected form"};
}

std::optional<Redirection> ParseRedirection(std::string_view text, const ServerAddress& asked) {
  const std::size_t before_slot = text.find(' ');
  const std::size_t before_node = text.find(' ', before_slot + 1);
  if (before_slot == std::string_view::npos || before_node == std::string_view::npos) return {};
  const std::string_view node = text.substr(before_node + 1);
  const std::size_t colon = node.rfind(':');  // an IPv6 address comes without brackets
  Redirection found = {};
  if (colon == std::string_view::npos || !ParseWhole(node.substr(colon + 1), &found.node.port) ||
      !ParseWhole(text.substr(before_slot + 1, before_node - before_slot - 1), &found.slot) || found.slot < 0 ||
      found.node.port <= 0) {
    return {};
  }
  found.node.host = colon != 0 ? std::string(node.substr(0, colon)) : asked.host;
  return found;
}

bool Take(const redisReply& reply, std::int64_t* value) {
  *value = reply.integer;
  return reply.type == REDIS_REPLY_INTEGER;
}

bool Take(const redisReply& reply, bool* value) {
  *value = reply.integer == 1;
  return reply.type == REDIS_REPLY_INTEGER && (reply.integer == 0 || reply.integer == 1);
}

bool Take(const redisReply& reply, std::string* value) {
  if (reply.type != REDIS_REPLY_STRING) return false;
  *value = TextOf(reply);
  return true;
}

bool Take(const redisReply& reply, std::nullptr_t) { return reply.type == REDIS_REPLY_STATUS; }

bool Take(const redisReply& reply, std::optional<std::string>* value) { return TakeOptional(reply, value); }
bool Take(const redisReply& reply, std::optional<std::int64_t>* value) { return TakeOptional(reply, value); }

bool Take(const redisReply& reply, std::optional<double>* value) {
  return reply.type == REDIS_REPLY_NIL || ParseScore(reply, &value->emplace());
}

bool Take(const redisReply& reply, std::vector<std::string>* values) {
  if (reply.type != REDIS_REPLY_ARRAY) return false;
  values->reserve(reply.elements);
  for (std::size_t index = 0; index < reply.elements; ++index) {
    if (!Take(*reply.element[index], &values->emplace_back())) return false;
  }
  return true;
}

bool Take(const redisReply& reply, std::vector<ScoredMember>* members) {
  return ForEachPair(reply, [&](const redisReply& member, const redisReply& score) {
    ScoredMember& taken = members->emplace_back();
    return Take(member, &taken.member) && ParseScore(score, &taken.score);
  });
}

bool Take(const redisReply& reply, HashContents* hash) {
  hash->exists = reply.type == REDIS_REPLY_ARRAY;
  return reply.type == REDIS_REPLY_NIL || ForEachPair(reply, [&](const redisReply& tag, const redisReply& bytes) {
           Field& taken = hash->fields.emplace_back();
           return tag.type == REDIS_REPLY_STRING && ParseWhole(TextOf(tag), &taken.tag) && Take(bytes, &taken.bytes);
         });
}

bool Take(const redisReply& reply, std::vector<FieldRemaining>* fields) {
  return ForEachPair(reply, [&](const redisReply& tag, const redisReply& remaining) {
    FieldRemaining& taken = fields->emplace_back();
    return tag.type == REDIS_REPLY_STRING && ParseWhole(TextOf(tag), &taken.tag) &&
           Take(remaining, &taken.milliseconds);
  });
}

std::string_view InfoValue(std::string_view info, std::string_view name) {
  while (!info.empty()) {
    const std::string_view line = info.substr(0, info.find("\r\n"));
    if (line.starts_with(name) && line.substr(name.size()).starts_with(':')) return line.substr(name.size() + 1);
    info.remove_prefix(std::min(info.size(), line.size() + 2));
  }
  return {};
}

}  // namespace hostkit
