// Where C++ ends: what the code behind a C function throws becomes its status.
#pragma once

#include <tq_mom/tq_mom.h>

#include <exception>
#include <new>
#include <stdexcept>

namespace hostkit {

// failed is told the status and a text that says why.
template <typename Body, typename Failed> int Guarded(Body body, Failed failed) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return failed(TQ_MOM_MALLOC_ERR, "out of memory");
  } catch (const std::length_error&) {
    return failed(TQ_MOM_MALLOC_ERR, "out of memory");
  } catch (const std::exception& exception) {
    return failed(TQ_MOM_ERR, exception.what());
  }
}

template <typename Body> int Guarded(Body body) noexcept {
  return Guarded(body, [](int status, const char* /*why*/) { return status; });
}

// Null stands for every failure.
template <typename Body> auto GuardedPointer(Body body) noexcept -> decltype(body()) {
  decltype(body()) made = nullptr;
  Guarded([&] {
    made = body();
    return TQ_MOM_OK;
  });
  return made;
}

}  // namespace hostkit
