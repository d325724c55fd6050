#include <tq_mom/tq_mom.h>

int Exists(tq_global_t* g, tq_obj* key);

int Exists(tq_global_t* g, tq_obj* key) { return tq_mom_exists_sync(g, 0, key); }
