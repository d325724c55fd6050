// Answers of servers, as they came over the wire.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "hostkit/server_reply.h"

namespace hostkit {

// A text on the wire.
inline std::string Bulk(const std::string& text) { return '$' + std::to_string(text.size()) + "\r\n" + text + "\r\n"; }

inline ReplyPtr Recorded(std::string_view wire) {
  redisReader* reader = redisReaderCreate();
  void* reply = nullptr;
  EXPECT_EQ(redisReaderFeed(reader, wire.data(), wire.size()), REDIS_OK);
  EXPECT_EQ(redisReaderGetReply(reader, &reply), REDIS_OK);
  redisReaderFree(reader);
  EXPECT_NE(reply, nullptr) << wire;
  return ReplyPtr(static_cast<redisReply*>(reply));
}

}  // namespace hostkit
