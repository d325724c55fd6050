// A connected runtime over the in-process engine, with a clock that the test moves.
#pragma once

#include <gtest/gtest.h>
#include <tq_kit/live.h>
#include <tq_kit/subscribe.h>
#include <tq_kit/value_object.h>
#include <tq_mom/tq_mom.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hostkit/client_state.h"
#include "hostkit/clock.h"
#include "hostkit/memory_engine.h"

namespace hostkit {

class FakeClock : public Clock {
 public:
  std::int64_t Steady() const noexcept override { return steady; }
  std::int64_t Calendar() const noexcept override { return calendar; }
  void Advance(std::int64_t milliseconds) {
    steady += milliseconds;
    calendar += milliseconds;
  }

  std::int64_t steady = 5000;
  std::int64_t calendar = 1700000000000;
};

// A value object that the test owns.
class Obj {
 public:
  explicit Obj(std::string_view key);
  Obj(std::string_view key, std::string_view value);
  ~Obj();
  Obj(const Obj&) = delete;
  Obj& operator=(const Obj&) = delete;

  Obj& Field(std::uint32_t tag, std::string_view bytes);
  operator tq_obj*() const { return object_; }  // NOLINT(google-explicit-constructor)

 private:
  tq_obj* object_;
};

std::string ValueOf(const tq_obj* object);
// "key=value" for each element.
std::vector<std::string> Texts(tq_obj* const* objects, std::size_t count);
inline timeval NoTimeout() { return {}; }

class KitTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Ends the runtime and starts one with the snapshot path, not connected yet.
  void Restart(const std::string& snapshot_path);

  std::optional<std::string> Get(std::string_view key, int db = 0);
  int Set(std::string_view key, std::string_view value, int db = 0);
  int Push(std::string_view key, std::string_view value);
  std::vector<std::string> List(std::string_view key);
  // The whole store, comparable.
  std::string Dump() const;

  FakeClock clock;
  tq_global_t* g = nullptr;
  MemoryEngine* engine = nullptr;
};

}  // namespace hostkit
