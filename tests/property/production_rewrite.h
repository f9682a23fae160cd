#pragma once

// The program's own rewrite, as the properties call it.

#include <string>
#include <string_view>

#include "rewrite_result.h"
#include "rotation/rotation_settings.h"

namespace tavek {

/// Scans `input` from memory. Gives up after a third pass.
RewriteResult rewrite_in_memory(std::string_view input, const RewriteJob& job);

/// Replaces a file holding `input` in a directory of its own, by way of rewrite(). Passes are not counted there.
RewriteResult rewrite_on_disk(std::string_view input, RewriteJob job);

} // namespace tavek
