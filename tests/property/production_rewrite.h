#pragma once

// The program's own rewrite of a rotation file.

#include <string>
#include <string_view>

#include "rotation/rotation_settings.h"

namespace tavek {

/// Rewrites a file that contains `input`, with memory files in place of the job's files. Returns the content of the new
/// file or, if the rewrite fails, "error: " and the message.
std::string production_rewrite(std::string_view input, RewriteJob job);

} // namespace tavek
