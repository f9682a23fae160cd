#pragma once

// The two rewrites that are compared: the rules in their plainest form, and the program's own.

#include <string>
#include <string_view>

#include "rotation/rotation_settings.h"

namespace tavek {

/// Rewrites a file that contains `input`. Tries every rule of the current start condition at each byte and takes the
/// longest match; of two equally long matches it takes that of the earlier rule. Shares no code with the program. The
/// time may grow with the square of the input size. Returns the same as production_rewrite().
std::string plain_rewrite(std::string_view input, const RewriteJob& job);

/// Rewrites a file that contains `input`, with memory files in place of the job's files. Returns the content of the new
/// file or, if the rewrite fails, "error: " and the message.
std::string production_rewrite(std::string_view input, RewriteJob job);

} // namespace tavek
