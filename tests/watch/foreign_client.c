/* A client library that is not the host kit's: it has few functions, tells nothing of its objects, lets its functions
 * call each other through the process, and ends the process when it is given what is not its own. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tq_mom/tq_mom.h>

struct tq_obj {
  char name[8];
};

static tq_global_t runtime;
static tq_mom_lrange_res_t* live;

tq_global_t* tq_global_init(const char* name, tq_global_t* g) {
  (void)name;
  return g != NULL ? g : &runtime;
}

int tq_global_finish(tq_global_t* g) { return g == &runtime ? TQ_MOM_OK : TQ_MOM_INPUT_ERR; }

/* A list of two objects. */
tq_mom_lrange_res_t* tq_mom_lrange_sync(tq_global_t* g, int db, void* key, int start, int stop) {
  (void)g, (void)db, (void)key, (void)start, (void)stop;
  tq_mom_lrange_res_t* result = calloc(1, sizeof *result);
  result->value_array = calloc(2, sizeof *result->value_array);
  for (result->count = 0; result->count < 2; ++result->count) {
    result->value_array[result->count] = calloc(1, sizeof(tq_obj));
  }
  live = result;
  return result;
}

tq_mom_lrange_res_t* tq_mom_lrange_ext_sync(tq_global_t* g, int db, tq_mom_lrange_op_t* op, void* key, int start,
                                            int stop) {
  (void)op;
  tq_mom_lrange_res_t* result = tq_mom_lrange_sync(g, db, key, start, stop);
  result->error_code = 0; /* so that it is no tail call */
  return result;
}

int tq_mom_lrange_res_free(tq_mom_lrange_res_t* result) {
  if (result != live) {
    fputs("foreign client: this is not my result\n", stderr);
    abort();
  }
  live = NULL;
  for (size_t i = 0; i < result->count; ++i) free(result->value_array[i]);
  free(result->value_array);
  free(result);
  return TQ_MOM_OK;
}

int tq_mom_scan_sync(tq_global_t* g, int db, void* key, unsigned int count, tq_mom_scan_cb callback, void* context) {
  (void)db, (void)key, (void)count;
  char text[] = "name";
  unsigned char value[] = {'u', 'p'};
  tq_mom_scan_all_msg_t message = {sizeof value, text, value};
  int result = callback(g, &message, context);
  memset(text, '#', sizeof text - 1);
  memset(value, '#', sizeof value);
  return result;
}
