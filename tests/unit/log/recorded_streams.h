#pragma once

// What a piece of code brings to standard error and standard output, and in which order. Only flushed text counts.

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tavek::test {

/// The stream, "stderr" or "stdout", and a text that was flushed to it; successive texts for one stream are joined.
using Writes = std::vector<std::pair<std::string, std::string>>;

/// Runs the action with both streams replaced. The stream named by `broken`, if any, takes nothing: as on a full disk.
Writes written_by(const std::function<void()>& action, const std::string& broken = "");

/// The same text first on standard error, then on standard output.
Writes on_both_streams(const std::string& text);

} // namespace tavek::test
