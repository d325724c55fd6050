// What the module's shared object exports for other native code, beside its entry point and the casts.
#pragma once

#include <tq_mom/tq_mom.h>

#include <lua.hpp>

#define TQ_EXPORT [[gnu::visibility("default")]]

extern "C" {

// Call the client's command of the same name with an option record that carries the flag of `op` and the fields.
// Without `op`, the command gets no record and no fields.
int _tq_mom_hmset_ext_sync(tq_global_t* g, int db, tq_mom_hmset_op_t* op, tq_obj* key, int32_t* fields,
                           int field_count);
TQ_EXPORT int _tq_mom_hmsetnx_ext_sync(tq_global_t* g, int db, tq_mom_hmsetnx_op_t* op, tq_obj* key, int32_t* fields,
                                       int field_count);

// Call the client's command of the same name, unless the counts differ: then they return TQ_MOM_INPUT_ERR.
TQ_EXPORT int _tq_mom_zadd_sync(tq_global_t* g, int db, double* scores, int score_count, void** members,
                                int member_count);
TQ_EXPORT int _tq_mom_zadd_ext_sync(tq_global_t* g, int db, tq_mom_zadd_op_t* op, double* scores, int score_count,
                                    void** members, int member_count);

}  // extern "C"
