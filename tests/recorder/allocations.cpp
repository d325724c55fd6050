#include "allocations.h"

#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <unordered_set>

namespace recorder {
namespace {

enum class Owner { kWatched, kTest };

// A watched block is kept as the complement of its address, so that leak checkers do not take it for referenced.
uintptr_t Key(const void* block, Owner owner) {
  const auto address = reinterpret_cast<uintptr_t>(block);
  return owner == Owner::kWatched ? ~address : address;
}

struct State {
  std::unordered_set<uintptr_t> blocks;
  std::vector<size_t> requests;
  size_t watched = 0;
  size_t stray_frees = 0;
  size_t fail_in = 0;
};

// Never destroyed: the watched object may free blocks while the process ends.
State& TheState() {
  static State* const state = new State;
  return *state;
}

bool Refuse(size_t size) {
  State& state = TheState();
  state.requests.push_back(size);
  return state.fail_in != 0 && --state.fail_in == 0;
}

void* Remember(void* block, Owner owner) {
  if (block == nullptr) return nullptr;
  State& state = TheState();
  state.blocks.insert(Key(block, owner));
  if (owner == Owner::kWatched) ++state.watched;
  return block;
}

bool Forget(const void* block) {
  State& state = TheState();
  if (state.blocks.erase(Key(block, Owner::kTest)) != 0) return true;
  if (state.blocks.erase(Key(block, Owner::kWatched)) == 0) return false;
  --state.watched;
  return true;
}

void* WatchedMalloc(size_t size) { return Refuse(size) ? nullptr : Remember(std::malloc(size), Owner::kWatched); }

void* WatchedCalloc(size_t count, size_t size) {
  return Refuse(count * size) ? nullptr : Remember(std::calloc(count, size), Owner::kWatched);
}

void* WatchedRealloc(void* block, size_t size) {
  if (Refuse(size)) return nullptr;
  Forget(block);
  return Remember(std::realloc(block, size), Owner::kWatched);
}

char* WatchedStrdup(const char* text) {
  auto* copy = static_cast<char*>(WatchedMalloc(std::strlen(text) + 1));
  return copy != nullptr ? std::strcpy(copy, text) : nullptr;
}

// A stray block is counted and left alone: it may not come from the heap at all.
void WatchedFree(void* block) {
  if (block == nullptr) return;
  if (Forget(block)) {
    std::free(block);
  } else {
    ++TheState().stray_frees;
  }
}

uintptr_t Replacement(std::string_view name) {
  if (name == "malloc") return reinterpret_cast<uintptr_t>(&WatchedMalloc);
  if (name == "calloc") return reinterpret_cast<uintptr_t>(&WatchedCalloc);
  if (name == "realloc") return reinterpret_cast<uintptr_t>(&WatchedRealloc);
  if (name == "strdup") return reinterpret_cast<uintptr_t>(&WatchedStrdup);
  if (name == "free") return reinterpret_cast<uintptr_t>(&WatchedFree);
  return 0;
}

size_t SymbolIndex(const ElfW(Rela) & relocation) {
#ifdef __LP64__
  return ELF64_R_SYM(relocation.r_info);
#else
  return ELF32_R_SYM(relocation.r_info);
#endif
}

size_t SymbolIndex(const ElfW(Rel) & relocation) {
#ifdef __LP64__
  return ELF64_R_SYM(relocation.r_info);
#else
  return ELF32_R_SYM(relocation.r_info);
#endif
}

class Object {
 public:
  Object(uintptr_t base, const ElfW(Dyn) * dynamic) : base_(base) {
    for (const auto* entry = dynamic; entry->d_tag != DT_NULL; ++entry) {
      switch (entry->d_tag) {
        case DT_SYMTAB: symbols_ = At<ElfW(Sym)>(entry->d_un.d_ptr); break;
        case DT_STRTAB: strings_ = At<char>(entry->d_un.d_ptr); break;
      }
    }
    uintptr_t plt = 0;
    size_t plt_size = 0;
    bool plt_has_addends = false;
    uintptr_t rel = 0, rela = 0;
    size_t rel_size = 0, rela_size = 0;
    for (const auto* entry = dynamic; entry->d_tag != DT_NULL; ++entry) {
      switch (entry->d_tag) {
        case DT_JMPREL: plt = entry->d_un.d_ptr; break;
        case DT_PLTRELSZ: plt_size = entry->d_un.d_val; break;
        case DT_PLTREL: plt_has_addends = entry->d_un.d_val == DT_RELA; break;
        case DT_REL: rel = entry->d_un.d_ptr; break;
        case DT_RELSZ: rel_size = entry->d_un.d_val; break;
        case DT_RELA: rela = entry->d_un.d_ptr; break;
        case DT_RELASZ: rela_size = entry->d_un.d_val; break;
      }
    }
    if (plt_has_addends) {
      Redirect<ElfW(Rela)>(plt, plt_size);
    } else {
      Redirect<ElfW(Rel)>(plt, plt_size);
    }
    Redirect<ElfW(Rel)>(rel, rel_size);
    Redirect<ElfW(Rela)>(rela, rela_size);
  }

  int redirected() const { return redirected_; }

 private:
  // The loader has relocated these addresses on some systems and not on others.
  template <class T> const T* At(uintptr_t address) const {
    return reinterpret_cast<const T*>(address < base_ ? base_ + address : address);
  }

  template <class Relocation> void Redirect(uintptr_t table, size_t size) {
    if (table == 0) return;
    const auto* relocations = At<Relocation>(table);
    for (size_t i = 0; i < size / sizeof(Relocation); ++i) {
      const size_t symbol = SymbolIndex(relocations[i]);
      if (symbol == 0) continue;
      const uintptr_t replacement = Replacement(strings_ + symbols_[symbol].st_name);
      if (replacement != 0) Write(base_ + relocations[i].r_offset, replacement);
    }
  }

  // The slot may be in a page that the loader has made read-only.
  void Write(uintptr_t slot, uintptr_t value) {
    const auto page_size = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    void* const page = reinterpret_cast<void*>(slot & ~(page_size - 1));
    if (mprotect(page, page_size, PROT_READ | PROT_WRITE) != 0) return;
    std::memcpy(reinterpret_cast<void*>(slot), &value, sizeof value);
    ++redirected_;
  }

  const uintptr_t base_;
  const ElfW(Sym) * symbols_ = nullptr;
  const char* strings_ = nullptr;
  int redirected_ = 0;
};

struct Search {
  std::string_view file_name;
  int redirected;
};

int Visit(dl_phdr_info* info, size_t, void* data) {
  auto* const search = static_cast<Search*>(data);
  std::string_view path(info->dlpi_name);
  path.remove_prefix(path.find_last_of('/') + 1);
  if (path != search->file_name) return 0;
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    if (info->dlpi_phdr[i].p_type != PT_DYNAMIC) continue;
    const uintptr_t dynamic = info->dlpi_addr + info->dlpi_phdr[i].p_vaddr;
    search->redirected += Object(info->dlpi_addr, reinterpret_cast<const ElfW(Dyn)*>(dynamic)).redirected();
  }
  return 0;
}

}  // namespace

int WatchAllocations(const std::string& file_name) {
  Search search{file_name, 0};
  dl_iterate_phdr(&Visit, &search);
  return search.redirected;
}

void* Allocate(size_t size) { return Remember(std::calloc(1, size), Owner::kTest); }

bool Free(void* block) {
  if (!Forget(block)) return false;
  std::free(block);
  return true;
}

bool IsLive(const void* block) {
  const auto& blocks = TheState().blocks;
  return blocks.contains(Key(block, Owner::kTest)) || blocks.contains(Key(block, Owner::kWatched));
}

size_t LiveBlocks() { return TheState().watched; }
const std::vector<size_t>& Requests() { return TheState().requests; }
size_t StrayFrees() { return TheState().stray_frees; }
void FailRequest(size_t n) { TheState().fail_in = n; }

void ResetRequests() {
  State& state = TheState();
  state.requests.clear();
  state.fail_in = 0;
  state.stray_frees = 0;
}

}  // namespace recorder
