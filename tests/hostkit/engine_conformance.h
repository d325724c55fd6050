// What every engine must do. A test program links the suite and instantiates it with its engines:
//
//   INSTANTIATE_TEST_SUITE_P(Memory, EngineConformance, ::testing::Values(EngineCase{OpenMemory}));
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hostkit/engine.h"

namespace hostkit {

struct EngineCase {
  // A connected engine on an empty store.
  std::unique_ptr<Engine> (*open)();
};

class EngineConformance : public ::testing::TestWithParam<EngineCase> {
 protected:
  using Texts = std::vector<std::string>;

  void SetUp() override;

  static Request Key(std::string_view name, int db = 0) { return {db, name}; }
  // Lets that many milliseconds pass for the store.
  void Pass(std::int64_t milliseconds);

  // What is stored, by the engine's own reading functions; sorted where the order is free.
  std::string Text(std::string_view name, int db = 0);
  std::string HashText(std::string_view name);
  Texts List(std::string_view name);
  Texts Members(std::string_view name);
  std::string Sorted(std::string_view name);
  Kind KindOf(std::string_view name);
  bool Exists(std::string_view name);
  std::int64_t Remaining(std::string_view name);
  Texts Names(std::string_view pattern, int db = 0);

  void Push(std::string_view name, std::initializer_list<std::string_view> values);
  void Add(std::string_view name, std::initializer_list<ScoredView> members);
  void Fields(std::string_view name, std::initializer_list<FieldView> fields);
  // One key of each kind, named after it.
  void FillEachKind();
  // All that FillEachKind stored, as text.
  std::string EachKind();

  std::unique_ptr<Engine> engine;
};

}  // namespace hostkit
