// Kills a process at a random moment of its saving, again and again: snapshot_crash DIRECTORY ROUNDS [SEED]
//
// The file must then be whole, and no older than the last save that was acknowledged.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "hostkit/snapshot.h"

namespace {

using hostkit::Store;

constexpr int kKeys = 2000;

// Every key holds the version, so that a mixture of two is seen.
Store StoreOf(int version) {
  Store store;
  for (int key = 0; key < kKeys; ++key) {
    store.Add(key % hostkit::kDatabaseCount, "key " + std::to_string(key), {.value = std::to_string(version)});
  }
  return store;
}

// The version that the whole store holds; -1 for a mixture.
int VersionOf(const Store& store) {
  std::string version;
  int keys = 0;
  for (int db = 0; db < hostkit::kDatabaseCount; ++db) {
    for (const hostkit::Named* key : store.Names(db)) {
      const auto* value = std::get_if<hostkit::String>(&key->second.value);
      if (value == nullptr) return -1;
      if (version.empty()) version = *value;
      if (*value != version) return -1;
      ++keys;
    }
  }
  return keys == kKeys ? std::atoi(version.c_str()) : -1;
}

[[noreturn]] void SaveForEver(const std::string& path, int version, int acknowledge) {
  const hostkit::SystemClock clock;
  for (;; ++version) {
    if (!hostkit::WriteSnapshot(path, clock, StoreOf(version)).ok()) _exit(1);
    if (write(acknowledge, &version, sizeof version) != sizeof version) _exit(1);
  }
}

bool Fail(int round, unsigned int seed, const std::string& why) {
  std::fprintf(stderr, "round %d, seed %u: %s\n", round, seed, why.c_str());
  return false;
}

bool Run(const std::string& path, int rounds, unsigned int seed) {
  const hostkit::SystemClock clock;
  std::minstd_rand random(seed);
  int version = 1;
  const auto start = std::chrono::steady_clock::now();
  if (!hostkit::WriteSnapshot(path, clock, StoreOf(version)).ok()) return Fail(0, seed, "cannot write");
  // A process lives for a few saves at most, as long as one takes here.
  const auto longest =
      4 * std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
  int news = 0;
  for (int round = 1; round <= rounds; ++round) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return Fail(round, seed, "no pipe");
    const pid_t child = fork();
    if (child == 0) SaveForEver(path, version + 1, ends[1]);
    close(ends[1]);
    usleep(static_cast<useconds_t>(random() % static_cast<std::uint64_t>(longest.count())));
    kill(child, SIGKILL);
    int ended = 0;
    waitpid(child, &ended, 0);
    if (!WIFSIGNALED(ended)) return Fail(round, seed, "a save failed");
    int acknowledged = version;
    while (read(ends[0], &version, sizeof version) == sizeof version) acknowledged = version;
    close(ends[0]);

    Store store;
    const hostkit::Status status = hostkit::ReadSnapshot(path, clock, &store);
    if (!status.ok()) return Fail(round, seed, status.text());
    version = VersionOf(store);
    if (version < acknowledged || version > acknowledged + 1) {
      return Fail(round, seed, "version " + std::to_string(version) + " after " + std::to_string(acknowledged));
    }
    news += version > acknowledged || acknowledged > 1 ? 1 : 0;
  }
  if (news == 0) return Fail(rounds, seed, "nothing was ever saved");
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return 2;
  const std::string directory = arguments[1];
  const unsigned int seed = count > 3 ? static_cast<unsigned int>(std::strtoul(arguments[3], nullptr, 10))
                                      : static_cast<unsigned int>(std::random_device()());
  std::string folder = directory + "/snapshot_crash_XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) return 1;
  const bool passed = Run(folder + "/store", std::atoi(arguments[2]), seed);
  // A process that was killed leaves its temporary file.
  const std::string remove = "rm -rf '" + folder + "'";
  return std::system(remove.c_str()) == 0 && passed ? 0 : 1;
}
