#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "hostkit/server_reply.h"
#include "recorded.h"

namespace hostkit {
namespace {

template <typename Value> Value Taken(std::string_view wire) {
  Value value = {};
  EXPECT_TRUE(Take(*Recorded(wire), &value)) << wire;
  return value;
}

template <typename Value> bool IsRefused(std::string_view wire) {
  Value value = {};
  return !Take(*Recorded(wire), &value);
}

TEST(Reply, Numbers) {
  EXPECT_EQ(Taken<std::int64_t>(":-9223372036854775808\r\n"), std::numeric_limits<std::int64_t>::min());
  EXPECT_TRUE(IsRefused<std::int64_t>("$1\r\n1\r\n"));
  EXPECT_TRUE(IsRefused<std::int64_t>("+OK\r\n"));
  EXPECT_EQ(Taken<std::optional<std::int64_t>>("$-1\r\n"), std::nullopt);
  EXPECT_EQ(Taken<std::optional<std::int64_t>>(":3\r\n"), 3);
  EXPECT_TRUE(Taken<bool>(":1\r\n"));
  EXPECT_FALSE(Taken<bool>(":0\r\n"));
  EXPECT_TRUE(IsRefused<bool>(":2\r\n"));
}

TEST(Reply, Texts) {
  EXPECT_EQ(Taken<std::optional<std::string>>(std::string_view("$3\r\na\0b\r\n", 9)), std::string("a\0b", 3));
  EXPECT_EQ(Taken<std::optional<std::string>>("$0\r\n\r\n"), "");
  EXPECT_EQ(Taken<std::optional<std::string>>("$-1\r\n"), std::nullopt);
  EXPECT_TRUE(IsRefused<std::optional<std::string>>("+text\r\n"));
  EXPECT_TRUE(IsRefused<std::optional<std::string>>(":1\r\n"));
  EXPECT_EQ(Taken<std::vector<std::string>>("*2\r\n$1\r\na\r\n$0\r\n\r\n"), (std::vector<std::string>{"a", ""}));
  EXPECT_TRUE(IsRefused<std::vector<std::string>>("*1\r\n$-1\r\n"));
  EXPECT_TRUE(IsRefused<std::vector<std::string>>("$1\r\na\r\n"));
  EXPECT_TRUE(Take(*Recorded("+OK\r\n"), nullptr));
  EXPECT_FALSE(Take(*Recorded(":1\r\n"), nullptr));
}

TEST(Reply, Scores) {
  EXPECT_EQ(Taken<std::optional<double>>("$23\r\n-1.7976931348623157e308\r\n").value_or(0), -1.7976931348623157e308);
  EXPECT_EQ(Taken<std::optional<double>>("$3\r\ninf\r\n"), HUGE_VAL);
  EXPECT_EQ(Taken<std::optional<double>>("$4\r\n-inf\r\n"), -HUGE_VAL);
  EXPECT_EQ(Taken<std::optional<double>>("$-1\r\n"), std::nullopt);
  EXPECT_TRUE(IsRefused<std::optional<double>>("$2\r\n1x\r\n"));
  EXPECT_TRUE(IsRefused<std::optional<double>>("$0\r\n\r\n"));
  const auto members = Taken<std::vector<ScoredMember>>("*4\r\n$1\r\na\r\n$3\r\n0.1\r\n$0\r\n\r\n$2\r\n-2\r\n");
  ASSERT_EQ(members.size(), 2U);
  EXPECT_EQ(members[0].member, "a");
  EXPECT_EQ(members[0].score, 0.1);
  EXPECT_EQ(members[1].member, "");
  EXPECT_EQ(members[1].score, -2);
  EXPECT_TRUE(IsRefused<std::vector<ScoredMember>>("*1\r\n$1\r\na\r\n"));
  EXPECT_TRUE(IsRefused<std::vector<ScoredMember>>("*2\r\n$1\r\na\r\n:1\r\n"));
  EXPECT_TRUE(IsRefused<std::vector<ScoredMember>>("*2\r\n:1\r\n$1\r\n1\r\n"));
  EXPECT_TRUE(IsRefused<std::vector<ScoredMember>>("$1\r\na\r\n"));
}

TEST(Reply, Hashes) {
  EXPECT_FALSE(Taken<HashContents>("$-1\r\n").exists);
  const auto hash = Taken<HashContents>("*4\r\n$10\r\n4294967295\r\n$1\r\nx\r\n$1\r\n0\r\n$0\r\n\r\n");
  EXPECT_TRUE(hash.exists);
  ASSERT_EQ(hash.fields.size(), 2U);
  EXPECT_EQ(hash.fields[0].tag, 4294967295U);
  EXPECT_EQ(hash.fields[0].bytes, "x");
  EXPECT_TRUE(Taken<HashContents>("*0\r\n").exists);
  EXPECT_TRUE(IsRefused<HashContents>("*2\r\n$10\r\n4294967296\r\n$1\r\nx\r\n"));
  for (const std::string_view tag : {"$1\r\nx\r\n", ":1\r\n", "$2\r\n1x\r\n", "$0\r\n\r\n"}) {
    EXPECT_TRUE(IsRefused<HashContents>("*2\r\n" + std::string(tag) + "$1\r\nx\r\n")) << tag;
    EXPECT_TRUE(IsRefused<std::vector<FieldRemaining>>("*2\r\n" + std::string(tag) + ":1\r\n")) << tag;
  }
  EXPECT_TRUE(IsRefused<HashContents>("*2\r\n$1\r\n1\r\n:1\r\n"));
  const auto left = Taken<std::vector<FieldRemaining>>("*2\r\n$1\r\n7\r\n:1500\r\n");
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(left[0].tag, 7U);
  EXPECT_EQ(left[0].milliseconds, 1500);
  EXPECT_TRUE(IsRefused<std::vector<FieldRemaining>>("*2\r\n$1\r\n7\r\n$1\r\n1\r\n"));
}

struct ErrorCase {
  std::string_view wire;
  Verdict verdict;
  StatusCode code;
};

TEST(Reply, WhatErrorsMean) {
  const ErrorCase cases[] = {
      {"-WRONGTYPE Operation against a key holding the wrong kind of value\r\n", Verdict::kRefused,
       StatusCode::kWrongKind},
      {"-WRONGTYPE Operation against a key holding the wrong kind of value script: 5bc, on @user_script:97.\r\n",
       Verdict::kRefused, StatusCode::kWrongKind},
      {"-ERR value is not an integer or out of range\r\n", Verdict::kRefused, StatusCode::kWrongKind},
      {"-ERR increment or decrement would overflow\r\n", Verdict::kRefused, StatusCode::kFailed},
      {"-ERR no such key\r\n", Verdict::kRefused, StatusCode::kFailed},
      {"-ERR index out of range\r\n", Verdict::kRefused, StatusCode::kFailed},
      {"-OOM command not allowed when used memory > 'maxmemory'.\r\n", Verdict::kRefused, StatusCode::kOutOfMemory},
      {"-READONLY You can't write against a read only replica.\r\n", Verdict::kRefused, StatusCode::kReadOnly},
      {"-NOPERM this user has no permissions to run the 'set' command\r\n", Verdict::kRefused, StatusCode::kReadOnly},
      {"-MISCONF Redis is configured to save RDB snapshots\r\n", Verdict::kRefused, StatusCode::kReadOnly},
      {"-NOAUTH Authentication required.\r\n", Verdict::kRefused, StatusCode::kUnavailable},
      {"-WRONGPASS invalid username-password pair or user is disabled.\r\n", Verdict::kRefused,
       StatusCode::kUnavailable},
      {"-ERR max number of clients reached\r\n", Verdict::kRefused, StatusCode::kUnavailable},
      {"-LOADING Redis is loading the dataset in memory\r\n", Verdict::kLater, StatusCode::kUnavailable},
      {"-CLUSTERDOWN The cluster is down\r\n", Verdict::kLater, StatusCode::kUnavailable},
      {"-TRYAGAIN Multiple keys request during rehashing of slot\r\n", Verdict::kLater, StatusCode::kUnavailable},
      {"-MASTERDOWN Link with MASTER is down\r\n", Verdict::kLater, StatusCode::kUnavailable},
      {"-BUSY Redis is busy running a script.\r\n", Verdict::kLater, StatusCode::kUnavailable},
      {"-NOSCRIPT No matching script. Please use EVAL.\r\n", Verdict::kNoScript, StatusCode::kFailed},
      {"-MOVED 3999 127.0.0.1:6381\r\n", Verdict::kMoved, StatusCode::kFailed},
      {"-ASK 3999 127.0.0.1:6381\r\n", Verdict::kAsk, StatusCode::kFailed},
  };
  for (const ErrorCase& one : cases) {
    EXPECT_EQ(Judge(*Recorded(one.wire)), one.verdict) << one.wire;
    EXPECT_EQ(StatusOf(*Recorded(one.wire)).code(), one.code) << one.wire;
  }
  EXPECT_EQ(Judge(*Recorded("$9\r\nWRONGTYPE\r\n")), Verdict::kDone);
}

TEST(Reply, Redirections) {
  const ServerAddress asked = {"10.0.0.1", 7000};
  auto found = ParseRedirection("MOVED 3999 127.0.0.1:6381", asked);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->slot, 3999);
  EXPECT_EQ(found->node, (ServerAddress{"127.0.0.1", 6381}));
  EXPECT_EQ(ParseRedirection("ASK 1 :6381", asked)->node, (ServerAddress{"10.0.0.1", 6381}));
  EXPECT_EQ(ParseRedirection("MOVED 1 ::1:6381", asked)->node, (ServerAddress{"::1", 6381}));
  for (const std::string_view wrong :
       {"MOVED", "MOVED 1", "MOVED x h:1", "MOVED -1 h:1", "MOVED 1 h", "MOVED 1 h:x", "MOVED 1 h:0", "MOVED 1x h:1"}) {
    EXPECT_FALSE(ParseRedirection(wrong, asked)) << wrong;
  }
}

TEST(Reply, InfoLines) {
  constexpr std::string_view kInfo = "# Persistence\r\nrdb_saves_total:4\r\nrdb_saves:3\r\nlast:x";
  EXPECT_EQ(InfoValue(kInfo, "rdb_saves"), "3");
  EXPECT_EQ(InfoValue(kInfo, "last"), "x");
  EXPECT_EQ(InfoValue(kInfo, "none"), "");
}

}  // namespace
}  // namespace hostkit
