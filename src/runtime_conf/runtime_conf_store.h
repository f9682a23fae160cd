#pragma once

// The store that a configuration file is read into: an array of name/value pairs that is sorted after loading.
//
// C-style: results are 0 or -1 with errno set, the store owns its memory and problems go to `log_hook`.

#include <cstdint>

namespace tavek {

/// One definition of the file; both texts are owned.
struct RuntimeConfEntry {
  char* name;
  char* value;
};

/// The definitions. A fresh store has all fields zero.
struct RuntimeConf {
  RuntimeConfEntry* entries; ///< Owned array.
  std::uint64_t capacity;    ///< Entries allocated; those not in use are zero.
  std::uint64_t count;       ///< Entries in use.
  std::int32_t sorted;       ///< Not zero when the entries in use are in ascending strcmp order of their names.
};

/// Makes room for one more entry: 20 at first, then twice as many. On -1 errno is ENOMEM and the array is as before.
int runtime_conf_reserve(RuntimeConf* store);

/// Defines `name`; both texts are copied. A name that is there already keeps its place and takes the new value.
/// On -1 errno is ENOMEM.
int runtime_conf_set(const char* name, const char* value, RuntimeConf* store);

/// Sorts the entries by name unless they are sorted.
void runtime_conf_sort(RuntimeConf* store);

/// The value of `name`, borrowed from the store, or null.
const char* runtime_conf_find(const RuntimeConf* store, const char* name);

/// Frees the entries and the store, which was allocated with malloc or calloc; null is allowed.
void runtime_conf_free(RuntimeConf* store);

} // namespace tavek
