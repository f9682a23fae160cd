#pragma once

// Replaces openlog, closelog, setlogmask, syslog and vsyslog in the test program with functions that only record calls.

#include <string>
#include <vector>

namespace tavek::test {

/// The calls since the last clear(), in order: for example "openlog(tool, 1, 16)", "setlogmask(127)" or "syslog(3, %s,
/// text)", which has both the format and the formatted text.
std::vector<std::string>& syslog_calls();

/// The identity last passed to openlog. The C library borrows it, so it must remain readable.
const char* borrowed_identity();

} // namespace tavek::test
