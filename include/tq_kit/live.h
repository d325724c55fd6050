/* What the host kit's client library has given out and nobody has released. */
#ifndef TQ_KIT_LIVE_H
#define TQ_KIT_LIVE_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

size_t tq_kit_live_results(void);

/* Value objects, those inside results included. */
size_t tq_kit_live_objects(void);

#ifdef __cplusplus
}
#endif

#endif
