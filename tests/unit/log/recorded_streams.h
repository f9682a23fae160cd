#pragma once

// Records the text flushed to standard error and standard output, in order.

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tavek::test {

/// A stream, "stderr" or "stdout", and the text flushed to it. Successive texts of one stream are joined.
using Writes = std::vector<std::pair<std::string, std::string>>;

/// Runs the action with both streams replaced. Writes to the stream named by `broken` fail, as on a full disk.
Writes written_by(const std::function<void()>& action, const std::string& broken = "");

/// The same text on standard error, then on standard output.
Writes on_both_streams(const std::string& text);

} // namespace tavek::test
