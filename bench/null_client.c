/* What workloads read of a client library that else does nothing: get and the pops write their out-value, get_ext and
 * zrange return static records, and scan delivers count messages. */
#include <tq_mom/tq_mom.h>

enum { kValueCount = 100 };

static tq_mom_get_res_t get_result;
static tq_obj* range_values[kValueCount];
static double range_scores[kValueCount];
static tq_mom_zrange_res_t range_result = {range_values, range_scores, kValueCount, 0};

#pragma GCC diagnostic ignored "-Wunused-parameter"

tq_obj* tq_mom_get_sync(tq_global_t* g, int db, tq_obj* key, int* error_code) {
  *error_code = 0;
  return NULL;
}

tq_mom_get_res_t* tq_mom_get_ext_sync(tq_global_t* g, int db, tq_mom_get_op_t* op, tq_obj* key) { return &get_result; }

tq_mom_zrange_res_t* tq_mom_zrange_sync(tq_global_t* g, int db, void* key, int start, int stop) {
  for (int i = 0; i < kValueCount; ++i) range_values[i] = (tq_obj*)&range_values[i];
  return &range_result;
}

int tq_mom_scan_sync(tq_global_t* g, int db, void* key, unsigned int count, tq_mom_scan_cb callback, void* context) {
  static tq_mom_scan_all_msg_t message;
  for (unsigned int i = 0; callback && i < count; ++i) callback(g, &message, context);
  return 0;
}
