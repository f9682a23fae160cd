#pragma once

// The key set of the runtime configuration: one row per index of `RuntimeConfKey`.

namespace tavek {

/// A key and its compile-time default on a Debian-family system. All values are strings.
struct RuntimeConfKeyRow {
  const char* name;
  const char* value;
};

/// The rows by index, followed by a row of null pointers.
extern const RuntimeConfKeyRow kRuntimeConfKeyRows[];

} // namespace tavek
