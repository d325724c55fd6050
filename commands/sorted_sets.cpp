#include "commands/sorted_sets.h"

int _tq_mom_zadd_sync(tq_global_t* g, int db, double* scores, int score_count, void** members, int member_count) {
  if (score_count != member_count) return TQ_MOM_INPUT_ERR;
  return tq_mom_zadd_sync(g, db, scores, members, score_count);
}

int _tq_mom_zadd_ext_sync(tq_global_t* g, int db, tq_mom_zadd_op_t* op, double* scores, int score_count, void** members,
                          int member_count) {
  if (score_count != member_count) return TQ_MOM_INPUT_ERR;
  return tq_mom_zadd_ext_sync(g, db, op, scores, members, score_count);
}
