#pragma once

// The syntax of a runtime configuration file: one "NAME value" definition a line, '#' starting a comment.

#include "runtime_conf/runtime_conf_store.h"

namespace tavek {

/// Reads the definitions of a file into the store and sorts it. Returns 0, or -1 with errno set after a report. A
/// malformed line is reported and skipped. A later definition of a name replaces the earlier one.
int runtime_conf_read_file(const char* path, RuntimeConf* store);

} // namespace tavek
