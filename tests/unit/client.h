// The client functions of the unit tests; all others are stubs that return zero.
#pragma once

#include <tq_mom/tq_mom.h>

namespace unit {

// What the client functions hand out. Static: they own no memory.
extern tq_mom_get_res_t get_result;
extern tq_mom_hash_res_t hash_result;

// The calls of tq_mom_get_ext_sync.
extern int get_ext_calls;
// The calls of tq_mom_zadd_sync and the sum of their scores.
extern int zadd_calls;
extern double zadd_sum;
// Whether a scan is inside its callback: an error that the callback raises leaves it so.
extern bool in_callback;

}  // namespace unit
