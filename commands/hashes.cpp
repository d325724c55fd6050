#include "commands/hashes.h"

namespace tq_mom {
namespace {

// Calls the client with a fresh record of the script's flag and the fields; the script's own record stays as it is.
template <class Option, class Client>
int WriteFields(Client client, tq_global_t* g, int db, const Option* op, tq_obj* key, int32_t* fields,
                int field_count) {
  static_assert(Shape<int(Store, int, Option*, Key)>::Check(Client()));
  if (op == nullptr) return client(g, db, nullptr, key);
  Option filled{};
  filled.fields = fields;
  filled.field_count = field_count;
  filled.flag = op->flag;
  return client(g, db, &filled, key);
}

}  // namespace
}  // namespace tq_mom

int _tq_mom_hmset_ext_sync(tq_global_t* g, int db, tq_mom_hmset_op_t* op, tq_obj* key, int32_t* fields,
                           int field_count) {
  return tq_mom::WriteFields(tq_mom_hmset_ext_sync, g, db, op, key, fields, field_count);
}

int _tq_mom_hmsetnx_ext_sync(tq_global_t* g, int db, tq_mom_hmsetnx_op_t* op, tq_obj* key, int32_t* fields,
                             int field_count) {
  return tq_mom::WriteFields(tq_mom_hmsetnx_ext_sync, g, db, op, key, fields, field_count);
}
