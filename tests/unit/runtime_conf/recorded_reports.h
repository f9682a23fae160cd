#pragma once

// A log sink that records reports instead of printing them.

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "log/log.h"

namespace tavek::test {

/// The level and text of each report, in order.
using Reports = std::vector<std::pair<int, std::string>>;

/// Records reports while it exists. It changes errno on each report, as a sink may.
class RecordedReports : public testing::Test {
protected:
  RecordedReports() {
    log_state() = LogState{};
    log_state().log_hook = keep;
    reports.clear();
  }
  ~RecordedReports() override { log_state() = LogState{}; }

  /// Returns the reports since the last call.
  static Reports take_reports() { return std::exchange(reports, {}); }

private:
  __attribute__((format(printf, 2, 3))) static void keep(int level, const char* format, ...) {
    std::array<char, 4096> text{};
    va_list args;
    va_start(args, format);
    vsnprintf(text.data(), text.size(), format, args);
    va_end(args);
    reports.emplace_back(level, text.data());
    errno = EBADF;
  }

  static inline Reports reports;
};

} // namespace tavek::test
