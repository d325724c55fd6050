#include "records/records.h"

namespace tq_mom {
namespace {

constexpr RecordClass kClasses[] = {
    TQ_CLASS(tq_mom_pubsub_msg_t, tq_mom_pubsub_msg_t, TQ_FIELD(tq_mom_pubsub_msg_t, db),
             TQ_FIELD(tq_mom_pubsub_msg_t, key), TQ_FIELD(tq_mom_pubsub_msg_t, field),
             TQ_FIELD(tq_mom_pubsub_msg_t, cmd), TQ_FIELD(tq_mom_pubsub_msg_t, value),
             TQ_FIELD(tq_mom_pubsub_msg_t, length), TQ_FIELD(tq_mom_pubsub_msg_t, flag),
             TQ_FIELD(tq_mom_pubsub_msg_t, db_id), TQ_FIELD(tq_mom_pubsub_msg_t, cluster_id),
             TQ_FIELD(tq_mom_pubsub_msg_t, error)),
    TQ_CLASS(tq_mom_scan_all_msg_t, tq_mom_scan_all_msg_t, TQ_FIELD(tq_mom_scan_all_msg_t, vlen),
             TQ_FIELD(tq_mom_scan_all_msg_t, key), TQ_FIELD(tq_mom_scan_all_msg_t, value)),
    TQ_CLASS(tq_mom_congest_t, tq_mom_congest_t, TQ_FIELD(tq_mom_congest_t, topic),
             TQ_FIELD(tq_mom_congest_t, remain_buffer), TQ_FIELD(tq_mom_congest_t, remain_time)),
};

}  // namespace

RecordFamily<kMessageClassCount> MessageRecords() { return kClasses; }

}  // namespace tq_mom
