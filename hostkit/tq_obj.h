// A value object from the inside of the client library.
#pragma once

#include <tq_kit/value_object.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct tq_obj {
  // Throws std::bad_alloc.
  explicit tq_obj(std::string_view name);
  ~tq_obj();
  tq_obj(const tq_obj&) = delete;
  tq_obj& operator=(const tq_obj&) = delete;

  // Null when there is no such field.
  const std::string* Field(std::uint32_t tag) const;
  // Throws std::bad_alloc; the object is then as before.
  void SetField(std::uint32_t tag, std::string bytes);
  void ClearField(std::uint32_t tag);
  // A command returns the object, and its caller has to release it.
  void GiveOut() noexcept;

  std::string key;
  std::optional<std::string> value;
  std::vector<std::pair<std::uint32_t, std::string>> fields;  // ascending
  bool in_result = false;                                     // released with its result, not by itself

 private:
  bool given_out_ = false;
};

namespace hostkit {

using ObjectPtr = std::unique_ptr<tq_obj>;

// The live object behind the pointer that a command was given; null for any other pointer.
const tq_obj* LiveObject(const void* pointer);
// The objects that commands have returned and nobody has released; those inside results do not count.
std::size_t ObjectsGivenOut() noexcept;

}  // namespace hostkit
