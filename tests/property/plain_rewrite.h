#pragma once

// The rules of the rewrite in their plainest form. The program is compared with them.

#include <string>
#include <string_view>

#include "rotation/rotation_settings.h"

namespace tavek {

/// Rewrites a file that contains `input`. Tries every rule of the current start condition at each byte and takes the
/// longest match; of two equally long matches it takes that of the earlier rule. Shares no code with the program. The
/// time may grow with the square of the input size. Returns the same as production_rewrite().
std::string plain_rewrite(std::string_view input, const RewriteJob& job);

} // namespace tavek
