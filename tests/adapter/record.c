#include "record.h"

#include <stdlib.h>
#include <string.h>

struct record {
  record* next_known;
  unsigned references;
  record_part* parts;
};

static record* known;

record* record_new(void) {
  record* r = malloc(sizeof(*r));
  if (r == NULL) return NULL;
  *r = (record){known, 1, NULL};
  known = r;
  return r;
}

void record_retain(record* r) { r->references++; }

void record_release(record* r) {
  if (--r->references > 0) return;
  record** link = &known;
  while (*link != r) {
    link = &(*link)->next_known;
  }
  *link = r->next_known;
  while (r->parts != NULL) {
    record_part* part = r->parts;
    r->parts = part->next;
    free(part);
  }
  free(r);
}

int record_is_known(const void* pointer) {
  for (const record* r = known; r != NULL; r = r->next_known) {
    if (r == pointer) return 1;
  }
  return 0;
}

size_t record_count(void) {
  size_t count = 0;
  for (const record* r = known; r != NULL; r = r->next_known) {
    count++;
  }
  return count;
}

static int IsBefore(const record_part* part, record_kind kind, uint32_t number) {
  return part->kind < kind || (part->kind == kind && part->number < number);
}

static int IsPart(const record_part* part, record_kind kind, uint32_t number) {
  return part != NULL && part->kind == kind && part->number == number;
}

/* The link to the part, or to the one that would come after it. */
static record_part** Place(record* r, record_kind kind, uint32_t number) {
  record_part** link = &r->parts;
  while (*link != NULL && IsBefore(*link, kind, number)) {
    link = &(*link)->next;
  }
  return link;
}

void record_drop(record* r, record_kind kind, uint32_t number) {
  record_part** link = Place(r, kind, number);
  if (!IsPart(*link, kind, number)) return;
  record_part* part = *link;
  *link = part->next;
  free(part);
}

int record_put(record* r, record_kind kind, uint32_t number, const void* bytes, size_t length) {
  record_part* part = malloc(sizeof(*part) + length + 1);
  if (part == NULL) return -1;
  if (length > 0) memcpy(part->bytes, bytes, length);
  part->bytes[length] = '\0';
  part->kind = kind;
  part->number = number;
  part->length = length;
  record_drop(r, kind, number);
  record_part** link = Place(r, kind, number);
  part->next = *link;
  *link = part;
  return 0;
}

const record_part* record_first(const record* r) { return r->parts; }

const record_part* record_find(const record* r, record_kind kind, uint32_t number) {
  const record_part* part = r->parts;
  while (part != NULL && IsBefore(part, kind, number)) {
    part = part->next;
  }
  return IsPart(part, kind, number) ? part : NULL;
}
