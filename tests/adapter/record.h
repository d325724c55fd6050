/* Objects as a platform other than the host kit may have them: counted references, and everything that an object holds
 * in one list of tagged parts, the key among them. */
#pragma once

#include <stddef.h>
#include <stdint.h>

typedef enum { RECORD_KEY, RECORD_VALUE, RECORD_FIELD } record_kind;

typedef struct record_part {
  struct record_part* next;
  record_kind kind;
  uint32_t number; /* of a field */
  size_t length;
  char bytes[]; /* length of them and a NUL */
} record_part;

typedef struct record record;

/* With one reference; null when out of memory. */
record* record_new(void);
void record_retain(record* r);
/* The last release frees the record. */
void record_release(record* r);

int record_is_known(const void* pointer);
size_t record_count(void);

/* Sets or replaces the part of this kind and number. Nonzero when out of memory; the record is then as before. */
int record_put(record* r, record_kind kind, uint32_t number, const void* bytes, size_t length);
void record_drop(record* r, record_kind kind, uint32_t number);
/* In the order of kinds and numbers; null at the end, or when there is none. */
const record_part* record_first(const record* r);
const record_part* record_find(const record* r, record_kind kind, uint32_t number);
