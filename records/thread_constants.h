// Constants of the runtime's thread records: each class has its own, and the module has all of them under flattened
// names, class name first.
#ifndef TQ_RECORDS_THREAD_CONSTANTS_H
#define TQ_RECORDS_THREAD_CONSTANTS_H

#include <tq_mom/tq_mom.h>

#include "runtime/abi.h"

namespace tq_mom {

#define TQ_CLASS_CONSTANT(cls, name) \
  { binding::kInteger, #cls "_" #name, name, 0, nullptr, nullptr }

inline constexpr binding::Constant kFlattenedThreadConstants[] = {
    TQ_CLASS_CONSTANT(tq_thread_master, TQ_THREAD_TIMER_SLOT),
    TQ_CLASS_CONSTANT(tq_thread_master, TQ_THREAD_DEBUG_INTERFACE_FLAG),
    TQ_CLASS_CONSTANT(tq_thread_master, TQ_THREAD_DEBUG_PROCEDURE_FLAG),
    TQ_CLASS_CONSTANT(tq_thread_master, TQ_THREAD_DEBUG_EXEC_TIME_FLAG),
    TQ_CLASS_CONSTANT(tq_thread_master, TQ_THREAD_IS_FIRST_FETCH),
    TQ_CLASS_CONSTANT(tq_thread_master, TQ_THREAD_USE_POLL),
    TQ_CLASS_CONSTANT(tq_thread, TQ_THREAD_PRIORITY_HIGH),
    TQ_CLASS_CONSTANT(tq_thread, TQ_THREAD_PRIORITY_MIDDLE),
    TQ_CLASS_CONSTANT(tq_thread, TQ_THREAD_PRIORITY_LOW),
    TQ_CLASS_CONSTANT(tq_thread, TQ_THREAD_FLAG_CRT_BY_USR),
    TQ_CLASS_CONSTANT(tq_thread, TQ_THREAD_FLAG_IN_LIST),
};
inline constexpr int kThreadMasterConstantCount = 6;
inline constexpr int kThreadConstantCount = 5;

#undef TQ_CLASS_CONSTANT

}  // namespace tq_mom

#endif
