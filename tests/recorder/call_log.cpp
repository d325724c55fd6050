#include "call_log.h"

#include <deque>
#include <map>

namespace recorder {
namespace {

struct State {
  std::vector<Call> calls;
  std::map<std::string, Prescription, std::less<>> prescriptions;
  std::deque<std::vector<ScanMessage>> scans;
  size_t scans_started = 0;
};

State& TheState() {
  static State state;
  return state;
}

}  // namespace

std::vector<Call>& Calls() { return TheState().calls; }

void Prescribe(const std::string& name, Prescription prescription) {
  TheState().prescriptions.insert_or_assign(name, prescription);
}

Prescription Prescribed(std::string_view name) {
  const auto& prescriptions = TheState().prescriptions;
  const auto found = prescriptions.find(name);
  return found == prescriptions.end() ? Prescription{0, 0} : found->second;
}

void PrescribeScan(std::vector<ScanMessage> messages) { TheState().scans.push_back(std::move(messages)); }

const std::vector<ScanMessage>& NextScan() {
  static const std::vector<ScanMessage> none;
  State& state = TheState();
  return state.scans_started < state.scans.size() ? state.scans[state.scans_started++] : none;
}

void Reset() { TheState() = State(); }

}  // namespace recorder
