/* A client library that is not the host kit's: it has few functions, tells nothing of its objects, lets its functions
 * call each other through the process, and ends the process when it is given what is not its own. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tq_mom/tq_mom.h>

struct tq_obj {
  char name[8];
};

struct list {
  tq_mom_lrange_res_t result; /* first */
  struct list* next;
};

static tq_global_t runtime;
static struct list* lists;

tq_global_t* tq_global_init(const char* name, tq_global_t* g) {
  (void)name;
  return g != NULL ? g : &runtime;
}

int tq_global_finish(tq_global_t* g) { return g == &runtime ? TQ_MOM_OK : TQ_MOM_INPUT_ERR; }

/* How many lists are not released. */
int tq_mom_debug_show_all(tq_global_t* g) {
  (void)g;
  int count = 0;
  for (const struct list* list = lists; list != NULL; list = list->next) ++count;
  return count;
}

/* Two objects. */
tq_mom_lrange_res_t* tq_mom_lrange_sync(tq_global_t* g, int db, void* key, int start, int stop) {
  (void)g, (void)db, (void)key, (void)start, (void)stop;
  struct list* list = calloc(1, sizeof *list);
  tq_mom_lrange_res_t* result = &list->result;
  result->value_array = calloc(2, sizeof *result->value_array);
  for (result->count = 0; result->count < 2; ++result->count) {
    result->value_array[result->count] = calloc(1, sizeof(tq_obj));
  }
  list->next = lists;
  lists = list;
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
  struct list** link = &lists;
  while (*link != NULL && &(*link)->result != result) link = &(*link)->next;
  struct list* list = *link;
  if (list == NULL) {
    fputs("foreign client: this is not my result\n", stderr);
    abort();
  }
  *link = list->next;
  for (size_t i = 0; i < result->count; ++i) free(result->value_array[i]);
  free(result->value_array);
  free(list);
  return TQ_MOM_OK;
}

int tq_mom_llen_sync(tq_global_t* g, int db, void* key) {
  (void)g, (void)db, (void)key;
  return 2;
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
