#pragma once

// The syntax of a runtime configuration file: one "NAME value" definition per line; '#' starts a comment.

#include "runtime_conf/runtime_conf_store.h"

namespace tavek {

/// Reads the definitions in a file into the store and sorts the store. A malformed line is reported and skipped. A
/// later definition of a name replaces an earlier one. Returns 0, or -1 with errno set; every failure except that of
/// the first allocation is reported.
int runtime_conf_read_file(const char* path, RuntimeConf* store);

} // namespace tavek
