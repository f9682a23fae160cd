#include "runtime_conf/runtime_conf_store.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <search.h>

#include "log/log.h"

namespace tavek {

namespace {

constexpr std::size_t kFirstCapacity = 20;

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
bool next_capacity(const RuntimeConf* store, std::size_t& capacity, std::size_t& bytes) {
  std::size_t doubled = 0;
  std::size_t stepped = 0;
  if (__builtin_mul_overflow(store->capacity, 2, &doubled) ||
      __builtin_add_overflow(store->count, kFirstCapacity, &stepped)) {
    return false;
  }
  capacity = std::max(doubled, stepped);
  return !__builtin_mul_overflow(capacity, sizeof(RuntimeConfEntry), &bytes);
}

int grow_array(RuntimeConf* store) {
  std::size_t capacity = 0;
  std::size_t bytes = 0;
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

// Takes ownership of both strings, which are on the heap.
void define(RuntimeConf* store, char* name, char* value) {
  if (RuntimeConfEntry* known = find_unsorted(store, name)) {
    free(known->value);
    known->value = value;
    free(name);
    return;
  }
  store->entries[store->count] = {name, value};
  ++store->count;
  store->sorted = 0;
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
}

const char* runtime_conf_find(const RuntimeConf* store, const char* name) {
  const RuntimeConfEntry* entry = store->sorted != 0 ? find_sorted(store, name) : find_unsorted(store, name);
  return entry != nullptr ? entry->value : nullptr;
}

void runtime_conf_free(RuntimeConf* store) {
  if (store == nullptr) {
    return;
  }
  for (std::size_t i = 0; store->entries != nullptr && i < store->capacity; ++i) {
    free(store->entries[i].name);
    free(store->entries[i].value);
  }
  free(store->entries);
  free(store);
}

} // namespace tavek
