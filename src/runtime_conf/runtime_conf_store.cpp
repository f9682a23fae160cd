#include "runtime_conf/runtime_conf_store.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <search.h>

#include "log/log.h"

namespace tavek {

namespace {

constexpr std::uint64_t kFirstCapacity = 20;

int compare_names(const void* left, const void* right) {
  return strcmp(static_cast<const RuntimeConfEntry*>(left)->name, static_cast<const RuntimeConfEntry*>(right)->name);
}

int out_of_memory(const char* while_doing) {
  log_state().log_hook(kQuietLevel, "Unable to %s configuration: %s", while_doing, strerror(ENOMEM));
  errno = ENOMEM;
  return -1;
}

int first_array(RuntimeConf* store) {
  store->entries = static_cast<RuntimeConfEntry*>(calloc(kFirstCapacity, sizeof(RuntimeConfEntry)));
  if (store->entries == nullptr) {
    store->capacity = 0;
    errno = ENOMEM;
    return -1;
  }
  store->capacity = kFirstCapacity;
  store->count = 0;
  store->sorted = 1;
  return 0;
}

// Computes the next capacity and its size in bytes. Returns false on overflow.
bool next_capacity(const RuntimeConf* store, std::uint64_t& capacity, std::uint64_t& bytes) {
  std::uint64_t doubled = 0;
  std::uint64_t stepped = 0;
  if (__builtin_mul_overflow(store->capacity, 2, &doubled) ||
      __builtin_add_overflow(store->count, kFirstCapacity, &stepped)) {
    return false;
  }
  capacity = std::max(doubled, stepped);
  return !__builtin_mul_overflow(capacity, sizeof(RuntimeConfEntry), &bytes);
}

void drop_index(RuntimeConf* store) {
  free(store->index);
  store->index = nullptr;
}

int grow_array(RuntimeConf* store) {
  std::uint64_t capacity = 0;
  std::uint64_t bytes = 0;
  if (!next_capacity(store, capacity, bytes)) {
    return out_of_memory("read");
  }
  auto* larger = static_cast<RuntimeConfEntry*>(realloc(store->entries, bytes));
  if (larger == nullptr) {
    return out_of_memory("read");
  }
  // runtime_conf_free visits all allocated entries, so the new entries must be zero.
  std::fill(larger + store->capacity, larger + capacity, RuntimeConfEntry{});
  store->entries = larger;
  store->capacity = capacity;
  drop_index(store);
  return 0;
}

RuntimeConfEntry* find_unsorted(const RuntimeConf* store, const char* name) {
  const RuntimeConfEntry key{const_cast<char*>(name), nullptr};
  std::size_t count = store->count;
  return static_cast<RuntimeConfEntry*>(lfind(&key, store->entries, &count, sizeof(key), compare_names));
}

RuntimeConfEntry* find_sorted(const RuntimeConf* store, const char* name) {
  const RuntimeConfEntry key{const_cast<char*>(name), nullptr};
  return static_cast<RuntimeConfEntry*>(bsearch(&key, store->entries, store->count, sizeof(key), compare_names));
}

std::uint64_t hash_of(const char* name) {
  std::uint64_t hash = 14695981039346656037U; // FNV-1a.
  for (; *name != '\0'; ++name) {
    hash = (hash ^ static_cast<unsigned char>(*name)) * 1099511628211U;
  }
  return hash;
}

std::uint64_t slots_of(const RuntimeConf* store) {
  return 2 * store->capacity;
}

// Returns the slot of `name`, or a free slot if the name is not defined. At least half of the slots are free.
RuntimeConfSlot* slot_of(const RuntimeConf* store, const char* name, std::uint64_t hash) {
  for (std::uint64_t i = hash;; ++i) {
    RuntimeConfSlot* const slot = &store->index[i % slots_of(store)];
    if (slot->entry == nullptr || (slot->hash == hash && strcmp(slot->entry->name, name) == 0)) {
      return slot;
    }
  }
}

void add_to_index(RuntimeConf* store, RuntimeConfEntry* entry) {
  const std::uint64_t hash = hash_of(entry->name);
  *slot_of(store, entry->name, hash) = {hash, entry};
}

// Builds the index if there is none. If there is no memory, the store remains without an index.
void build_index(RuntimeConf* store) {
  if (store->index == nullptr) {
    store->index = static_cast<RuntimeConfSlot*>(calloc(slots_of(store), sizeof(RuntimeConfSlot)));
    for (std::uint64_t i = 0; store->index != nullptr && i < store->count; ++i) {
      add_to_index(store, &store->entries[i]);
    }
  }
}

RuntimeConfEntry* find_to_replace(RuntimeConf* store, const char* name) {
  build_index(store);
  return store->index != nullptr ? slot_of(store, name, hash_of(name))->entry : find_unsorted(store, name);
}

// Takes ownership of both strings, which are on the heap.
void define(RuntimeConf* store, char* name, char* value) {
  RuntimeConfEntry* const next = &store->entries[store->count];
  if (RuntimeConfEntry* known = find_to_replace(store, name)) {
    free(known->value);
    known->value = value;
    free(name);
    return;
  }
  *next = {name, value};
  ++store->count;
  store->sorted = 0;
  if (store->index != nullptr) {
    add_to_index(store, next);
  }
}

} // namespace

int runtime_conf_reserve(RuntimeConf* store) {
  if (store->entries == nullptr) {
    return first_array(store);
  }
  return store->count < store->capacity ? 0 : grow_array(store);
}

int runtime_conf_set(const char* name, const char* value, RuntimeConf* store) {
  if (runtime_conf_reserve(store) == -1) {
    return -1;
  }
  char* name_copy = strdup(name);
  char* value_copy = strdup(value);
  if (name_copy == nullptr || value_copy == nullptr) {
    free(name_copy);
    free(value_copy);
    return out_of_memory("form");
  }
  define(store, name_copy, value_copy);
  return 0;
}

void runtime_conf_sort(RuntimeConf* store) {
  if (store->sorted == 0 && store->entries != nullptr) {
    qsort(store->entries, store->count, sizeof(RuntimeConfEntry), compare_names);
  }
  store->sorted = 1;
  drop_index(store);
}

const char* runtime_conf_find(const RuntimeConf* store, const char* name) {
  const RuntimeConfEntry* entry = store->sorted != 0 ? find_sorted(store, name) : find_unsorted(store, name);
  return entry != nullptr ? entry->value : nullptr;
}

void runtime_conf_free(RuntimeConf* store) {
  if (store == nullptr) {
    return;
  }
  for (std::uint64_t i = 0; store->entries != nullptr && i < store->capacity; ++i) {
    free(store->entries[i].name);
    free(store->entries[i].value);
  }
  free(store->entries);
  drop_index(store);
  free(store);
}

} // namespace tavek
