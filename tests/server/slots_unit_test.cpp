#include <gtest/gtest.h>

#include <string>

#include "hostkit/server_slots.h"
#include "recorded.h"

namespace hostkit {
namespace {

TEST(Slots, OfKeys) {
  EXPECT_EQ(SlotOf("123456789"), 0x31C3);  // the checksum's well-known example, below the number of slots
  EXPECT_EQ(SlotOf(""), 0);
  EXPECT_EQ(SlotOf("foo"), 12182);
  EXPECT_EQ(SlotOf("0:{user1000}.following"), SlotOf("37:{user1000}.followers"));
  EXPECT_EQ(SlotOf("foo{bar}{zap}"), SlotOf("bar"));
  EXPECT_EQ(SlotOf("{bar"), SlotOf("{bar"));
  EXPECT_EQ(SlotOf("foo{}{bar}"), 8363);  // an empty tag is none, and there is no second one
  EXPECT_EQ(SlotOf("foo{{bar}}zap"), SlotOf("{bar"));
}

constexpr std::string_view kThreeNodes =
    "*3\r\n"
    "*4\r\n:0\r\n:5460\r\n"
    "*4\r\n$9\r\n127.0.0.1\r\n:7000\r\n$40\r\n0250140aace398784a1360d829cbfc666b3ff8b2\r\n*0\r\n"
    "*4\r\n$9\r\n127.0.0.1\r\n:7003\r\n$40\r\n4cf4979fb868336fbd60a0ce4acfc6a5ee3c8688\r\n*0\r\n"
    "*3\r\n:5461\r\n:10922\r\n*4\r\n$9\r\n127.0.0.1\r\n:7001\r\n$40\r\n48ccb4c26e138b2bdb6671df0c99aa6057825549\r\n*"
    "0\r\n"
    "*3\r\n:10924\r\n:16383\r\n*4\r\n$-1\r\n:7002\r\n$40\r\na4598293603763be528d8b25bb5325ea60df293a\r\n*0\r\n";

TEST(Slots, MapFromACluster) {
  SlotMap map;
  ASSERT_TRUE(map.Load(*Recorded(kThreeNodes), {"10.0.0.9", 7002}));
  EXPECT_EQ(*map.OwnerOf(0), (ServerAddress{"127.0.0.1", 7000}));
  EXPECT_EQ(*map.OwnerOf(5460), (ServerAddress{"127.0.0.1", 7000}));
  EXPECT_EQ(*map.OwnerOf(5461), (ServerAddress{"127.0.0.1", 7001}));
  EXPECT_EQ(map.OwnerOf(10923), nullptr);
  EXPECT_EQ(*map.OwnerOf(16383), (ServerAddress{"10.0.0.9", 7002}));  // it does not know its own host
  ASSERT_EQ(map.shards().size(), 3U);
  EXPECT_EQ(map.shards()[0].replicas, (std::vector<ServerAddress>{{"127.0.0.1", 7003}}));
}

TEST(Slots, ANodeWithoutANameIsTheOneThatWasAsked) {
  for (const std::string name : {"$-1", "$0\r\n", "$1\r\n?"}) {
    SlotMap map;
    const std::string wire = "*1\r\n*3\r\n:0\r\n:5\r\n*2\r\n" + name + "\r\n:7000\r\n";
    ASSERT_TRUE(map.Load(*Recorded(wire), {"10.0.0.9", 7002})) << wire;
    EXPECT_EQ(*map.OwnerOf(5), (ServerAddress{"10.0.0.9", 7000}));
  }
}

TEST(Slots, AMoveTakesOneSlot) {
  SlotMap map;
  ASSERT_TRUE(map.Load(*Recorded(kThreeNodes), {}));
  map.Assign(7, {"127.0.0.1", 7001});
  map.Assign(8, {"127.0.0.1", 7999});
  EXPECT_EQ(map.OwnerOf(7)->port, 7001);
  EXPECT_EQ(map.OwnerOf(8)->port, 7999);
  EXPECT_EQ(map.OwnerOf(9)->port, 7000);
}

TEST(Slots, OtherRepliesLeaveTheMapAsItIs) {
  SlotMap map;
  ASSERT_TRUE(map.Load(*Recorded(kThreeNodes), {}));
  for (const std::string_view wrong :
       {"+OK\r\n", "*1\r\n+OK\r\n", "*1\r\n*2\r\n:0\r\n:1\r\n", "*1\r\n*3\r\n:0\r\n:16384\r\n*2\r\n$1\r\nh\r\n:1\r\n",
        "*1\r\n*3\r\n:-1\r\n:5\r\n*2\r\n$1\r\nh\r\n:1\r\n", "*1\r\n*3\r\n:0\r\n:5\r\n*2\r\n$1\r\nh\r\n:0\r\n",
        "*1\r\n*3\r\n:0\r\n:5\r\n*2\r\n:1\r\n:1\r\n", "*1\r\n*3\r\n:9\r\n:5\r\n*2\r\n$1\r\nh\r\n:1\r\n",
        "*1\r\n*3\r\n+0\r\n:5\r\n*2\r\n$1\r\nh\r\n:1\r\n", "*1\r\n*3\r\n:0\r\n+5\r\n*2\r\n$1\r\nh\r\n:1\r\n",
        "*1\r\n*3\r\n:0\r\n:5\r\n*2\r\n$1\r\nh\r\n:65536\r\n", "*1\r\n*3\r\n:0\r\n:5\r\n*2\r\n$1\r\nh\r\n$1\r\n1\r\n",
        "*1\r\n*3\r\n:0\r\n:5\r\n$1\r\nh\r\n", "*1\r\n*3\r\n:0\r\n:5\r\n*1\r\n$1\r\nh\r\n",
        "*1\r\n*4\r\n:0\r\n:5\r\n*2\r\n$1\r\nh\r\n:1\r\n:2\r\n"}) {
    EXPECT_FALSE(map.Load(*Recorded(wrong), {})) << wrong;
    EXPECT_EQ(map.OwnerOf(0)->port, 7000);
  }
}

}  // namespace
}  // namespace hostkit
