#pragma once

// The key set of the runtime configuration, one row an index of `RuntimeConfKey`.

namespace tavek {

/// A key and its compile-time default, as on a Debian-family system. All values are texts.
struct RuntimeConfKeyRow {
  const char* name;
  const char* value;
};

/// The rows by index; a row of null pointers follows the last.
extern const RuntimeConfKeyRow kRuntimeConfKeyRows[];

} // namespace tavek
