// What is more than one command of a server runs there as a script, so that it is atomic and takes one round trip.
//
// A hash keeps its fields under their numbers, and the deadline of a field, in milliseconds of the server's calendar,
// under "<number>:expires". When all its fields expire, so does the key, with the last of them; what the key itself was
// told is then kept under ":expires", "never" included.
#pragma once

#include <string>
#include <string_view>

namespace hostkit {

enum class Script {
  kExpire,           // milliseconds: 1 or 0
  kPersist,          // within: 1 or 0
  kInspect,          // {type, milliseconds left or negative}
  kPop,              // LPOP or RPOP: {value, length} or {}
  kHashSet,          // tag, bytes, ...: OK
  kHashSetIfAbsent,  // tag, bytes, ...: how many
  kHashGet,          // tag, ...: {tag, bytes, ...}, nil without a hash
  kHashGetAll,       // as kHashGet
  kHashExpire,       // milliseconds, tag, ...: how many
  kHashRemaining,    // {tag, milliseconds, ...}
  kElement,          // the bytes of a string, "" of another kind, nil
  kScan,             // no key; cursor, pattern, count, bytes: {cursor, key, bytes or 0 for "ask again", ...}
  kSummarize,        // no key; cursor, pattern, count: {cursor, strings, hashes, lists, sets, sorted sets, expiring}
};

std::string_view TextOf(Script script);
// The name by which a server knows the script: the SHA-1 of its text, in hexadecimal.
std::string_view DigestOf(Script script);

std::string Sha1(std::string_view text);

}  // namespace hostkit
