// Keys and strings, and expiry.
#pragma once

#include "commands/command.h"

namespace tq_mom {

using StringCommands = List<
    // clang-format off
    TQ_COMMAND(get, tq_mom_get_sync, tq_obj*(Store, int, Key, Out)),
    TQ_COMMAND(get_ext, tq_mom_get_ext_sync, tq_mom_get_res_t*(Store, int, tq_mom_get_op_t*, Key)),
    TQ_COMMAND(set, tq_mom_set_sync, int(Store, int, Key)),
    TQ_COMMAND(set_ext, tq_mom_set_ext_sync, int(Store, int, tq_mom_set_op_t*, Key)),
    TQ_COMMAND(setnx, tq_mom_setnx_sync, int(Store, int, Key)),
    TQ_COMMAND(setnx_noreply, tq_mom_setnx_noreply_sync, int(Store, int, Key)),
    TQ_COMMAND(setnx_noreply_ext, tq_mom_setnx_noreply_ext_sync, int(Store, int, tq_mom_set_op_t*, Key)),
    TQ_COMMAND(psetex, tq_mom_psetex_sync, int(Store, int, Key, int)),
    TQ_COMMAND(psetex_ext, tq_mom_psetex_ext_sync, int(Store, int, tq_mom_psetex_op_t*, Key)),
    TQ_COMMAND(del, tq_mom_del_sync, int(Store, int, Key)),
    TQ_COMMAND(del_ext, tq_mom_del_ext_sync, int(Store, int, tq_mom_del_op_t*, Key)),
    TQ_COMMAND(exists, tq_mom_exists_sync, int(Store, int, Key)),
    TQ_COMMAND(exists_ext, tq_mom_exists_ext_sync, int(Store, int, tq_mom_exist_op_t*, Key)),
    TQ_COMMAND(incr, tq_mom_incr_sync, tq_mom_incr_res_t*(Store, int, Key)),
    TQ_COMMAND(incr_ext, tq_mom_incr_ext_sync, tq_mom_incr_res_t*(Store, int, tq_mom_incr_op_t*, Key)),
    TQ_COMMAND(pexpire, tq_mom_pexpire_sync, int(Store, int, Key, Unsigned, Timeout)),
    TQ_COMMAND(pdel, tq_mom_pdel_sync, int(Store, int, Key, Unsigned)),
    TQ_COMMAND(del_expire, tq_mom_del_expire_sync, int(Store, int, Key, Unsigned, int)),
    TQ_COMMAND(pexpire_field, tq_mom_pexpire_field_sync, int(Store, int, Key, Unsigned, Size, Timeout)),
    TQ_COMMAND(pexpire_fields, tq_mom_pexpire_fields_sync, int(Store, int, Key, Unsigned, Integers, Timeout)),
    TQ_COMMAND(get_res_free, tq_mom_get_res_free, int(tq_mom_get_res_t*)),
    TQ_COMMAND(incr_res_free, tq_mom_incr_res_free, int(tq_mom_incr_res_t*)),
    TQ_COMMAND(tq_obj_free, tq_mom_tq_obj_free, int(Key))>;
// clang-format on

}  // namespace tq_mom
