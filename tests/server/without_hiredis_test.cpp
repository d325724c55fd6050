// A host kit that was built without hiredis.
#include <gtest/gtest.h>

#include "hostkit/engine.h"

namespace hostkit {
namespace {

TEST(WithoutHiredis, AServersNameIsRefusedAndTheReasonIsClear) {
  for (const char* name : {"redis://127.0.0.1:7000", "redis+unix:///run/redis.sock"}) {
    std::unique_ptr<Engine> engine;
    const Status status = OpenEngine(name, &engine);
    EXPECT_EQ(status.code(), StatusCode::kNotSupported);
    EXPECT_NE(status.text().find("hiredis"), std::string::npos);
    EXPECT_EQ(engine, nullptr);
  }
}

TEST(WithoutHiredis, TheInProcessEngineIsThere) {
  std::unique_ptr<Engine> engine;
  EXPECT_TRUE(OpenEngine("", &engine).ok());
  EXPECT_NE(engine, nullptr);
}

}  // namespace
}  // namespace hostkit
