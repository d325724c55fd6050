/* Value objects: all that the Lua module tq_obj needs to make, read and release them. The host kit has these functions
 * for its own objects; an adapter writes them over those of a platform.
 *
 * A value object has a key text, at most one value (bytes) and any number of numbered fields (bytes), kept in ascending
 * order of their numbers. Key, value and fields are copied in; a pointer that a reader returns stays valid until that
 * part of the object is next written or the object is released. Readers end the bytes with a NUL that the length does
 * not count. A status is TQ_MOM_OK, TQ_MOM_INPUT_ERR (null, or not a live object) or TQ_MOM_MALLOC_ERR; on failure the
 * object is as before. */
#ifndef TQ_KIT_VALUE_OBJECT_H
#define TQ_KIT_VALUE_OBJECT_H

#include <stddef.h>
#include <stdint.h>
#include <tq_mom/tq_mom.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A new object without value and fields; null when out of memory. The caller's to release. */
tq_obj* tq_obj_new(const char* key, size_t key_length);

/* Releases an object that tq_obj_new made. Does nothing when the pointer is no live object: a script may have released
 * it by other means. */
void tq_obj_delete(tq_obj* object);

/* Nonzero if the pointer is a value object that has not been released, whoever made it. Takes any pointer. A platform
 * that cannot tell says yes to all but null; using a released object is then undefined, as it is there without Lua. */
int tq_obj_is_live(const void* pointer);

int tq_obj_set_key(tq_obj* object, const char* key, size_t length);
int tq_obj_set_value(tq_obj* object, const void* value, size_t length);
int tq_obj_clear_value(tq_obj* object);
int tq_obj_set_field(tq_obj* object, uint32_t tag, const void* bytes, size_t length);
/* Removing a field that is not there is no failure. */
int tq_obj_clear_field(tq_obj* object, uint32_t tag);

/* *length may be left out (null). value and field return null when there is none. For what is no live object all
 * readers return null, or 0: the collector may release the object between two of them. */
const char* tq_obj_key(const tq_obj* object, size_t* length);
const char* tq_obj_value(const tq_obj* object, size_t* length);
const char* tq_obj_field(const tq_obj* object, uint32_t tag, size_t* length);

size_t tq_obj_field_count(const tq_obj* object);
/* The field at a position from 0 in ascending order of numbers; null beyond the last. */
const char* tq_obj_field_at(const tq_obj* object, size_t position, uint32_t* tag, size_t* length);

#ifdef __cplusplus
}
#endif

#endif
