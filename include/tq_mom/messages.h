/* Messages: what the data store pushes to the client. The library owns them and all they point to; one that is handed
 * to a callback is valid only during that call. Character arrays are NUL-terminated. */
#ifndef TQ_MOM_MESSAGES_H
#define TQ_MOM_MESSAGES_H

#include <stddef.h>
#include <tq_mom/constants.h>

/* A publish/subscribe notification. value points to length bytes. */
typedef struct tq_mom_pubsub_msg_s {
  int db;
  char key[TQ_MOM_KEY_MAX_LEN];
  char field[TQ_MOM_FIELD_MAX_LEN];
  tq_mom_cmd_t cmd;
  void* value;
  size_t length;
  tq_mom_batch_over_flag_t flag;
  int db_id;
  int cluster_id;
  int error;
} tq_mom_pubsub_msg_t;

/* One element of a scan. value points to vlen bytes, which need not end in a NUL. */
typedef struct tq_mom_scan_all_msg_s {
  int vlen;
  char* key;
  unsigned char* value;
} tq_mom_scan_all_msg_t;

/* A congestion report. */
typedef struct tq_mom_congest_s {
  char topic[TQ_MOM_KEY_MAX_LEN];
  long long remain_buffer;
  long long remain_time;
  char reserved[512];
} tq_mom_congest_t;

#endif
