// The module's functions.
#ifndef TQ_MODULE_FUNCTIONS_H
#define TQ_MODULE_FUNCTIONS_H

#include "runtime/abi.h"

namespace tq_mom {

inline constexpr int kFunctionCount = 119;

// All families' functions, ended by an empty entry.
const binding::Method* Functions();

}  // namespace tq_mom

#endif
