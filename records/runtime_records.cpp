#include "records/records.h"
#include "records/thread_constants.h"

namespace tq_mom {
namespace {

#define TQ_CLASS_CONSTANT(cls, name) {binding::kInteger, #name, name, 0, nullptr, nullptr},
constexpr binding::Constant kThreadMasterConstants[] = {TQ_THREAD_MASTER_CONSTANTS(TQ_CLASS_CONSTANT){}};
constexpr binding::Constant kThreadConstants[] = {TQ_THREAD_CONSTANTS(TQ_CLASS_CONSTANT){}};

constexpr RecordClass kClasses[] = {
    // clang-format off
    TQ_CLASS(tq_global_t, TQ_FIELD(rmc), TQ_FIELD(master)),
    TQ_CLASS_WITH_CONSTANTS(tq_thread_master, kThreadMasterConstants,
        TQ_FIELD(index),
        TQ_EMBEDDED(timer, tq_thread_list),
        TQ_EMBEDDED(readfd, fd_set),
        TQ_EMBEDDED(writefd, fd_set),
        TQ_FIELD(max_fd),
        TQ_FIELD(pfds),
        TQ_FIELD(nfds),
        TQ_FIELD(pfds_size),
        TQ_EMBEDDED(alloc, u_int32_t),
        TQ_FIELD(debug),
        TQ_EMBEDDED(flag, u_int32_t),
        TQ_FIELD(tid),
        TQ_FIELD(t_recover),
        TQ_FIELD(vec_m),
        TQ_FIELD(vec_m_flag),
        TQ_FIELD(cur_thread),
        TQ_EMBEDDED(debug_list, tq_thread_debug_list)),
    TQ_CLASS_WITH_CONSTANTS(tq_thread, kThreadConstants,
        TQ_FIELD(next),
        TQ_FIELD(prev),
        TQ_FIELD(master),
        TQ_FIELD(func),
        TQ_FIELD(zg),
        TQ_FIELD(arg),
        TQ_EMBEDDED_READ_ONLY(u, tq_thread_u),
        TQ_FIELD(pfd_index),
        TQ_FIELD(name)),
    TQ_CLASS(tq_thread_u, TQ_FIELD(val), TQ_FIELD(fd), TQ_EMBEDDED(sands, timeval)),
    // clang-format on
};

}  // namespace

RecordFamily<kRuntimeClassCount> RuntimeRecords() { return kClasses; }

}  // namespace tq_mom
