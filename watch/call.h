// A call of a client function as the watch library sees it.
#pragma once

#include <sys/time.h>

#include <cstddef>
#include <cstdint>

#include "watch/text.h"

namespace tq_watch {

// What a parameter is for, as its type and place tell.
enum class Kind : unsigned char {
  kRuntime,
  kDatabase,
  kOption,
  kObject,    // the first one is the key
  kReleased,  // what a release function takes
  kInteger,
  kUnsigned,
  kNumber,
  kTimeout,
  kText,
  kIntegers,  // an array; its length follows it, as for the next two
  kScores,
  kMembers,
  kLength,
  kOut,
  kCallback,
  kContext,
};

union Value {
  void* pointer;
  std::int64_t integer;
  std::uint64_t unsigned_integer;
  double number;
  timeval timeout;
};

// A member of a record. Arrays have their length in another member, a size_t.
struct Member {
  enum Type : unsigned char { kEnd, kInt, kInt64, kDouble, kObject, kObjects, kScores, kTags, kFields };

  const char* name;
  Type type;
  unsigned char offset;
  unsigned char length_offset;  // of an array
};

inline constexpr int kMaxMembers = 3;

struct OptionType {
  Member members[kMaxMembers + 1];
};

// What a client function hands out and another one takes back.
struct OwnedType {
  const char* name;
  unsigned char size;        // of a record that can be copied; 0: not known
  unsigned char error_code;  // its place in the record
  Member members[kMaxMembers + 1];
};

enum class Role : unsigned char { kCommand, kRelease };
enum class ResultKind : unsigned char { kStatus, kPointer };

inline constexpr int kMaxParameters = 7;

struct Function {
  const char* client_name;
  const char* name;  // the Lua function's
  Role role;
  ResultKind result;
  unsigned char parameter_count;
  Kind parameters[kMaxParameters];
  const OptionType* option;
  const OwnedType* owned;  // what it hands out, or takes back if it is a release function; may be null
};

// The line of a script. The source lives as long as the process; null: unknown.
struct Position {
  const char* source;
  int line;
};

struct Call {
  const Function* function;
  Value arguments[kMaxParameters];
  Position position;
  const char* key;         // null: none, or it cannot be read
  std::size_t key_length;  // of a key that is not null
  int database;            // -1: none
  const char* texts;       // the arguments in readable form, as TextOf gives them
  Value result;
  int out;  // where the function has an out-value
  std::int64_t microseconds;
  double time;   // when it began, in seconds since 1970
  bool failed;   // a negative status or error code, or null without a status that says otherwise
  bool faulted;  // a fault changed it
  bool left;     // an error of the script's callback ended it, so there is no result
};

// The function with its arguments, as a script would write it; the result.
void AddInvocation(const Call& call, Text* text);
void AddResult(const Call& call, Text* text);
// One line about the call, without the line's end: for people, and as JSON.
void AddLine(const Call& call, Text* text);
void AddJson(const Call& call, Text* text);

}  // namespace tq_watch
