#include "engine_conformance.h"
#include "hostkit/engine_wrapper.h"
#include "hostkit/memory_engine.h"

namespace hostkit {
namespace {

std::unique_ptr<Engine> OpenMemory() {
  static const SystemClock clock;
  return std::make_unique<MemoryEngine>(clock, "");
}

std::unique_ptr<Engine> OpenWrapped() { return std::make_unique<EngineWrapper>(OpenMemory()); }

INSTANTIATE_TEST_SUITE_P(Memory, EngineConformance, ::testing::Values(EngineCase{OpenMemory}));
INSTANTIATE_TEST_SUITE_P(Wrapped, EngineConformance, ::testing::Values(EngineCase{OpenWrapped}));

}  // namespace
}  // namespace hostkit
