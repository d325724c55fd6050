/* What the host kit's client library offers beyond the client functions. */
#ifndef TQ_KIT_SUBSCRIBE_H
#define TQ_KIT_SUBSCRIBE_H

#include <tq_mom/tq_mom.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Called for each message that is published to a database under a matching key, from inside the publish, on its
 * thread. The message and all it points to are valid only during the call, which may use the runtime in any way but
 * end it. */
typedef void (*tq_kit_subscriber)(tq_global_t* g, const tq_mom_pubsub_msg_t* message, void* context);

/* pattern is a glob as for a scan. Returns the subscription's number, which is positive and in the
 * process no other's, or a status code. */
int tq_kit_subscribe(tq_global_t* g, int db, const char* pattern, tq_kit_subscriber subscriber, void* context);
/* Also from inside a subscriber. TQ_MOM_INPUT_ERR if there is no such subscription. */
int tq_kit_unsubscribe(tq_global_t* g, int subscription);

#ifdef __cplusplus
}
#endif

#endif
