#include "hostkit/glob.h"

#include <gtest/gtest.h>

#include <string>

namespace hostkit {
namespace {

TEST(Glob, TakesPlainTextAsItIs) {
  EXPECT_TRUE(GlobMatches("port:1", "port:1"));
  EXPECT_FALSE(GlobMatches("port:1", "port:12"));
  EXPECT_FALSE(GlobMatches("port:12", "port:1"));
  EXPECT_FALSE(GlobMatches("", "x"));
  EXPECT_TRUE(GlobMatches("", ""));
}

TEST(Glob, StarTakesAnyBytes) {
  EXPECT_TRUE(GlobMatches("*", ""));
  EXPECT_TRUE(GlobMatches("a*", "a"));
  EXPECT_TRUE(GlobMatches("*:*:x", "a:b:c:x"));
  EXPECT_FALSE(GlobMatches("*:*:x", "a:x"));
  EXPECT_TRUE(GlobMatches("a**b", "ab"));
  EXPECT_TRUE(GlobMatches("a**", "a"));
  EXPECT_TRUE(GlobMatches("a**", "abc"));
  EXPECT_FALSE(GlobMatches("a**", "b"));
  EXPECT_TRUE(GlobMatches("*\xff*", "a\xff\x01"));
}

TEST(Glob, ManyStarsStayQuick) {
  std::string pattern;
  for (int index = 0; index < 100; ++index) pattern += "a*";
  EXPECT_FALSE(GlobMatches(pattern + "b", std::string(500, 'a')));
}

TEST(Glob, QuestionMarkTakesOneByte) {
  EXPECT_TRUE(GlobMatches("a?c", "abc"));
  EXPECT_FALSE(GlobMatches("a?c", "ac"));
  EXPECT_FALSE(GlobMatches("?", ""));
}

TEST(Glob, Sets) {
  EXPECT_TRUE(GlobMatches("p[0-3a]", "p2"));
  EXPECT_TRUE(GlobMatches("p[0-3a]", "pa"));
  EXPECT_FALSE(GlobMatches("p[0-3a]", "p4"));
  EXPECT_TRUE(GlobMatches("p[^0-3]", "p4"));
  EXPECT_FALSE(GlobMatches("p[^0-3]", "p0"));
  EXPECT_TRUE(GlobMatches("p[3-0]", "p2"));
  EXPECT_TRUE(GlobMatches("[]]", "]"));
  EXPECT_TRUE(GlobMatches("[a-]", "-"));
  EXPECT_TRUE(GlobMatches("[\\]x]", "]"));
  EXPECT_TRUE(GlobMatches("[Z-\\]]", "["));
  EXPECT_TRUE(GlobMatches("[Z-\\]]", "]"));
  EXPECT_FALSE(GlobMatches("[Z-\\]]", "^"));
  EXPECT_FALSE(GlobMatches("[Z-\\]]", "\\]")) << "the escaped bracket does not end the set";
  EXPECT_TRUE(GlobMatches("[a-\\]]", "^")) << "a range goes either way";
  EXPECT_FALSE(GlobMatches("[a-\\]]", "\\")) << "the escape is not the range's end";
  EXPECT_TRUE(GlobMatches("[\xf0-\xff]", "\xf8"));
  EXPECT_FALSE(GlobMatches("[a]", ""));
}

TEST(Glob, AnUnfinishedSetOrEscapeIsText) {
  EXPECT_TRUE(GlobMatches("[ab", "[ab"));
  EXPECT_FALSE(GlobMatches("[ab", "a"));
  EXPECT_TRUE(GlobMatches("a\\", "a\\"));
  EXPECT_TRUE(GlobMatches("[", "["));
}

TEST(Glob, BackslashTakesTheNextByteAsItIs) {
  EXPECT_TRUE(GlobMatches("\\*", "*"));
  EXPECT_FALSE(GlobMatches("\\*", "a"));
  EXPECT_TRUE(GlobMatches("*\\?", "why?"));
  EXPECT_FALSE(GlobMatches("*\\?", "why!"));
}

}  // namespace
}  // namespace hostkit
