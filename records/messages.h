// Messages and congestion records.
#pragma once

#include "records/records.h"

namespace tq_mom {

inline constexpr RecordClass kMessages[] = {
    // clang-format off
    TQ_CLASS(tq_mom_pubsub_msg_t,
        TQ_FIELD(db), TQ_FIELD(key), TQ_FIELD(field), TQ_FIELD(cmd), TQ_FIELD(value), TQ_FIELD(length),
        TQ_FIELD(flag), TQ_FIELD(db_id), TQ_FIELD(cluster_id), TQ_FIELD(error)),
    TQ_CLASS(tq_mom_scan_all_msg_t, TQ_FIELD(vlen), TQ_FIELD(key), TQ_FIELD(value)),
    TQ_CLASS(tq_mom_congest_t, TQ_FIELD(topic), TQ_FIELD(remain_buffer), TQ_FIELD(remain_time)),
    // clang-format on
};

}  // namespace tq_mom
