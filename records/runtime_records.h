// Records of the event runtime.
#pragma once

#include "records/records.h"

namespace tq_mom {

inline constexpr RecordClass kRuntimeRecords[] = {
    // clang-format off
    TQ_CLASS(tq_global_t, TQ_FIELD(rmc), TQ_FIELD(master)),
    TQ_CLASS(tq_thread_master,
        TQ_FIELD(index), TQ_EMBEDDED(timer, tq_thread_list, "struct tq_thread_list [4]"),
        TQ_EMBEDDED(readfd, FdSet, "fd_set"), TQ_EMBEDDED(writefd, FdSet, "fd_set"), TQ_FIELD(max_fd), TQ_FIELD(pfds),
        TQ_FIELD(nfds), TQ_FIELD(pfds_size), TQ_EMBEDDED(alloc, UInt32, "u_int32_t"), TQ_FIELD(debug),
        TQ_EMBEDDED(flag, UInt32, "u_int32_t"), TQ_FIELD(tid), TQ_FIELD(t_recover), TQ_FIELD(vec_m),
        TQ_FIELD(vec_m_flag), TQ_FIELD(cur_thread),
        TQ_EMBEDDED(debug_list, tq_thread_debug_list, "struct tq_thread_debug_list")),
    TQ_CLASS(tq_thread,
        TQ_FIELD(next), TQ_FIELD(prev), TQ_FIELD(master), TQ_FIELD(func), TQ_FIELD(zg), TQ_FIELD(arg),
        TQ_EMBEDDED_READ_ONLY(u, tq_thread_u), TQ_FIELD(pfd_index), TQ_FIELD(name)),
    TQ_CLASS(tq_thread_u, TQ_FIELD(val), TQ_FIELD(fd), TQ_EMBEDDED(sands, timeval, "struct timeval")),
    // clang-format on
};

}  // namespace tq_mom
