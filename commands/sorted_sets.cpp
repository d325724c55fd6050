#include "commands/sorted_sets.h"

// The client library counts both arrays by one number, which stands after the members.
static_assert(tq_mom::Shape<int(tq_mom::Store, int, tq_mom::ScoresAlone, tq_mom::Members)>::Check(tq_mom_zadd_sync));
static_assert(tq_mom::Shape<int(tq_mom::Store, int, tq_mom_zadd_op_t*, tq_mom::ScoresAlone, tq_mom::Members)>::Check(
    tq_mom_zadd_ext_sync));

int _tq_mom_zadd_sync(tq_global_t* g, int db, double* scores, int score_count, void** members, int member_count) {
  if (score_count != member_count) return TQ_MOM_INPUT_ERR;
  return tq_mom_zadd_sync(g, db, scores, members, score_count);
}

int _tq_mom_zadd_ext_sync(tq_global_t* g, int db, tq_mom_zadd_op_t* op, double* scores, int score_count, void** members,
                          int member_count) {
  if (score_count != member_count) return TQ_MOM_INPUT_ERR;
  return tq_mom_zadd_ext_sync(g, db, op, scores, members, score_count);
}
