#include <gtest/gtest.h>

#include "hostkit/server_pattern.h"
#include "hostkit/server_scripts.h"

namespace hostkit {
namespace {

TEST(Scripts, Digests) {
  EXPECT_EQ(Sha1(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
  EXPECT_EQ(Sha1("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
  EXPECT_EQ(Sha1(std::string(64, 'a')), "0098ba824b5c16427bd7a1122a5a442a25ec644d");
  EXPECT_EQ(Sha1(std::string(1000000, 'a')), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

TEST(Pattern, InAServersWords) {
  EXPECT_EQ(ServerPattern("", 4, "*"), "4:*");
  EXPECT_EQ(ServerPattern("a*[b]?\\", 37, "x?\\*"), "a\\*\\[b\\]\\?\\\\37:x?\\*");
  EXPECT_EQ(ServerPattern("", 0, "[abc]x"), "0:[abc]x");
  EXPECT_EQ(ServerPattern("", 0, "[a-c]"), "0:[abc]");
  EXPECT_EQ(ServerPattern("", 0, "[]a]"), "0:[\\]a]");
  EXPECT_EQ(ServerPattern("", 0, "[a"), "0:\\[a");
  EXPECT_EQ(ServerPattern("", 0, "a\\"), "0:a\\");
  // Every byte but NUL and the one that is left out.
  EXPECT_EQ(ServerPattern("", 0, "[^a]").size(), std::string("0:[]").size() + 254 + std::string("*?[]\\^-").size());
}

}  // namespace
}  // namespace hostkit
