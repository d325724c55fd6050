// What the client functions were called with, and what they are told to return.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace recorder {

struct Timeout {
  int64_t seconds;
  int64_t microseconds;
};

// The elements are copied during the call; the caller frees its array afterwards.
template <class T> struct Array {
  uintptr_t address;
  std::vector<T> elements;
};

// A missing text stands for a null pointer.
using Text = std::optional<std::string>;

using Value = std::variant<int64_t, double, Text, Timeout, Array<int32_t>, Array<double>, Array<void*>>;

// The option record of an _ext call, read during the call.
struct Option {
  uintptr_t address;
  int flag;
  std::optional<int> milseconds;
  std::optional<Array<int32_t>> fields;
  int field_count;
};

struct Call {
  std::string_view name;
  std::vector<Value> arguments;  // out pointers left out
  std::optional<Option> option;
  std::vector<int> callback_results;
};

// What one invocation of a scan's callback receives. Without a global the scan's own is passed on.
struct ScanMessage {
  std::optional<uintptr_t> global;
  uintptr_t message;
  bool null_context;
};

struct Prescription {
  int64_t result;
  int out;
};

std::vector<Call>& Calls();

// Stays in force until Reset; a function without one returns 0 or null.
void Prescribe(const std::string& name, Prescription prescription);
Prescription Prescribed(std::string_view name);

// The next scan that has a callback delivers these messages; later scans take later lists.
void PrescribeScan(std::vector<ScanMessage> messages);

// The list for the scan that starts now. It keeps its address until Reset, so that a callback that leaves the scan by
// an error leaves nothing behind on the native stack.
const std::vector<ScanMessage>& NextScan();

void Reset();

}  // namespace recorder
