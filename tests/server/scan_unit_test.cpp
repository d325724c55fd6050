// A scan of nodes that hand keys out twice, lose slots and go away.
#include <gtest/gtest.h>

#include <algorithm>

#include "fake_nodes.h"
#include "hostkit/server_scan.h"

namespace hostkit {
namespace {

using std::chrono::milliseconds;

std::string Bulk(const std::string& text) { return '$' + std::to_string(text.size()) + "\r\n" + text + "\r\n"; }

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

  std::vector<std::string> Visit(std::int64_t remembered = 1000) {
    ServerScan scan(&router, options, {0, "*"}, Bring::kNames, {remembered, 10});
    Status status = scan.Start();
    std::vector<Element> elements;
    for (std::size_t before = 1; status.ok() && before != elements.size();) {
      before = elements.size();
      status = scan.Next(2, &elements);
    }
    EXPECT_TRUE(status.ok()) << status.text();
    std::vector<std::string> names;
    for (const Element& element : elements) names.push_back(element.name);
    return names;
  }

  using Names = std::vector<std::string>;
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

}  // namespace
}  // namespace hostkit
