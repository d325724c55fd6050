// What a runtime has last delivered of the fields of hashes, so that it can tell which have changed since. Bounded: of
// the hashes that were read longest ago it forgets everything, and their fields count as changed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "hostkit/engine.h"

namespace hostkit {

class SeenFields {
 public:
  explicit SeenFields(std::size_t most = std::size_t{1} << 20) : most_(most) {}

  // The fields, of those just read, whose bytes are not those that were last delivered. Makes room to remember them.
  // Throws std::bad_alloc.
  std::vector<FieldTag> Changed(int db, std::string_view name, std::span<const Field> fields);

  // The fields reach the reader, who asked for the listed ones, or for all without a list. What was asked for and is
  // not there is forgotten. Comes after Changed with the same fields.
  void Deliver(int db, std::string_view name, std::span<const Field> fields,
               const std::span<const FieldTag>* tags) noexcept;

 private:
  struct Seen {
    bool delivered = false;
    std::uint64_t digest = 0;
  };
  struct Hash {
    int db;
    std::string name;
    std::unordered_map<FieldTag, Seen> fields;
  };
  using Hashes = std::list<Hash>;

  struct Name {
    int db;
    std::string_view text;

    friend bool operator==(const Name&, const Name&) = default;
  };
  struct NameHash {
    std::size_t operator()(const Name& name) const noexcept {
      return std::hash<std::string_view>()(name.text) ^ static_cast<std::size_t>(name.db);
    }
  };

  void Forget(Hashes::iterator hash) noexcept;

  const std::size_t most_;
  std::size_t count_ = 0;                                         // the fields of all hashes
  Hashes hashes_;                                                 // the last one read first
  std::unordered_map<Name, Hashes::iterator, NameHash> by_name_;  // its names are those in hashes_
};

}  // namespace hostkit
