#include <string_view>

#include "records/records.h"
#include "records/thread_constants.h"

namespace tq_mom {

namespace {

template <int count>
struct ConstantList {
  binding::Constant constants[count + 1];
};

// The class's own constants: the flattened ones without the class name, ended by a code of 0.
template <int first, int count>
constexpr ConstantList<count> ClassConstants(std::string_view class_name) {
  ConstantList<count> list{};
  for (int i = 0; i < count; ++i) {
    list.constants[i] = kFlattenedThreadConstants[first + i];
    list.constants[i].name += class_name.size() + 1;
  }
  return list;
}

constexpr auto kThreadMasterConstants = ClassConstants<0, kThreadMasterConstantCount>("tq_thread_master");
constexpr auto kThreadConstants = ClassConstants<kThreadMasterConstantCount, kThreadConstantCount>("tq_thread");

constexpr RecordClass kClasses[] = {
    TQ_CLASS(tq_global_t, tq_global_t, TQ_FIELD(tq_global_t, rmc), TQ_FIELD(tq_global_t, master)),
    TQ_CLASS_WITH_CONSTANTS(
        tq_thread_master, tq_thread_master, kThreadMasterConstants.constants, TQ_FIELD(tq_thread_master, index),
        TQ_EMBEDDED(tq_thread_master, timer, tq_thread_list), TQ_EMBEDDED(tq_thread_master, readfd, fd_set),
        TQ_EMBEDDED(tq_thread_master, writefd, fd_set), TQ_FIELD(tq_thread_master, max_fd),
        TQ_FIELD(tq_thread_master, pfds), TQ_FIELD(tq_thread_master, nfds), TQ_FIELD(tq_thread_master, pfds_size),
        TQ_EMBEDDED(tq_thread_master, alloc, u_int32_t), TQ_FIELD(tq_thread_master, debug),
        TQ_EMBEDDED(tq_thread_master, flag, u_int32_t), TQ_FIELD(tq_thread_master, tid),
        TQ_FIELD(tq_thread_master, t_recover), TQ_FIELD(tq_thread_master, vec_m),
        TQ_FIELD(tq_thread_master, vec_m_flag), TQ_FIELD(tq_thread_master, cur_thread),
        TQ_EMBEDDED(tq_thread_master, debug_list, tq_thread_debug_list)),
    TQ_CLASS_WITH_CONSTANTS(
        tq_thread, tq_thread, kThreadConstants.constants, TQ_FIELD(tq_thread, next), TQ_FIELD(tq_thread, prev),
        TQ_FIELD(tq_thread, master), TQ_FIELD(tq_thread, func), TQ_FIELD(tq_thread, zg), TQ_FIELD(tq_thread, arg),
        TQ_EMBEDDED_READ_ONLY(tq_thread, u, tq_thread_u), TQ_FIELD(tq_thread, pfd_index), TQ_FIELD(tq_thread, name)),
    TQ_CLASS(tq_thread_u, tq_thread_u, TQ_FIELD(tq_thread_u, val), TQ_FIELD(tq_thread_u, fd),
             TQ_EMBEDDED(tq_thread_u, sands, timeval)),
};

}  // namespace

RecordFamily<kRuntimeClassCount> RuntimeRecords() { return kClasses; }

}  // namespace tq_mom
