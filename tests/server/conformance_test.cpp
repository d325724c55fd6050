#include "engine_conformance.h"
#include "store.h"

namespace hostkit {
namespace {

INSTANTIATE_TEST_SUITE_P(Server, EngineConformance, ::testing::Values(EngineCase{[] { return OpenStore(); }}));

}  // namespace
}  // namespace hostkit
