/* idle LIBRARY COUNT: calls two functions of a client library, or of one that stands before it, so many times. */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <tq_mom/tq_mom.h>

static void* library;

static void* Find(const char* name) {
  void* symbol = dlsym(library, name);
  if (symbol == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    exit(1);
  }
  return symbol;
}

int main(int argc, char** argv) {
  library = argc == 3 ? dlopen(argv[1], RTLD_NOW) : NULL;
  if (library == NULL) {
    fprintf(stderr, "usage: idle LIBRARY COUNT\n");
    return 2;
  }
  union {
    void* symbol;
    int (*function)(tq_global_t*, int, void*);
  } few = {Find("tq_mom_llen_sync")};
  union {
    void* symbol;
    int (*function)(tq_global_t*, int, tq_obj*, unsigned int, int32_t*, int, struct timeval);
  } many = {Find("tq_mom_pexpire_fields_sync")};
  const struct timeval timeout = {0, 0};
  for (int i = atoi(argv[2]); i > 0; --i) {
    if (few.function(NULL, 0, NULL) != TQ_MOM_INPUT_ERR) return 1;
    if (many.function(NULL, 0, NULL, 0, NULL, 0, timeout) != TQ_MOM_INPUT_ERR) return 1;
  }
  return 0;
}
