// What a server answers, and what it means.
#pragma once

#include <hiredis/hiredis.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/engine.h"
#include "hostkit/server_url.h"

namespace hostkit {

struct ReplyDeleter {
  void operator()(redisReply* reply) const { freeReplyObject(reply); }
};
using ReplyPtr = std::unique_ptr<redisReply, ReplyDeleter>;

inline std::string_view TextOf(const redisReply& reply) { return {reply.str, reply.len}; }

// What an answer asks of the one who sent the command.
enum class Verdict {
  kDone,      // nothing: it was carried out
  kMoved,     // to send it to another node, which has the slot from now on
  kAsk,       // to send it to another node this once, behind ASKING
  kLater,     // to send it again after a while
  kNoScript,  // to send the script's text
  kRefused    // to give up: StatusOf says why
};
// Any verdict but kDone means that the command has changed nothing.
Verdict Judge(const redisReply& reply);
Status StatusOf(const redisReply& refusal);
// Of an answer that its command never has.
Status UnexpectedForm(bool writes);

// Where a redirection (kMoved, kAsk) points to. A host that the text leaves out is that of `asked`.
struct Redirection {
  int slot;
  ServerAddress node;
};
std::optional<Redirection> ParseRedirection(std::string_view text, const ServerAddress& asked);

// Take an answer of the expected form into *value; false for any other form.
bool Take(const redisReply& reply, std::int64_t* value);
bool Take(const redisReply& reply, bool* value);  // 1 or 0
bool Take(const redisReply& reply, std::string* value);
bool Take(const redisReply& reply, std::nullptr_t);  // OK
// Nil is none.
bool Take(const redisReply& reply, std::optional<std::string>* value);
bool Take(const redisReply& reply, std::optional<std::int64_t>* value);
bool Take(const redisReply& reply, std::optional<double>* value);
bool Take(const redisReply& reply, std::vector<std::string>* values);
bool Take(const redisReply& reply, std::vector<ScoredMember>* members);
// Tags and bytes in turn.
bool Take(const redisReply& reply, HashContents* hash);
bool Take(const redisReply& reply, std::vector<FieldRemaining>* fields);

// The value of a line "name:value" of INFO; empty without such a line.
std::string_view InfoValue(std::string_view info, std::string_view name);

}  // namespace hostkit
