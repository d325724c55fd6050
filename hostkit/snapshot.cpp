#include "hostkit/snapshot.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include "hostkit/digest.h"

namespace hostkit {
namespace {

constexpr std::string_view kMagic = "TQKITDB\1";
constexpr std::size_t kHeaderSize = 16;
constexpr std::size_t kSumSize = 8;

enum Kind : std::uint8_t { kString, kHash, kList, kSet, kSortedSet };

// Equal stores give equal snapshots, whatever the order of their hash tables.
auto Sorted(const auto& table, auto key) {
  std::vector<decltype(&*table.begin())> elements;
  elements.reserve(table.size());
  for (const auto& element : table) elements.push_back(&element);
  std::sort(elements.begin(), elements.end(), [&](const auto* a, const auto* b) { return key(*a) < key(*b); });
  return elements;
}

class Writer {
 public:
  explicit Writer(const Clock& clock) : to_calendar_(clock.Calendar() - clock.Steady()) {}

  void Number(std::uint64_t number, int size) {
    for (int index = 0; index < size; ++index, number >>= 8) bytes_.push_back(static_cast<char>(number & 0xff));
  }

  void Count(std::size_t count) {
    if (count > 0xffffffffU) throw std::length_error("snapshot");  // GCOVR_EXCL_BR_LINE: takes 4 GiB
    Number(count, 4);
  }

  void Bytes(std::string_view bytes) {
    Count(bytes.size());
    bytes_.append(bytes);
  }

  void Time(const Deadline& deadline) {
    Number(deadline ? 1 : 0, 1);
    if (deadline) Number(static_cast<std::uint64_t>(*deadline + to_calendar_), 8);
  }

  void operator()(const String& value) { Bytes(value); }

  void operator()(const Hash& hash) {
    Count(hash.fields.size());
    for (const auto* named : Sorted(hash.fields, [](const auto& field) { return field.first; })) {
      Number(named->first, 4);
      Bytes(named->second.bytes);
      Time(named->second.deadline);
      Number(1, 1);
    }
  }

  void operator()(const List& list) {
    Count(list.size());
    for (const std::string& element : list) Bytes(element);
  }

  void operator()(const Set& set) {
    Count(set.size());
    for (const auto* member : Sorted(set, [](const std::string& text) { return std::string_view{text}; })) {
      Bytes(*member);
    }
  }

  void operator()(const SortedSet& sorted) {
    Count(sorted.scores.size());
    for (const Ranked& ranked : *sorted.ranking) {
      Bytes(*ranked.member);
      Number(std::bit_cast<std::uint64_t>(ranked.score), 8);
    }
  }

  std::string Take() { return std::move(bytes_); }

 private:
  const std::int64_t to_calendar_;
  std::string bytes_;
};

struct Damaged {};

// Throws Damaged at whatever no writer writes.
class Reader {
 public:
  Reader(std::string_view payload, const Clock& clock)
      : rest_(payload), calendar_(clock.Calendar()), steady_(clock.Steady()) {}

  bool AtEnd() const { return rest_.empty(); }

  std::uint64_t Number(std::size_t size) {
    const std::string_view bytes = Take(size);
    std::uint64_t number = 0;
    for (std::size_t index = size; index-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[index]);
    return number;
  }

  bool Flag() {
    const std::uint64_t flag = Number(1);
    if (flag > 1) throw Damaged();
    return flag == 1;
  }

  std::string Bytes() { return std::string(Take(static_cast<std::size_t>(Number(4)))); }

  Deadline Time() {
    if (!Flag()) return std::nullopt;
    std::int64_t left;
    std::int64_t deadline;
    if (__builtin_sub_overflow(static_cast<std::int64_t>(Number(8)), calendar_, &left) ||
        __builtin_add_overflow(steady_, left, &deadline)) {
      throw Damaged();
    }
    return deadline;
  }

  void Value(std::uint64_t kind, Entry* entry) {
    switch (kind) {
      case kString: entry->value = Bytes(); return;
      case kHash: {
        Hash& hash = entry->value.emplace<Hash>();
        Each([&] {
          const auto tag = static_cast<FieldTag>(Number(4));
          HashField field{Bytes(), Time()};
          Flag();
          if (field.deadline) hash.expiring.insert({*field.deadline, tag});
          return hash.fields.emplace(tag, std::move(field)).second;
        });
        return;
      }
      case kList: {
        List& list = entry->value.emplace<List>();
        Each([&] {
          list.push_back(Bytes());
          return true;
        });
        return;
      }
      case kSet: {
        Set& set = entry->value.emplace<Set>();
        Each([&] { return set.insert(Bytes()).second; });
        return;
      }
      case kSortedSet: {
        SortedSet& sorted = entry->value.emplace<SortedSet>();
        Each([&] {
          std::string member = Bytes();
          const auto score = std::bit_cast<double>(Number(8));
          const auto [scored, fresh] = sorted.scores.emplace(std::move(member), score);
          if (std::isnan(score) || !fresh) return false;
          sorted.ranking->insert({score, &scored->first});
          return true;
        });
        return;
      }
      default: throw Damaged();
    }
  }

 private:
  std::string_view Take(std::size_t size) {
    if (size > rest_.size()) throw Damaged();
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  // Reads the elements of a value, of which there is at least one.
  template <typename Body> void Each(Body body) {
    const std::uint64_t count = Number(4);
    if (count == 0) throw Damaged();
    for (std::uint64_t index = 0; index < count; ++index) {
      if (!body()) throw Damaged();
    }
  }

  std::string_view rest_;
  const std::int64_t calendar_;
  const std::int64_t steady_;
};

Status Refuse(const char* reason) { return {StatusCode::kFailed, reason}; }

Status FailFile(int code, const std::string& path, const char* action) {
  return {StatusCode::kFailed, "cannot " + std::string(action) + " " + path + ": " + std::strerror(code)};
}

class File {
 public:
  explicit File(int descriptor) : descriptor_(descriptor) {}
  ~File() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  int descriptor() const { return descriptor_; }
  bool Close() { return close(std::exchange(descriptor_, -1)) == 0; }

 private:
  int descriptor_;
};

bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool ReadAll(int descriptor, std::string* bytes) {
  char block[16384];
  for (;;) {
    const ssize_t got = read(descriptor, block, sizeof block);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    bytes->append(block, static_cast<std::size_t>(got));
  }
}

bool WriteTemporary(int descriptor, const std::string& path, std::string_view bytes) {
  // A snapshot that is replaced passes its access rights on.
  struct stat known;
  if (stat(path.c_str(), &known) == 0 && fchmod(descriptor, known.st_mode & 07777) != 0) return false;
  return WriteAll(descriptor, bytes) && fsync(descriptor) == 0;
}

// Makes the renaming itself last. Not every file system can, and the file is whole either way.
void SyncDirectory(const std::string& directory) {
  const File opened(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.descriptor() >= 0) fsync(opened.descriptor());
}

}  // namespace

std::string EncodeSnapshot(const Store& store, const Clock& clock) {
  Writer payload(clock);
  for (int db = 0; db < kDatabaseCount; ++db) {
    for (const Named* key : store.Names(db)) {
      const Entry& entry = key->second;
      payload.Number(entry.value.index(), 1);
      payload.Number(static_cast<std::uint64_t>(db), 1);
      payload.Bytes(key->first);
      payload.Time(entry.deadline);
      std::visit(payload, entry.value);
    }
  }
  const std::string body = payload.Take();
  Writer length(clock);
  length.Number(body.size(), 8);
  std::string bytes = std::string(kMagic) + length.Take() + body;
  Writer sum(clock);
  sum.Number(Digest(bytes), kSumSize);
  return bytes + sum.Take();
}

Status DecodeSnapshot(std::string_view bytes, const Clock& clock, Store* store) {
  if (bytes.substr(0, kMagic.size()) != kMagic.substr(0, bytes.size())) return Refuse("it is not a snapshot");
  if (bytes.size() < kHeaderSize + kSumSize) return Refuse("it is cut short");
  Reader header(bytes.substr(kMagic.size(), kHeaderSize - kMagic.size()), clock);
  const std::uint64_t length = header.Number(8);
  if (length > bytes.size() - kHeaderSize - kSumSize) return Refuse("it is cut short");
  if (length < bytes.size() - kHeaderSize - kSumSize) return Refuse("something follows its end");
  Reader sum(bytes.substr(bytes.size() - kSumSize), clock);
  if (sum.Number(kSumSize) != Digest(bytes.substr(0, bytes.size() - kSumSize))) return Refuse("its sum is wrong");
  try {
    Store loaded;
    Reader reader(bytes.substr(kHeaderSize, static_cast<std::size_t>(length)), clock);
    while (!reader.AtEnd()) {
      const std::uint64_t kind = reader.Number(1);
      const auto db = static_cast<int>(reader.Number(1));
      if (db >= kDatabaseCount) throw Damaged();
      const std::string name = reader.Bytes();
      Entry entry;
      entry.deadline = reader.Time();
      reader.Value(kind, &entry);
      if (loaded.Find(db, name) != nullptr) throw Damaged();
      loaded.Add(db, name, std::move(entry));
    }
    std::swap(*store, loaded);
    return {};
  } catch (const Damaged&) {
    return Refuse("its contents are damaged");
  }
}

Status WriteSnapshot(const std::string& path, const Clock& clock, const Store& store) {
  const std::string bytes = EncodeSnapshot(store, clock);
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  std::string temporary = path + ".XXXXXX";
  // Nothing throws between making the temporary file and renaming or removing it.
  File file(mkostemp(temporary.data(), O_CLOEXEC));
  if (file.descriptor() < 0) return FailFile(errno, path, "write beside");
  if (WriteTemporary(file.descriptor(), path, bytes) && file.Close() && rename(temporary.c_str(), path.c_str()) == 0) {
    SyncDirectory(directory);
    return {};
  }
  const int code = errno;
  unlink(temporary.c_str());
  return FailFile(code, path, "write");
}

Status ReadSnapshot(const std::string& path, const Clock& clock, Store* store) {
  const File file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.descriptor() < 0 && errno == ENOENT) return {};
  std::string bytes;
  if (file.descriptor() < 0 || !ReadAll(file.descriptor(), &bytes)) return FailFile(errno, path, "read");
  Status status = DecodeSnapshot(bytes, clock, store);
  if (status.ok()) return status;
  return {StatusCode::kFailed, "snapshot " + path + " refused: " + status.text()};
}

}  // namespace hostkit
