// Finds the client library's functions, and what it tells of value objects.
#include <dlfcn.h>
#include <link.h>
#include <tq_mom/results.h>

#include <cstdlib>

#include "watch/internal.h"

namespace tq_watch {
namespace {

// The client library, or what comes after this library.
void* client = RTLD_NEXT;
Text problem;

// Of the host kit's client library; tq_kit/value_object.h declares them. Another library may have them, too.
int (*is_live)(const void* pointer);
const char* (*read_key)(const tq_obj* object, std::size_t* length);
const char* (*read_value)(const tq_obj* object, std::size_t* length);
const char* (*read_field)(const tq_obj* object, std::size_t position, std::uint32_t* tag, std::size_t* length);

// Where a loaded object is. Given an address in it, it is filled in.
struct Extent {
  std::uintptr_t begin;
  std::uintptr_t end;

  bool Has(const void* address) const {
    auto place = reinterpret_cast<std::uintptr_t>(address);
    return place >= begin && place < end;
  }
};

Extent client_extent;
Extent own_extent;

int Extend(dl_phdr_info* object, std::size_t /*size*/, void* data) {
  auto* extent = static_cast<Extent*>(data);
  Extent found = {UINTPTR_MAX, 0};
  for (int i = 0; i < object->dlpi_phnum; ++i) {
    const auto& segment = object->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD) continue;
    std::uintptr_t begin = object->dlpi_addr + segment.p_vaddr;
    if (begin < found.begin) found.begin = begin;
    if (begin + segment.p_memsz > found.end) found.end = begin + segment.p_memsz;
  }
  if (extent->begin < found.begin || extent->begin >= found.end) return 0;
  *extent = found;
  return 1;
}

Extent ExtentOf(void (*function)()) {
  Extent extent = {reinterpret_cast<std::uintptr_t>(function), 0};
  dl_iterate_phdr(Extend, &extent);
  return extent;
}

// Whether the process takes the client functions from this library.
bool ComesFirst() {
  void* process = dlopen(nullptr, RTLD_NOW);
  void* found = dlsym(process, functions[0].client_name);
  dlclose(process);
  return own_extent.Has(found);
}

template <class F> void Find(const char* name, F* function) { *function = reinterpret_cast<F>(FindSymbol(name)); }

}  // namespace

void* FindSymbol(const char* name) { return dlsym(client, name); }

void FindClient() {
  own_extent = ExtentOf(FindClient);
  const char* file = std::getenv("TQ_WATCH_CLIENT");
  if (file != nullptr) {
    // A library that the process loads is first only when it is loaded; the client library's own loader may then make
    // that public.
    client = dlopen(file, RTLD_NOW | (ComesFirst() ? RTLD_GLOBAL : RTLD_LOCAL));
    if (client == nullptr) problem.Format("TQ_WATCH_CLIENT: %s", dlerror());
  }
  int missing = 0;
  for (int row = 0; row < kRowCount; ++row) {
    void* function = client != nullptr ? FindSymbol(functions[row].client_name) : nullptr;
    client_functions[row] = reinterpret_cast<ClientFunction>(function);
    if (function == nullptr) {
      ++missing;
    } else if (client_extent.end == 0) {
      client_extent = ExtentOf(client_functions[row]);
    }
  }
  if (missing == kRowCount && problem.length() == 0) {
    problem.Add(file != nullptr ? "TQ_WATCH_CLIENT: the library has no client functions"
                                : "no client library comes after this one; TQ_WATCH_CLIENT can name it");
  }
  if (problem.length() > 0) return Print("%s", problem.c_str());
  if (missing > 0) {
    Text names;
    for (int row = 0; row < kRowCount; ++row) {
      if (client_functions[row] == nullptr) names.Format(" %s", functions[row].client_name);
    }
    Print("the client library has no%s", names.c_str());
  }
  Find("tq_obj_is_live", &is_live);
  Find("tq_obj_key", &read_key);
  Find("tq_obj_value", &read_value);
  Find("tq_obj_field_at", &read_field);
}

bool IsInside(const void* caller) { return client_extent.Has(caller) || own_extent.Has(caller); }

const char* KeyOf(const void* object, std::size_t* length) {
  if (!tq_watch_reads_keys() || is_live(object) == 0) return nullptr;
  return read_key(static_cast<const tq_obj*>(object), length);
}

void AddObject(const void* object, Text* text) {
  if (object == nullptr) return text->Add("nil");
  std::size_t length;
  const char* key = KeyOf(object, &length);
  if (key == nullptr) return text->Format("tq_obj(%p)", object);
  text->AddQuoted(key, length);
  const auto* live = static_cast<const tq_obj*>(object);
  const char* value = read_value != nullptr ? read_value(live, &length) : nullptr;
  if (value != nullptr) {
    text->Add(" = ");
    text->AddQuoted(value, length);
  }
  std::uint32_t tag;
  constexpr std::size_t kShown = 8;
  for (std::size_t i = 0; const char* field = read_field != nullptr ? read_field(live, i, &tag, &length) : nullptr;
       ++i) {
    if (i == kShown) return text->Add(" ...");
    text->Format(" [%u] = ", static_cast<unsigned int>(tag));
    text->AddQuoted(field, length);
  }
}

bool tq_watch_reads_keys() { return is_live != nullptr && read_key != nullptr; }

const char* tq_watch_problem() {
  if (problem.length() > 0) return problem.c_str();
  return ComesFirst() ? nullptr : "the process has client functions from before libtq_mom_watch.so";
}

}  // namespace tq_watch
