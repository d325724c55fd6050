#include <cstdlib>
#include <string_view>

#include "hostkit/memory_engine.h"
#ifdef TQ_HOSTKIT_SERVER
#include "hostkit/server_engine.h"
#endif

namespace hostkit {
namespace {

const Clock& WallClock() {
  static const SystemClock clock;
  return clock;
}

bool IsServer(std::string_view name) { return name.starts_with("redis://") || name.starts_with("redis+unix://"); }

Status OpenServer([[maybe_unused]] const char* url, [[maybe_unused]] std::unique_ptr<Engine>* engine) {
#ifdef TQ_HOSTKIT_SERVER
  return OpenServerEngine(url, engine);
#else
  return {StatusCode::kNotSupported, "a redis:// name cannot be used: this host kit was built without hiredis"};
#endif
}

}  // namespace

Status OpenEngine(const char* name, std::unique_ptr<Engine>* engine) {
  if (name == nullptr) name = std::getenv("TQ_MOM_STORE");
  if (name != nullptr && IsServer(name)) return OpenServer(name, engine);
  auto made = std::make_unique<MemoryEngine>(WallClock(), name != nullptr ? name : "");
  Status status = made->Load();
  if (status.ok()) *engine = std::move(made);
  return status;
}

}  // namespace hostkit
