#include "hostkit/snapshot.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

#include "allocation_failures.h"
#include "kit_fixture.h"

namespace hostkit {
namespace {

bool IsEmpty(const Store& store) {
  for (int db = 0; db < kDatabaseCount; ++db) {
    if (!store.Names(db).empty()) return false;
  }
  return true;
}

class Snapshots : public KitTest {
 protected:
  void SetUp() override {
    std::string pattern = ::testing::TempDir() + "kit_snapshot_XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    directory = pattern;
    path = directory + "/store";
    Restart(path);
    ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
  }

  void TearDown() override {
    KitTest::TearDown();
    for (const std::string& name : Files()) unlink((directory + "/" + name).c_str());
    EXPECT_EQ(rmdir(directory.c_str()), 0);
  }

  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    DIR* opened = opendir(directory.c_str());
    while (const dirent* entry = readdir(opened)) {
      if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
    }
    closedir(opened);
    return names;
  }

  std::string ReadFile() const {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  void WriteFile(std::string_view bytes) const { std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes; }

  // Something of everything.
  void FillStore() {
    Set("string", std::string_view("v\0\xff", 3));
    Set("string", "of the last database", 37);
    Set("empty", "");
    tq_mom_psetex_sync(g, 3, Obj("expiring", "v"), 1000);
    for (const char* value : {"a", "b", "a"}) Push("list", value);
    for (const char* value : {"x", "y"}) tq_mom_sadd_sync(g, 0, Obj("set", value));
    Obj hash("hash");
    hash.Field(1, "one").Field(4294967295U, "last").Field(5, "soon");
    int32_t tags[] = {1, 5, -1};
    tq_mom_hmset_sync(g, 0, hash, tags, 3);
    tq_mom_pexpire_field_sync(g, 0, hash, 500, 5, NoTimeout());
    int32_t read[] = {1};
    tq_mom_hash_res_free(tq_mom_hmget_sync(g, 0, hash, read, 1));
    const Obj low("sorted", "low");
    const Obj high("sorted", "high");
    void* members[] = {high, low};
    double scores[] = {std::numeric_limits<double>::infinity(), -0.1};
    tq_mom_zadd_sync(g, 0, scores, members, 2);
  }

  std::string directory;
  std::string path;
};

TEST_F(Snapshots, BringEverythingBack) {
  FillStore();
  const std::string before = Dump();
  ASSERT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_OK);
  EXPECT_EQ(Files(), std::vector<std::string>{"store"}) << "no temporary file stays";
  Restart(path);
  EXPECT_EQ(Dump(), before);
  ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
  EXPECT_EQ(Get("string"), std::string("v\0\xff", 3));
  EXPECT_EQ(List("list"), (std::vector<std::string>{"a", "b", "a"}));
  EXPECT_EQ(tq_mom_zrank_sync(g, 0, Obj("sorted", "high")), 1);
  tq_mom_hash_res_t* hash = tq_mom_hgetall_sync(g, 0, Obj("hash"));
  EXPECT_EQ(hash->field_tag_count, 3U);
  EXPECT_EQ(hash->field_change_tag_count, 3U) << "this runtime has read none of them";
  EXPECT_EQ(tq_mom_hash_res_free(hash), TQ_MOM_OK);
}

TEST_F(Snapshots, OfAnEmptyStoreIsASnapshot) {
  ASSERT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_OK);
  EXPECT_EQ(ReadFile().size(), 24U);
  Restart(path);
  EXPECT_TRUE(engine->store().Names(0).empty());
}

TEST_F(Snapshots, ANameWithoutAFolderIsOfTheWorkingDirectory) {
  const std::string before = std::filesystem::current_path();
  std::filesystem::current_path(directory);
  const Status status = WriteSnapshot("here", clock, engine->store());
  std::filesystem::current_path(before);
  EXPECT_TRUE(status.ok()) << status.text();
  EXPECT_EQ(Files(), std::vector<std::string>{"here"});
}

TEST_F(Snapshots, TimeGoesOnWhileNoProcessRuns) {
  FillStore();
  ASSERT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_OK);
  clock.steady = 77;  // another boot
  clock.calendar += 999;
  Restart(path);
  ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
  EXPECT_EQ(Get("expiring", 3), "v");
  tq_mom_hash_res_t* hash = tq_mom_hgetall_sync(g, 0, Obj("hash"));
  EXPECT_EQ(hash->field_tag_count, 2U) << "field 5 expired";
  EXPECT_EQ(tq_mom_hash_res_free(hash), TQ_MOM_OK);
  clock.Advance(1);
  EXPECT_EQ(Get("expiring", 3), std::nullopt);
  EXPECT_EQ(Get("string"), std::string("v\0\xff", 3));
}

TEST_F(Snapshots, AMissingFileIsAnEmptyStore) {
  tq_global_t* fresh = tq_global_init((directory + "/none").c_str(), nullptr);
  ASSERT_NE(fresh, nullptr);
  EXPECT_EQ(tq_global_finish(fresh), TQ_MOM_OK);
  EXPECT_TRUE(Files().empty()) << "nothing is written before a save";
}

TEST_F(Snapshots, SaveWithoutAFileFails) {
  Restart("");
  ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_ERR);
}

TEST_F(Snapshots, WorkThroughTheClientFunctions) {
  tq_global_t* first = tq_global_init(path.c_str(), nullptr);
  ASSERT_EQ(tq_mom_client_connect_sync(first, 0), TQ_MOM_OK);
  ASSERT_EQ(tq_mom_set_sync(first, 0, Obj("k", "v")), TQ_MOM_OK);
  ASSERT_EQ(tq_mom_psetex_sync(first, 0, Obj("e", "v"), 600000), TQ_MOM_OK);
  ASSERT_EQ(tq_mom_bgsave_sync(first, 0), TQ_MOM_OK);
  EXPECT_EQ(tq_global_finish(first), TQ_MOM_OK);
  tq_global_t* second = tq_global_init(path.c_str(), nullptr);
  ASSERT_EQ(tq_mom_client_connect_sync(second, 0), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_exists_sync(second, 0, Obj("k")), 1);
  EXPECT_EQ(tq_mom_exists_sync(second, 0, Obj("e")), 1);
  EXPECT_EQ(tq_global_finish(second), TQ_MOM_OK);
}

TEST_F(Snapshots, CutAtAnyLengthAreRefused) {
  FillStore();
  const std::string whole = Dump();
  ASSERT_GT(whole.size(), 200U);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    Store store;
    const Status status = DecodeSnapshot(std::string_view{whole}.substr(0, length), clock, &store);
    ASSERT_EQ(status.text(), "it is cut short") << length;
    ASSERT_TRUE(IsEmpty(store));
  }
}

TEST_F(Snapshots, WithAnyBitChangedAreRefused) {
  FillStore();
  const std::string whole = Dump();
  for (std::size_t index = 0; index < whole.size(); ++index) {
    for (int mask = 1; mask <= 0x80; mask <<= 1) {
      std::string changed = whole;
      changed[index] = static_cast<char>(changed[index] ^ mask);
      Store store;
      ASSERT_FALSE(DecodeSnapshot(changed, clock, &store).ok()) << index;
      ASSERT_TRUE(IsEmpty(store));
    }
  }
}

TEST_F(Snapshots, WithSomethingBehindThemAreRefused) {
  Store store;
  EXPECT_EQ(DecodeSnapshot(Dump() + "x", clock, &store).text(), "something follows its end");
}

// A snapshot with a right length and sum around any payload.
std::string Seal(const std::string& payload) {
  const auto little = [](std::uint64_t number) {
    std::string bytes;
    for (int index = 0; index < 8; ++index) bytes += static_cast<char>(number >> (8 * index) & 0xff);
    return bytes;
  };
  std::string bytes = "TQKITDB\1" + little(payload.size()) + payload;
  std::uint64_t sum = 14695981039346656037U;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 1099511628211U;
  return bytes + little(sum);
}

TEST_F(Snapshots, WithARightSumButImpossibleContentsAreRefused) {
  using std::string_literals::operator""s;
  const std::string name = "\1\0\0\0k"s;
  const std::string text = "\1\0\0\0v"s;
  const std::string nan = "\0\0\0\0\0\0\xf8\x7f"s;
  const std::string one = "\0\0\0\0\0\0\xf0\x3f"s;
  const std::string good = "\0\0"s + name + "\0"s + text;
  Store store;
  ASSERT_TRUE(DecodeSnapshot(Seal(good), clock, &store).ok()) << "the others differ from this one";
  ASSERT_EQ(store.Names(0).size(), 1U);

  for (const std::string& payload : {
           good + good,                                               // a key twice
           "\5\0"s + name + "\0"s + text,                             // no such kind
           "\0\x26"s + name + "\0"s + text,                           // no such database
           "\0\0"s + name + "\2"s + text,                             // no such flag
           "\0\0"s + name + "\1\1\0\0\0\0\0\0\x80"s + text,           // a time beyond all times
           "\0\0"s + name + "\0\xff\xff\xff\xffv"s,                   // bytes that are not there
           "\1\0"s + name + "\0\0\0\0\0"s,                            // a hash without fields
           "\2\0"s + name + "\0\0\0\0\0"s,                            // a list without elements
           "\2\0"s + name + "\0\xff\xff\xff\xff"s,                    // elements that are not there
           "\3\0"s + name + "\0\2\0\0\0"s + text + text,              // a member twice
           "\4\0"s + name + "\0\1\0\0\0"s + text + nan,               // a score that is none
           "\4\0"s + name + "\0\2\0\0\0"s + text + one + text + one,  // a member twice
           "\1\0"s + name + "\0\1\0\0\0\1\0\0\0"s + text + "\0\7"s,   // no such flag
           "\1\0"s + name + "\0\2\0\0\0"s + "\1\0\0\0"s + text + "\0\0"s + "\1\0\0\0"s + text +
               "\0\0"s,  // a field twice
           good.substr(0, good.size() - 1),
           "\0"s,
       }) {
    EXPECT_EQ(DecodeSnapshot(Seal(payload), clock, &store).text(), "its contents are damaged");
    EXPECT_EQ(store.Names(0).size(), 1U) << "the store is as before";
  }
}

TEST_F(Snapshots, ADeadlineThatTheClockCannotReachIsRefused) {
  using std::string_literals::operator""s;
  clock.calendar = 0;
  clock.steady = 1;
  const std::string latest = "\xff\xff\xff\xff\xff\xff\xff\x7f"s;
  const auto decode = [&](const std::string& time) {
    Store store;
    return DecodeSnapshot(Seal("\0\0\1\0\0\0k\1"s + time + "\1\0\0\0v"s), clock, &store).ok();
  };
  EXPECT_FALSE(decode(latest));
  clock.steady = 0;
  EXPECT_TRUE(decode(latest));
}

TEST_F(Snapshots, LeaveOutWhatHasExpired) {
  ASSERT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_OK);
  const std::string empty = ReadFile();
  tq_mom_psetex_sync(g, 0, Obj("gone", "v"), 10);
  Obj hash("hash");
  hash.Field(1, "one");
  int32_t tags[] = {1};
  tq_mom_hmset_sync(g, 0, hash, tags, 1);
  tq_mom_pexpire_field_sync(g, 0, hash, 10, 1, NoTimeout());
  clock.Advance(10);
  ASSERT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_OK);
  EXPECT_EQ(ReadFile(), empty);
}

TEST_F(Snapshots, RefusalIsToldAndLeavesTheFileAlone) {
  FillStore();
  ASSERT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_OK);
  const std::string whole = ReadFile();
  for (const std::string& bytes : {whole.substr(0, whole.size() / 2), std::string("# not ours\n"), std::string()}) {
    WriteFile(bytes);
    ::testing::internal::CaptureStderr();
    tq_global_t record = {};
    EXPECT_EQ(tq_global_init(path.c_str(), &record), nullptr);
    EXPECT_EQ(record.rmc, nullptr);
    const std::string told = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(told.find("snapshot " + path + " refused: it is "), std::string::npos) << told;
    EXPECT_EQ(ReadFile(), bytes);
  }
}

TEST_F(Snapshots, AFileThatCannotBeReadIsRefused) {
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(tq_global_init(directory.c_str(), nullptr), nullptr);
  const std::string told = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(told.find("cannot read " + directory), std::string::npos) << told;
}

TEST_F(Snapshots, AFailedSaveTellsAndLeavesTheOldFile) {
  const std::string nowhere = directory + "/none/store";
  Restart(nowhere);
  ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_ERR);
  const std::string told = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(told.find(nowhere), std::string::npos) << told;

  // What is in the way of the renaming stays, and the temporary file goes.
  ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
  const std::string error = WriteSnapshot(path, clock, engine->store()).text();
  EXPECT_NE(error.find("cannot write " + path), std::string::npos) << error;
  EXPECT_EQ(Files(), std::vector<std::string>{"store"});
  EXPECT_EQ(rmdir(path.c_str()), 0);
}

TEST_F(Snapshots, KeepTheAccessRightsOfTheFile) {
  ASSERT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_OK);
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  ASSERT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_OK);
  struct stat known;
  ASSERT_EQ(stat(path.c_str(), &known), 0);
  EXPECT_EQ(known.st_mode & 0777, 0640U);
}

TEST_F(Snapshots, OutOfMemoryLeavesFileAndStore) {
  FillStore();
  ASSERT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_OK);
  const std::string saved = ReadFile();
  Set("more", "since then");
  const std::string before = Dump();
  for (const FailureMode mode : {FailureMode::kOnce, FailureMode::kFromThenOn}) {
    for (std::size_t index = 0;; ++index) {
      int status;
      bool hit;
      {
        const FailingAllocations failing(index, mode);
        status = tq_mom_bgsave_sync(g, 0);
        hit = FailingAllocations::Hit();
      }
      if (!hit) {
        EXPECT_GT(index, 3U);
        EXPECT_EQ(status, TQ_MOM_OK);
        break;
      }
      ASSERT_EQ(status, TQ_MOM_MALLOC_ERR);
      ASSERT_EQ(ReadFile(), saved);
      ASSERT_EQ(Dump(), before);
      ASSERT_EQ(Files(), std::vector<std::string>{"store"});
    }
    ASSERT_EQ(ReadFile(), before);
    WriteFile(saved);
  }
}

TEST_F(Snapshots, OutOfMemoryAtTheStartGivesNoRuntime) {
  FillStore();
  ASSERT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_OK);
  for (const FailureMode mode : {FailureMode::kOnce, FailureMode::kFromThenOn}) {
    for (std::size_t index = 0;; ++index) {
      tq_global_t* made;
      tq_global_t record = {};
      bool hit;
      {
        const FailingAllocations failing(index, mode);
        made = tq_global_init(path.c_str(), &record);
        hit = FailingAllocations::Hit();
      }
      if (!hit) {
        EXPECT_GT(index, 10U);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(tq_global_finish(made), TQ_MOM_OK);
        break;
      }
      ASSERT_EQ(made, nullptr) << index;
      ASSERT_EQ(record.rmc, nullptr);
      ASSERT_EQ(tq_global_get_master(&record), nullptr);
    }
  }
}

}  // namespace
}  // namespace hostkit
