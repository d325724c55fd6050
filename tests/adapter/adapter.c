/* The functions of tq_kit/value_object.h over the records of record.h: what an integrator writes for a platform. */
#include <tq_kit/value_object.h>

#include "record.h"

static record* Record(const void* object) { return record_is_known(object) ? (record*)object : NULL; }

static int Put(tq_obj* object, record_kind kind, uint32_t number, const void* bytes, size_t length) {
  record* r = Record(object);
  if (r == NULL || (bytes == NULL && length > 0)) return TQ_MOM_INPUT_ERR;
  return record_put(r, kind, number, bytes, length) == 0 ? TQ_MOM_OK : TQ_MOM_MALLOC_ERR;
}

static int Drop(tq_obj* object, record_kind kind, uint32_t number) {
  record* r = Record(object);
  if (r == NULL) return TQ_MOM_INPUT_ERR;
  record_drop(r, kind, number);
  return TQ_MOM_OK;
}

static const char* Bytes(const record_part* part, size_t* length) {
  if (length != NULL) *length = part != NULL ? part->length : 0;
  return part != NULL ? part->bytes : NULL;
}

static const char* Find(const tq_obj* object, record_kind kind, uint32_t number, size_t* length) {
  const record* r = Record(object);
  return Bytes(r != NULL ? record_find(r, kind, number) : NULL, length);
}

static const record_part* FirstField(const tq_obj* object) {
  const record* r = Record(object);
  const record_part* part = r != NULL ? record_first(r) : NULL;
  while (part != NULL && part->kind != RECORD_FIELD) {
    part = part->next;
  }
  return part;
}

tq_obj* tq_obj_new(const char* key, size_t key_length) {
  record* r = record_new();
  if (r == NULL) return NULL;
  if (record_put(r, RECORD_KEY, 0, key, key_length) != 0) {
    record_release(r);
    return NULL;
  }
  return (tq_obj*)r;
}

void tq_obj_delete(tq_obj* object) {
  record* r = Record(object);
  if (r != NULL) record_release(r);
}

int tq_obj_is_live(const void* pointer) { return record_is_known(pointer); }

int tq_obj_set_key(tq_obj* object, const char* key, size_t length) { return Put(object, RECORD_KEY, 0, key, length); }

int tq_obj_set_value(tq_obj* object, const void* value, size_t length) {
  return Put(object, RECORD_VALUE, 0, value, length);
}

int tq_obj_clear_value(tq_obj* object) { return Drop(object, RECORD_VALUE, 0); }

int tq_obj_set_field(tq_obj* object, uint32_t tag, const void* bytes, size_t length) {
  return Put(object, RECORD_FIELD, tag, bytes, length);
}

int tq_obj_clear_field(tq_obj* object, uint32_t tag) { return Drop(object, RECORD_FIELD, tag); }

const char* tq_obj_key(const tq_obj* object, size_t* length) { return Find(object, RECORD_KEY, 0, length); }

const char* tq_obj_value(const tq_obj* object, size_t* length) { return Find(object, RECORD_VALUE, 0, length); }

const char* tq_obj_field(const tq_obj* object, uint32_t tag, size_t* length) {
  return Find(object, RECORD_FIELD, tag, length);
}

size_t tq_obj_field_count(const tq_obj* object) {
  size_t count = 0;
  for (const record_part* part = FirstField(object); part != NULL; part = part->next) {
    count++;
  }
  return count;
}

const char* tq_obj_field_at(const tq_obj* object, size_t position, uint32_t* tag, size_t* length) {
  const record_part* part = FirstField(object);
  for (; part != NULL && position > 0; position--) {
    part = part->next;
  }
  if (part != NULL && tag != NULL) *tag = part->number;
  return Bytes(part, length);
}
