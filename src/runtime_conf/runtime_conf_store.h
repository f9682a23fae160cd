#pragma once

// The definitions of a configuration file: an array of name/value pairs, sorted after loading.
//
// C-style: functions return 0, or -1 with errno set. The store owns its memory. Problems are reported through
// `log_hook`.

#include <cstddef>

namespace tavek {

/// The level of reports about the configuration file. It is above the usual thresholds, so the reports are dropped: a
/// user of the tool need not know that defaults apply.
inline constexpr int kQuietLevel = 12;

/// One definition; both strings are owned.
struct RuntimeConfEntry {
  char* name;
  char* value;
};

/// The definitions. A fresh store has all fields zero.
struct RuntimeConf {
  RuntimeConfEntry* entries; ///< Owned array.
  std::size_t capacity;      ///< Entries allocated; unused entries are zero.
  std::size_t count;         ///< Entries in use.
  int sorted;                ///< Non-zero if the entries in use are in ascending strcmp order of name.
};

/// Makes room for one more entry. Allocates 20 entries at first; later doubles the capacity. On failure returns -1 with
/// errno ENOMEM; the array is unchanged.
int runtime_conf_reserve(RuntimeConf* store);

/// Defines `name`; both strings are copied. A name that is already defined keeps its place and gets the new value. On
/// failure returns -1 with errno ENOMEM.
int runtime_conf_set(const char* name, const char* value, RuntimeConf* store);

/// Sorts the entries by name unless they are already sorted.
void runtime_conf_sort(RuntimeConf* store);

/// Returns the value of `name`, borrowed from the store, or null.
const char* runtime_conf_find(const RuntimeConf* store, const char* name);

/// Frees the entries and the store, which must come from malloc or calloc. Null is allowed.
void runtime_conf_free(RuntimeConf* store);

} // namespace tavek
