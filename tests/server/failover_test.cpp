// A cluster whose masters are killed and come back, and whose slots move, while a client writes.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "hostkit/server_reply.h"
#include "store.h"

extern char** environ;

namespace hostkit {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

// Waits until the condition holds; false if it does not in that time.
template <typename Condition> bool Await(seconds limit, Condition condition) {
  for (const Clock::time_point end = Clock::now() + limit; Clock::now() < end;) {
    if (condition()) return true;
    std::this_thread::sleep_for(milliseconds(50));
  }
  return false;
}

struct Node {
  ServerAddress address;
  pid_t process;
  std::string config;
};

Node NodeAt(int port) {
  const ServerAddress address = {"127.0.0.1", port};
  const std::string info = Ask(address, "--raw info server");
  std::string text;
  for (const char byte : info)
    text += byte == '\n' && !text.ends_with('\r') ? std::string("\r\n") : std::string(1, byte);
  return {address, std::stoi(std::string(InfoValue(text, "process_id"))), std::string(InfoValue(text, "config_file"))};
}

void Restart(const Node& node) {
  std::string program = "redis-server";
  std::string config = node.config;
  char* const arguments[] = {program.data(), config.data(), nullptr};
  pid_t process = 0;
  ASSERT_EQ(posix_spawnp(&process, "redis-server", nullptr, nullptr, arguments, environ), 0);
}

bool IsWhole(const ServerAddress& node) {
  return Ask(node, "cluster info").find("cluster_state:ok") != std::string::npos;
}

// The port of the master that has the slot, as the node sees it.
int OwnerOf(const ServerAddress& node, int slot) {
  std::string lines = Ask(node, "cluster nodes");
  for (std::size_t at = 0; at < lines.size();) {
    const std::string line = lines.substr(at, lines.find('\n', at) - at);
    at += line.size() + 1;
    if (line.find("master") == std::string::npos || line.find("fail") != std::string::npos) continue;
    int first = 0;
    int last = 0;
    for (std::size_t word = line.find("connected"); word != std::string::npos; word = line.find(' ', word + 1)) {
      const int found = std::sscanf(line.c_str() + word, " %d-%d", &first, &last);
      if (found >= 1 && slot >= first && slot <= (found == 2 ? last : first)) {
        const std::size_t colon = line.find(':');
        return std::stoi(line.substr(colon + 1));
      }
    }
  }
  return 0;
}

// What happens to the cluster.
class Chaos {
 public:
  // Kills the master of a slot, waits until another one has the slot, and brings it back.
  void KillMasterOf(int slot) {
    const int port = OwnerOf(Other(0), slot);
    ASSERT_NE(port, 0);
    const Node node = NodeAt(port);
    ASSERT_EQ(kill(node.process, SIGKILL), 0);
    const ServerAddress witness = Other(port);
    ASSERT_TRUE(Await(seconds(30), [&] {
      const int owner = OwnerOf(witness, slot);
      return owner != 0 && owner != port && IsWhole(witness);
    })) << "no failover";
    std::this_thread::sleep_for(seconds(1));  // commands go to a master without a replica
    Restart(node);
    ASSERT_TRUE(Await(seconds(30), [&] {
      return Ask(node.address, "info replication").find("master_link_status:up") != std::string::npos;
    })) << "the node does not come back";
  }

  void MoveSlots(int slot, int other_slot, int count) {
    const ServerAddress witness = Other(0);
    const auto name_of = [&](int port) { return Ask({"127.0.0.1", port}, "cluster myid"); };
    const int from = OwnerOf(witness, slot);
    const int to = OwnerOf(witness, other_slot);
    ASSERT_NE(from, to);
    // Resharding is refused as long as a node has not heard of the last failover.
    std::string output;
    ASSERT_TRUE(Await(seconds(30), [&] { return Manage("check " + ToText(witness), &output); })) << output;
    ASSERT_TRUE(Manage("reshard " + ToText(witness) + " --cluster-from " + name_of(from) + " --cluster-to " +
                           name_of(to) + " --cluster-slots " + std::to_string(count) + " --cluster-yes",
                       &output))
        << output;
  }

 private:
  // Whether redis-cli's manager of clusters succeeds, and what it says.
  static bool Manage(const std::string& what, std::string* output) {
    return RunCommand("redis-cli --cluster " + what + " 2>&1", output) == 0;
  }

  // A node of the cluster that is not at that port.
  static ServerAddress Other(int port) {
    static const std::vector<int> ports = [] {
      std::vector<int> all;
      const std::string lines = Ask(StoreAddress(), "cluster nodes");
      for (std::size_t at = lines.find(':'); at != std::string::npos; at = lines.find(':', lines.find('\n', at))) {
        all.push_back(std::stoi(lines.substr(at + 1)));
        if (lines.find('\n', at) == std::string::npos) break;
      }
      return all;
    }();
    for (const int candidate : ports) {
      if (candidate != port && Ask({"127.0.0.1", candidate}, "ping") == "PONG") return {"127.0.0.1", candidate};
    }
    return {"127.0.0.1", ports.front()};
  }
};

// Numbers that were written, by what became of the write.
struct Written {
  std::set<std::string> acknowledged;
  std::set<std::string> unknown;

  void Note(const std::string& what, const Status& status) {
    if (status.ok()) acknowledged.insert(what);
    if (status.code() == StatusCode::kOutcomeUnknown) unknown.insert(what);
  }

  // Everything that was acknowledged is there, nothing is twice, and nothing is there that was refused.
  void Check(const std::vector<std::string>& stored) const {
    std::map<std::string, int> counts;
    for (const std::string& one : stored) ++counts[one];
    for (const auto& [what, count] : counts) {
      EXPECT_EQ(count, 1) << what;
      EXPECT_TRUE(acknowledged.contains(what) || unknown.contains(what)) << what << " was refused, and is there";
    }
    for (const std::string& what : acknowledged) EXPECT_TRUE(counts.contains(what)) << what << " is lost";
  }
};

TEST(Failover, NothingAcknowledgedIsLostAndNothingIsTwice) {
  constexpr int kKeys = 12;
  const std::string name = StoreName("wait=1&timeout=1200");
  const std::unique_ptr<Engine> writer = OpenNamed(name);
  Chaos chaos;
  std::atomic<bool> over = false;
  std::thread controller([&] {
    std::this_thread::sleep_for(milliseconds(300));
    chaos.KillMasterOf(0);
    if (!::testing::Test::HasFailure()) chaos.KillMasterOf(16383);
    if (!::testing::Test::HasFailure()) chaos.MoveSlots(0, 16383, 300);
    std::this_thread::sleep_for(milliseconds(300));
    over = true;
  });

  std::vector<Written> lists(kKeys);
  std::vector<Written> sets(kKeys);
  std::vector<std::pair<std::int64_t, std::int64_t>> counters(kKeys);  // acknowledged, unknown
  std::size_t refused = 0;
  for (int number = 0; !over; ++number) {
    const auto key = static_cast<std::size_t>(number % kKeys);
    const std::string suffix = std::to_string(key);
    const std::string what = std::to_string(number);
    std::int64_t count = 0;
    bool added = false;
    const Status pushed = writer->ListPush({0, "list" + suffix}, End::kTail, what, &count);
    lists[key].Note(what, pushed);
    sets[key].Note(what, writer->SetAdd({0, "set" + suffix}, what, &added));
    const Status counted = writer->Increment({0, "count" + suffix}, &count);
    if (counted.ok()) ++counters[key].first;
    if (counted.code() == StatusCode::kOutcomeUnknown) ++counters[key].second;
    if (!pushed.ok() && pushed.code() != StatusCode::kOutcomeUnknown) ++refused;
  }
  controller.join();

  const std::unique_ptr<Engine> reader = OpenNamed(name);
  std::size_t acknowledged = 0;
  std::size_t unknown = 0;
  for (std::size_t key = 0; key < kKeys; ++key) {
    const std::string suffix = std::to_string(key);
    std::vector<std::string> values;
    ASSERT_TRUE(reader->ListRange({0, "list" + suffix}, 0, -1, &values).ok());
    lists[key].Check(values);
    values.clear();
    ASSERT_TRUE(reader->SetMembers({0, "set" + suffix}, &values).ok());
    sets[key].Check(values);
    std::optional<std::string> count;
    ASSERT_TRUE(reader->Get({0, "count" + suffix}, &count).ok());
    const std::int64_t stored = std::stoll(count.value_or("0"));
    EXPECT_GE(stored, counters[key].first);
    EXPECT_LE(stored, counters[key].first + counters[key].second);
    acknowledged += lists[key].acknowledged.size();
    unknown += lists[key].unknown.size();
    bool added = false;
    EXPECT_TRUE(reader->SetAdd({0, "set" + suffix}, "after", &added).ok()) << "commands do not work again";
  }
  EXPECT_GT(acknowledged, 20 * (unknown + refused)) << "two failovers and a move cost a few writes";
  std::printf("%zu elements acknowledged, %zu unknown, %zu refused\n", acknowledged, unknown, refused);
}

TEST(Failover, AScanWhileSlotsMoveFindsEachKeyOnce) {
  constexpr int kKeys = 2000;
  const std::unique_ptr<Engine> engine = OpenStore("timeout=60000");  // moving takes long on a busy machine
  for (int number = 0; number < kKeys; ++number) {
    ASSERT_TRUE(engine->Set({0, "key" + std::to_string(number)}, "v", {}).ok());
  }
  Chaos chaos;
  for (const auto& [from, to] : {std::pair(16383, 8000), std::pair(8000, 16383)}) {
    std::atomic<bool> over = false;
    std::thread controller([&, from = from, to = to] {
      chaos.MoveSlots(from, to, 400);
      over = true;
    });
    for (bool last = false; !last;) {
      last = over;
      std::unique_ptr<Cursor> cursor;
      ASSERT_TRUE(engine->Scan({0, "*"}, Bring::kStrings, &cursor).ok());
      std::map<std::string, int> visits;
      for (std::vector<Element> batch;;) {
        batch.clear();
        const Status status = cursor->Next(100, &batch);
        EXPECT_TRUE(status.ok()) << status.text();
        if (batch.empty()) break;
        for (const Element& element : batch) ++visits[element.name];
      }
      EXPECT_EQ(visits.size(), static_cast<std::size_t>(kKeys));
      for (const auto& [name, count] : visits) EXPECT_EQ(count, 1) << name;
    }
    controller.join();
  }
}

}  // namespace
}  // namespace hostkit
