#pragma once

// The rewrite of a rotation file said a second time, as plainly as it can be, for the properties to compare with.

#include <string_view>

#include "rewrite_result.h"
#include "rotation/rotation_settings.h"

namespace tavek {

/// Rewrites `input` by trying, at each byte, every rule of the place it is in. Takes the longest match and, of two that
/// are equally long, the earlier rule. Nothing is shared with the scanner or with the directive writers; the time may
/// grow with the square of the input.
RewriteResult plain_rewrite(std::string_view input, const RewriteJob& job);

} // namespace tavek
