// What a snapshot does to the file system, call by call.
#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "hostkit/snapshot.h"
#include "kit_fixture.h"
#include "system_calls.h"

namespace hostkit {
namespace {

using Names = std::vector<std::string>;

class SnapshotFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = ::testing::TempDir() + "kit_files_XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    directory = pattern;
    path = directory + "/store";
    store.Add(0, "k", {.value = std::string(20000, 'v')});
    ASSERT_TRUE(WriteSnapshot(path, clock, Store()).ok());
    old = ReadFile();
    descriptors = List("/proc/self/fd").size();
  }

  void TearDown() override {
    EXPECT_EQ(List("/proc/self/fd").size(), descriptors) << "descriptors leak";
    for (const std::string& name : List(directory)) unlink((directory + "/" + name).c_str());
    EXPECT_EQ(rmdir(directory.c_str()), 0);
  }

  static Names List(const std::string& where) {
    Names names;
    DIR* opened = opendir(where.c_str());
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

  // The old file is whole and alone, and the status says what the system said.
  void ExpectOldFile(const Status& status, int error) {
    EXPECT_EQ(status.code(), StatusCode::kFailed);
    EXPECT_NE(status.text().find(path), std::string::npos) << status.text();
    EXPECT_NE(status.text().find(std::strerror(error)), std::string::npos) << status.text();
    EXPECT_EQ(ReadFile(), old);
    EXPECT_EQ(List(directory), Names{"store"});
  }

  FakeClock clock;
  Store store;
  std::string directory;
  std::string path;
  std::string old;
  std::size_t descriptors = 0;
};

TEST_F(SnapshotFiles, AreSyncedThenRenamedThenTheirDirectoryIsSynced) {
  SystemCalls calls;
  ASSERT_TRUE(WriteSnapshot(path, clock, store).ok());
  EXPECT_EQ(calls.log, (Names{"mkostemp", "stat", "fchmod", "write", "fsync file", "close", "rename", "open directory",
                              "fsync directory", "close"}));
  EXPECT_EQ(calls.inherited, Names());
  calls.log.clear();
  Store read;
  ASSERT_TRUE(ReadSnapshot(path, clock, &read).ok());
  EXPECT_EQ(calls.log, (Names{"open file", "read", "read", "read", "close"}));
  EXPECT_EQ(calls.inherited, Names());
}

// A rename works within one file system only.
TEST_F(SnapshotFiles, AreFirstWrittenBesideTheOldOne) {
  SystemCalls calls;
  calls.Fail("rename", EIO);
  calls.Fail("unlink", EIO);
  EXPECT_FALSE(WriteSnapshot(path, clock, store).ok());
  const Names left = List(directory);
  ASSERT_EQ(left.size(), 2U);
  EXPECT_TRUE(std::all_of(left.begin(), left.end(), [](const std::string& name) { return name.starts_with("store"); }));
}

TEST_F(SnapshotFiles, EachCallThatFailsLeavesTheOldFile) {
  for (const char* name : {"mkostemp", "fchmod", "write", "fsync", "close", "rename"}) {
    for (const int error : {ENOSPC, EIO, EROFS}) {
      SystemCalls calls;
      calls.Fail(name, error);
      calls.SpoilErrno();
      SCOPED_TRACE(name);
      ExpectOldFile(WriteSnapshot(path, clock, store), error);
    }
  }
}

TEST_F(SnapshotFiles, AFullDiskInTheMiddleLeavesTheOldFile) {
  SystemCalls calls;
  calls.Limit(1000);
  calls.Fail("write", ENOSPC, 7, 1000);
  ExpectOldFile(WriteSnapshot(path, clock, store), ENOSPC);
}

TEST_F(SnapshotFiles, AFileThatMayNotGrowLeavesTheOldFile) {
  rlimit known;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &known), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small = {.rlim_cur = 5000, .rlim_max = known.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const Status status = WriteSnapshot(path, clock, store);
  setrlimit(RLIMIT_FSIZE, &known);
  std::signal(SIGXFSZ, handler);
  ExpectOldFile(status, EFBIG);
}

TEST_F(SnapshotFiles, ShortAndInterruptedTransfersGoOn) {
  SystemCalls calls;
  calls.Limit(777);
  calls.Fail("write", EINTR, 3, 5);
  calls.Fail("read", EINTR, 3, 5);
  ASSERT_TRUE(WriteSnapshot(path, clock, store).ok());
  EXPECT_EQ(ReadFile(), EncodeSnapshot(store, clock));
  Store read;
  ASSERT_TRUE(ReadSnapshot(path, clock, &read).ok());
  EXPECT_EQ(EncodeSnapshot(read, clock), EncodeSnapshot(store, clock));
}

// Not every file system can sync a directory.
TEST_F(SnapshotFiles, ADirectoryThatCannotBeSyncedIsNoFailure) {
  {
    SystemCalls calls;
    calls.Fail("fsync", EINVAL, 1);
    EXPECT_TRUE(WriteSnapshot(path, clock, store).ok());
  }
  SystemCalls calls;
  calls.Fail("open", EACCES);
  EXPECT_TRUE(WriteSnapshot(path, clock, store).ok());
}

TEST_F(SnapshotFiles, OnlyAMissingFileIsMissing) {
  for (const int error : {ENOTDIR, ELOOP, EACCES, EMFILE, EIO, ENAMETOOLONG}) {
    SystemCalls calls;
    calls.Fail("open", error);
    Store read;
    const Status status = ReadSnapshot(path, clock, &read);
    EXPECT_EQ(status.code(), StatusCode::kFailed);
    EXPECT_NE(status.text().find(std::strerror(error)), std::string::npos) << status.text();
  }
  SystemCalls calls;
  calls.Fail("open", ENOENT);
  Store read;
  EXPECT_TRUE(ReadSnapshot(path, clock, &read).ok());
}

TEST_F(SnapshotFiles, AReadThatFailsIsARefusal) {
  SystemCalls calls;
  calls.Fail("read", EIO);
  Store read;
  const Status status = ReadSnapshot(path, clock, &read);
  EXPECT_NE(status.text().find(std::strerror(EIO)), std::string::npos) << status.text();
}

// What a runtime that started without them would write over.
TEST_F(SnapshotFiles, PathsThatCannotBeFollowedGiveNoRuntime) {
  const std::string loop = directory + "/loop";
  ASSERT_EQ(symlink("loop", loop.c_str()), 0);
  for (const std::string& name : {path + "/beneath", loop}) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(tq_global_init(name.c_str(), nullptr), nullptr) << name;
    EXPECT_NE(::testing::internal::GetCapturedStderr().find("cannot read " + name), std::string::npos);
  }
}

}  // namespace
}  // namespace hostkit
