// Keys and strings, and expiry.
#ifndef TQ_COMMANDS_STRINGS_H
#define TQ_COMMANDS_STRINGS_H

#include "commands/command.h"

namespace tq_mom {

constexpr Function kStringCommands[] = {
    TQ_COMMAND(get, tq_mom_get_sync),
    TQ_COMMAND(get_ext, tq_mom_get_ext_sync),
    TQ_COMMAND(set, tq_mom_set_sync),
    TQ_COMMAND(set_ext, tq_mom_set_ext_sync),
    TQ_COMMAND(setnx, tq_mom_setnx_sync),
    TQ_COMMAND(setnx_noreply, tq_mom_setnx_noreply_sync),
    TQ_COMMAND(setnx_noreply_ext, tq_mom_setnx_noreply_ext_sync),
    TQ_COMMAND(psetex, tq_mom_psetex_sync),
    TQ_COMMAND(psetex_ext, tq_mom_psetex_ext_sync),
    TQ_COMMAND(del, tq_mom_del_sync),
    TQ_COMMAND(del_ext, tq_mom_del_ext_sync),
    TQ_COMMAND(exists, tq_mom_exists_sync),
    TQ_COMMAND(exists_ext, tq_mom_exists_ext_sync),
    TQ_COMMAND(incr, tq_mom_incr_sync),
    TQ_COMMAND(incr_ext, tq_mom_incr_ext_sync),
    TQ_COMMAND(pexpire, tq_mom_pexpire_sync),
    TQ_COMMAND(pdel, tq_mom_pdel_sync),
    TQ_COMMAND(del_expire, tq_mom_del_expire_sync),
    TQ_COMMAND_WITH_SIZE(pexpire_field, tq_mom_pexpire_field_sync),
    TQ_COMMAND(pexpire_fields, tq_mom_pexpire_fields_sync),
    TQ_COMMAND(get_res_free, tq_mom_get_res_free),
    TQ_COMMAND(incr_res_free, tq_mom_incr_res_free),
    TQ_COMMAND(tq_obj_free, tq_mom_tq_obj_free),
};

}  // namespace tq_mom

#endif
