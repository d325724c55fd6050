#include "tests/unit/client.h"

namespace unit {

tq_mom_get_res_t get_result;
tq_mom_hash_res_t hash_result;
int get_ext_calls;
int zadd_calls;
double zadd_sum;
bool in_callback;

}  // namespace unit

extern "C" {

tq_mom_get_res_t* tq_mom_get_ext_sync(tq_global_t*, int, tq_mom_get_op_t*, tq_obj*) {
  ++unit::get_ext_calls;
  return &unit::get_result;
}

tq_mom_hash_res_t* tq_mom_hmget_sync(tq_global_t*, int, tq_obj*, int32_t*, int) { return &unit::hash_result; }

int tq_mom_zadd_sync(tq_global_t*, int, double* scores, void**, int count) {
  ++unit::zadd_calls;
  for (int i = 0; i < count; ++i) unit::zadd_sum += scores[i];
  return count;
}

int tq_mom_scan_sync(tq_global_t* g, int, void*, unsigned int count, tq_mom_scan_cb callback, void* context) {
  for (unsigned int i = 0; i < count; ++i) {
    char key[] = "key";
    tq_mom_scan_all_msg_t message = {0, key, nullptr};
    unit::in_callback = true;
    int stop = callback(g, &message, context);
    unit::in_callback = false;
    if (stop != 0) return 0;
  }
  return static_cast<int>(count);
}

}  // extern "C"
