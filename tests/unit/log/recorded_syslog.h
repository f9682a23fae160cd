#pragma once

// The test program has its own openlog, closelog, setlogmask, syslog and vsyslog, which only note how they are called.

#include <string>
#include <vector>

namespace tavek::test {

/// The calls since the last clearing, in order, for example "openlog(tool, 1, 16)", "syslog(3, %s, text)" with the
/// format and the formatted text, or "setlogmask(127)".
std::vector<std::string>& syslog_calls();

/// The identity that openlog was given last. The C library borrows it, so it has to stay readable.
const char* borrowed_identity();

} // namespace tavek::test
