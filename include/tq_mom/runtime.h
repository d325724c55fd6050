/* The event runtime under the client library: a global record, an event-loop master and its events.
 *
 * The exposed fields are the runtime library's. What is marked "ours" stands in for parts that it keeps to itself (the
 * two list records and the events' inner fields): put the vendor's own header in place of this one to match a device
 * byte for byte. */
#ifndef TQ_MOM_RUNTIME_H
#define TQ_MOM_RUNTIME_H

#include <stddef.h>
#include <sys/time.h>
#include <sys/types.h>

#define TQ_THREAD_NAME_LEN 10 /* longest event name, in characters */

#define TQ_THREAD_TIMER_SLOT 4 /* timer lists of a master */

/* Bits of a master's debug. */
#define TQ_THREAD_DEBUG_INTERFACE_FLAG 1
#define TQ_THREAD_DEBUG_PROCEDURE_FLAG 2
#define TQ_THREAD_DEBUG_EXEC_TIME_FLAG 4

/* Bits of a master's flag. TQ_THREAD_USE_POLL: poll with pfds instead of select. */
#define TQ_THREAD_IS_FIRST_FETCH 1
#define TQ_THREAD_USE_POLL 2

/* An event's priority. */
#define TQ_THREAD_PRIORITY_HIGH 0
#define TQ_THREAD_PRIORITY_MIDDLE 1
#define TQ_THREAD_PRIORITY_LOW 2

/* Bits of an event's flag: created by the user; linked in a list. */
#define TQ_THREAD_FLAG_CRT_BY_USR 1
#define TQ_THREAD_FLAG_IN_LIST 2

struct tq_mom_client_s; /* the client connection, opaque */
struct vec_master_t;    /* opaque */
struct pollfd;
struct tq_thread;

/* Room for 65536 descriptors; the system's own fd_set is smaller. */
typedef struct {
  unsigned char bits[8192];
} tq_fd_set;

/* Ours. */
struct tq_thread_list {
  struct tq_thread* head;
  struct tq_thread* tail;
  int count;
};

/* Ours. */
struct tq_thread_debug_list {
  struct tq_thread* head;
  struct tq_thread* tail;
  int count;
};

/* The event-loop master. */
struct tq_thread_master {
  int index;
  struct tq_thread_list timer[TQ_THREAD_TIMER_SLOT];
  tq_fd_set readfd;
  tq_fd_set writefd;
  int max_fd;
  struct pollfd* pfds;
  short nfds;
  short pfds_size;
  u_int32_t alloc;
  int debug;
  u_int32_t flag;
  int tid;
  struct tq_thread* t_recover;
  struct vec_master_t* vec_m;
  int vec_m_flag;
  struct tq_thread* cur_thread;
  struct tq_thread_debug_list debug_list;
};

/* An event's payload. */
typedef union {
  int val;
  int fd;
  struct timeval sands;
} tq_thread_u;

/* One event. */
struct tq_thread {
  struct tq_thread* next;
  struct tq_thread* prev;
  struct tq_thread_master* master;
  int (*func)(struct tq_thread*);
  void* zg;
  void* arg;
  tq_thread_u u;
  short pfd_index;
  /* Ours, up to name. */
  unsigned char type;
  unsigned char priority;
  u_int32_t flag;
  char name[TQ_THREAD_NAME_LEN + 1];
};

/* Joins the client connection to the event loop; first argument of almost every client function. */
typedef struct tq_global_s {
  struct tq_mom_client_s* rmc;
  struct tq_thread_master* master;
} tq_global_t;

#endif
