// Where C++ ends: what the code behind a C function throws becomes its status.
#ifndef TQ_HOSTKIT_GUARD_H
#define TQ_HOSTKIT_GUARD_H

#include <tq_mom/tq_mom.h>

#include <exception>
#include <new>
#include <stdexcept>

namespace hostkit {

template <typename Body>
int Guarded(Body body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return TQ_MOM_MALLOC_ERR;
  } catch (const std::length_error&) {
    return TQ_MOM_MALLOC_ERR;
  } catch (const std::exception&) {
    return TQ_MOM_ERR;
  }
}

// Null stands for every failure.
template <typename Body>
auto GuardedPointer(Body body) noexcept -> decltype(body()) {
  decltype(body()) made = nullptr;
  Guarded([&] {
    made = body();
    return TQ_MOM_OK;
  });
  return made;
}

}  // namespace hostkit

#endif
