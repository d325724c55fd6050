// Constants of the runtime's thread records. Each class has its own, and the module has all of them under flattened
// names, class name first.
#pragma once

#include <tq_mom/tq_mom.h>

// CONSTANT(class, name)
#define TQ_THREAD_MASTER_CONSTANTS(CONSTANT)                 \
  CONSTANT(tq_thread_master, TQ_THREAD_TIMER_SLOT)           \
  CONSTANT(tq_thread_master, TQ_THREAD_DEBUG_INTERFACE_FLAG) \
  CONSTANT(tq_thread_master, TQ_THREAD_DEBUG_PROCEDURE_FLAG) \
  CONSTANT(tq_thread_master, TQ_THREAD_DEBUG_EXEC_TIME_FLAG) \
  CONSTANT(tq_thread_master, TQ_THREAD_IS_FIRST_FETCH)       \
  CONSTANT(tq_thread_master, TQ_THREAD_USE_POLL)

#define TQ_THREAD_CONSTANTS(CONSTANT)            \
  CONSTANT(tq_thread, TQ_THREAD_PRIORITY_HIGH)   \
  CONSTANT(tq_thread, TQ_THREAD_PRIORITY_MIDDLE) \
  CONSTANT(tq_thread, TQ_THREAD_PRIORITY_LOW)    \
  CONSTANT(tq_thread, TQ_THREAD_FLAG_CRT_BY_USR) \
  CONSTANT(tq_thread, TQ_THREAD_FLAG_IN_LIST)
