#pragma once

// A sink in place of the console, for tests that look at what is reported.

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace tavek::test {

/// Level and text of reports, in order.
using Reports = std::vector<std::pair<int, std::string>>;

/// While it lives, reports are kept here and not printed. As any sink may, it leaves errno changed.
class RecordedReports : public testing::Test {
protected:
  RecordedReports();
  ~RecordedReports() override;

  /// The reports since the last call.
  static Reports take_reports();
};

} // namespace tavek::test
