// A scan of nodes that hand keys out twice, lose slots and go away.
#include <gtest/gtest.h>

#include <algorithm>

#include "fake_nodes.h"
#include "hostkit/server_scan.h"
#include "recorded.h"

namespace hostkit {
namespace {

using std::chrono::milliseconds;

// What SCAN answers.
Turn Page(const std::string& cursor, const std::vector<std::string>& keys) {
  std::string wire = "*2\r\n" + Bulk(cursor) + '*' + std::to_string(keys.size()) + "\r\n";
  for (const std::string& key : keys) wire += Bulk("0:" + key);
  return {Delivery::kAnswered, wire};
}

const Turn kSize = {Delivery::kAnswered, ":4\r\n"};
// What a node answers to CLUSTER NODES; open is how its line ends.
Turn NodesLine(const std::string& open) {
  return {Delivery::kAnswered,
          Bulk("id2 h:2@3 master - 0 0 2 connected\nid h:1@2 myself,master - 0 0 1 connected 0-1" + open + '\n')};
}

class ScanTest : public ::testing::Test {
 protected:
  void Connect(bool cluster) {
    nodes.At(1, {{Delivery::kAnswered, cluster ? Slots(1, 2) : "+PONG\r\n"}});
    ASSERT_TRUE(router.Connect(cluster, CallEnd(milliseconds(100))).ok());
  }

  // Scans to the end or to a failure.
  Status Scan(Bring bring, std::int64_t remembered = 1000, milliseconds limit = milliseconds(0)) {
    ServerScan scan(&router, options, {0, "*", limit}, bring, {remembered, 10});
    Status status = scan.Start();
    elements.clear();
    for (std::size_t before = 1; status.ok() && before != elements.size();) {
      before = elements.size();
      status = scan.Next(2, &elements);
    }
    return status;
  }

  std::vector<std::string> Visit(std::int64_t remembered = 1000) {
    const Status status = Scan(Bring::kNames, remembered);
    EXPECT_TRUE(status.ok()) << status.text();
    std::vector<std::string> names;
    names.reserve(elements.size());
    for (const Element& element : elements) names.push_back(element.name);
    return names;
  }

  using Names = std::vector<std::string>;
  std::vector<Element> elements;
  ServerOptions options{{{"127.0.0.1", 1}}, "", "", "", milliseconds(100), milliseconds(1000), 0};
  Nodes nodes;
  Router router{options, nodes.Maker(), nodes.Sleeper()};
};

TEST_F(ScanTest, AKeyThatComesAgainIsLeftOut) {
  Connect(false);
  nodes.At(1, {kSize, Page("7", {"a", "b", "c"}), Page("3", {}), Page("0", {"c", "b", "d"})});
  EXPECT_EQ(Visit(), (Names{"a", "b", "c", "d"}));
}

TEST_F(ScanTest, AStoreThatIsTooLargeIsWalkedInParts) {
  Connect(false);
  nodes.At(1, {kSize, Page("0", {"a", "b", "c", "d"}), Page("0", {"d", "c", "b", "a"})});
  Names names = Visit(2);
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (Names{"a", "b", "c", "d"}));
}

// Nodes are walked from the last to the first: 2, then 1, of which 1 answers for the cluster.
TEST_F(ScanTest, SlotsThatHaveMovedAreWalkedAtTheirNewNode) {
  Connect(true);
  const Turn before = {Delivery::kAnswered, Slots(1, 2)};
  const Turn after = {Delivery::kAnswered, Slots(1, 3)};
  nodes.At(2, {kSize, Page("0", {"a", "b"}), NodesLine("")});
  nodes.At(1, {before, kSize, after, Page("0", {"x"}), NodesLine(""), after});
  nodes.At(3, {Page("0", {"b", "c"}), NodesLine("")});
  EXPECT_EQ(Visit(), (Names{"a", "b", "x", "c"}));
}

TEST_F(ScanTest, ANodeIsWalkedAgainAsLongAsSlotsLeaveIt) {
  Connect(true);
  const Turn slots = {Delivery::kAnswered, Slots(1, 2)};
  nodes.At(1, {slots, kSize, slots, Page("0", {"x"}), NodesLine(""), slots});
  nodes.At(2, {kSize, Page("0", {"a"}), NodesLine(" [9000->-id]"), Page("0", {"b", "a"}), NodesLine("")});
  EXPECT_EQ(Visit(), (Names{"a", "x", "b"}));
}

TEST_F(ScanTest, AValueThatAPageLeavesOutIsRead) {
  Connect(false);
  nodes.At(1, {kSize,
               {Delivery::kAnswered,
                "*7\r\n" + Bulk("0") + Bulk("0:a") + Bulk("v") + Bulk("0:b") + "$-1\r\n" + Bulk("0:c") + "$-1\r\n"},
               {Delivery::kAnswered, Bulk("large")},
               {Delivery::kAnswered, "$-1\r\n"}});
  ASSERT_TRUE(Scan(Bring::kStrings).ok());
  ASSERT_EQ(elements.size(), 3U);
  EXPECT_EQ(elements[0].value, "v");
  EXPECT_EQ(elements[1].value, "large");
  EXPECT_EQ(elements[2].value, "") << "it has gone meanwhile";
  nodes.At(1, {kSize,
               {Delivery::kAnswered, "*3\r\n" + Bulk("0") + Bulk("0:b") + "$-1\r\n"},
               {Delivery::kAnswered, "-NOPERM no\r\n"}});
  EXPECT_EQ(Scan(Bring::kStrings).code(), StatusCode::kReadOnly);
}

TEST_F(ScanTest, AServerThatRefusesEndsIt) {
  Connect(false);
  nodes.At(1, {kSize, {Delivery::kAnswered, "-NOPERM no\r\n"}});
  for (const Bring bring : {Bring::kNames, Bring::kStrings}) EXPECT_EQ(Scan(bring).code(), StatusCode::kReadOnly);
  nodes.At(1, {kSize, {Delivery::kNotSent, ""}});
  EXPECT_EQ(Scan(Bring::kNames).code(), StatusCode::kUnavailable) << "no other node has its keys";
}

TEST_F(ScanTest, PagesOfAnotherFormAreTold) {
  Connect(false);
  const std::string cursor = Bulk("0");
  for (const std::string& page :
       Names{"+OK\r\n", "*1\r\n" + cursor, "*2\r\n:0\r\n*0\r\n", "*2\r\n" + cursor + "+OK\r\n",
             "*2\r\n" + cursor + "*1\r\n:1\r\n", "*2\r\n" + cursor + "*2\r\n" + Bulk("0") + Bulk("0:a")}) {
    nodes.At(1, {kSize, {Delivery::kAnswered, page}});
    EXPECT_EQ(Scan(Bring::kNames).code(), StatusCode::kFailed) << page;
  }
  for (const std::string& page :
       Names{"+OK\r\n", "*2\r\n" + cursor + Bulk("0:a"), "*1\r\n:0\r\n", "*3\r\n" + cursor + ":1\r\n" + Bulk("v"),
             "*5\r\n" + cursor + Bulk("0") + Bulk("v") + Bulk("0:a") + Bulk("v")}) {
    nodes.At(1, {kSize, {Delivery::kAnswered, page}});
    EXPECT_EQ(Scan(Bring::kStrings).code(), StatusCode::kFailed) << page;
  }
}

// A cluster is asked for its slots, which may be on the move, when a node is walked and when all are.
TEST_F(ScanTest, AnswersOfAClusterThatCannotBeUsedAreTold) {
  Connect(true);
  const Turn slots = {Delivery::kAnswered, Slots(1, 2)};
  const Turn refusal = {Delivery::kAnswered, "-NOPERM no\r\n"};
  nodes.At(2, {kSize, Page("0", {}), refusal});
  nodes.At(1, {slots, kSize});
  EXPECT_EQ(Scan(Bring::kNames).code(), StatusCode::kReadOnly);
  for (const std::string& lines : Names{":1\r\n", Bulk("id h:1@2 master - 0 0 1 connected 0-1\n")}) {
    nodes.At(2, {kSize, Page("0", {}), {Delivery::kAnswered, lines}});
    nodes.At(1, {slots, kSize});
    EXPECT_EQ(Scan(Bring::kNames).code(), StatusCode::kFailed) << lines;
  }
  nodes.At(2, {kSize, Page("0", {}), NodesLine(""), refusal});
  nodes.At(1, {slots, kSize, refusal});
  EXPECT_EQ(Scan(Bring::kNames).code(), StatusCode::kReadOnly);
  nodes.At(2, {kSize, Page("0", {}), NodesLine("")});
  nodes.At(1, {slots, kSize, slots, Page("0", {}), NodesLine(""), slots, refusal});
  EXPECT_EQ(Scan(Bring::kNames).code(), StatusCode::kReadOnly);
}

TEST_F(ScanTest, SlotsThatThereAreNotDoNotMove) {
  Connect(true);
  const Turn slots = {Delivery::kAnswered, Slots(1, 2)};
  nodes.At(2, {kSize, Page("0", {"a"}), NodesLine(" [16384->-id] [-1->-id]")});
  nodes.At(1, {slots, kSize, slots, Page("0", {"b"}), NodesLine(""), slots});
  EXPECT_EQ(Visit(), (Names{"a", "b"}));
}

TEST_F(ScanTest, AReplicaIsWalkedInPlaceOfItsLostMaster) {
  Connect(true);
  const Turn before = {Delivery::kAnswered, Slots(1, 2)};
  const Turn after = {Delivery::kAnswered, Slots(1, 3)};
  nodes.At(2, {kSize, Page("7", {"a", "b"}), {Delivery::kNotSent, ""}});
  nodes.At(1, {before, kSize, after, after, Page("0", {"x"}), NodesLine(""), after});
  nodes.At(3, {Page("0", {"c", "b"}), NodesLine("")});
  EXPECT_EQ(Visit(), (Names{"a", "b", "c", "x"}));
  const Names& log = nodes.whole_log();
  EXPECT_EQ(std::count(log.begin(), log.end(), "3 SCAN 0 MATCH 0:* COUNT 10"), 1) << "from its beginning";
}

TEST_F(ScanTest, SlotsThatStayOnTheMoveEndItInTime) {
  Connect(true);
  const Turn page = Page("0", {"a"});
  const Turn moving = NodesLine(" [9000->-id]");
  nodes.At(2, {kSize, page, moving, page, moving, page, moving});
  const Turn slots = {Delivery::kAnswered, Slots(1, 2)};
  nodes.At(1, {slots, kSize, slots, Page("0", {"x"}), NodesLine(""), slots});
  const Status status = Scan(Bring::kNames, 1000, milliseconds(150));
  EXPECT_EQ(status.code(), StatusCode::kUnavailable);
  EXPECT_NE(status.text().find("moving"), std::string::npos);
}

// What a slot without an owner holds cannot be told.
TEST_F(ScanTest, AClusterThatHasLostSlotsIsNotScannedToItsEnd) {
  Connect(true);
  const Turn half = {Delivery::kAnswered, "*1\r\n*3\r\n:0\r\n:8191\r\n*2\r\n$9\r\n127.0.0.1\r\n:1\r\n"};
  nodes.At(1, {half, kSize, Page("0", {"a"}), NodesLine(""), half});
  const Status status = Scan(Bring::kNames, 1000, milliseconds(150));
  EXPECT_EQ(status.code(), StatusCode::kUnavailable);
  EXPECT_NE(status.text().find("slots"), std::string::npos);
}

}  // namespace
}  // namespace hostkit
