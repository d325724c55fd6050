/* The host kit's own controls over a runtime: what a device has no function for.
 *
 * g is a runtime made by tq_global_init. An int result is a status code, or, where said, a number that is not negative
 * on success. What an engine cannot do gives TQ_MOM_ERR; tq_kit_last_error says why. */
#ifndef TQ_KIT_CONTROL_H
#define TQ_KIT_CONTROL_H

#include <stddef.h>
#include <stdint.h>
#include <tq_mom/tq_mom.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Why the last call on the runtime failed, in words; empty if it did not fail, null if g is no runtime. Valid until the
 * next call on the runtime. */
const char* tq_kit_last_error(tq_global_t* g);

/* The time by which keys and fields expire. freeze stops it, advance moves a stopped one on, thaw lets it go on from
 * where it is. Freezing what is frozen and thawing what is not are no failures; advance needs a stopped clock
 * (TQ_MOM_INPUT_ERR) and takes no negative time (TQ_MOM_INPUT_ERR). In-process engine only. */
int tq_kit_freeze(tq_global_t* g);
int tq_kit_advance(tq_global_t* g, int64_t milliseconds);
int tq_kit_thaw(tq_global_t* g);

/* While on is nonzero, commands that write to the database are refused with TQ_MOM_GLOBAL_DB_NO_WRITE, and so is
 * tq_kit_store; nothing is removed but what expires. */
int tq_kit_read_only(tq_global_t* g, int db, int on);

typedef enum {
  TQ_KIT_NONE = 0,
  TQ_KIT_STRING = 1,
  TQ_KIT_HASH = 2,
  TQ_KIT_LIST = 3,
  TQ_KIT_SET = 4,
  TQ_KIT_SORTED_SET = 5
} tq_kit_kind_t;

/* A time that never comes. */
#define TQ_KIT_NEVER ((int64_t)-1)

/* The kind of a key, TQ_KIT_NONE without one, and the milliseconds until it expires. Each pointer may be null. */
int tq_kit_inspect(tq_global_t* g, int db, const char* key, tq_kit_kind_t* kind, int64_t* remaining);

/* One element of a key: the value of a string, a field of a hash, an element of a list, a member of a set or sorted
 * set. bytes points to length bytes. */
typedef struct {
  const char* key;
  tq_kit_kind_t kind;
  int64_t remaining; /* of the key, in milliseconds, or TQ_KIT_NEVER */
  size_t position;   /* among the elements of the key, from 0; element 0 is the first that is visited */
  size_t count;      /* the elements of the key */
  const void* bytes;
  size_t length;
  uint32_t tag;            /* hash: the field's number */
  int64_t field_remaining; /* hash: milliseconds until the field expires, or TQ_KIT_NEVER */
  double score;            /* sorted set */
} tq_kit_element_t;

/* A nonzero return stops the visit. The element and all it points to are valid only during the call, which may leave by
 * longjmp and use the runtime in any way but end it. */
typedef int (*tq_kit_visitor)(tq_global_t* g, const tq_kit_element_t* element, void* context);

/* Visits all elements of all keys of the database that match the pattern (a glob as for a scan): keys in the order of a
 * scan, the elements of each together, hashes by number, lists in their order, sets by bytes, sorted sets by score and
 * bytes. Counts as no read for field_change_tag. Returns how many elements were visited. */
int tq_kit_visit(tq_global_t* g, int db, const char* pattern, tq_kit_visitor visitor, void* context);

/* Puts an element where tq_kit_visit would find it: string: replaces the key; hash: writes the field; list: appends;
 * set and sorted set: adds the member; then sets the remaining times of field and key (a key's TQ_KIT_NEVER leaves its
 * expiry as it is; of a field it takes it away; 0 removes at once). position and count mean nothing here. */
int tq_kit_store(tq_global_t* g, int db, const tq_kit_element_t* element);

/* Removes all keys of the database. Returns how many there were. */
int tq_kit_clear(tq_global_t* g, int db);

/* Delivers the messages that have arrived to the subscribers (see subscribe.h), after waiting for one for at most that
 * many milliseconds; removes what has expired. With the in-process engine nothing can arrive: a message is delivered
 * inside its publish. Returns how many calls of subscribers it made. */
int tq_kit_poll(tq_global_t* g, int64_t milliseconds);

#ifdef __cplusplus
}
#endif

#endif
