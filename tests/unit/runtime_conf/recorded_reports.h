#pragma once

// A log sink that records reports instead of printing them.

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace tavek::test {

/// The level and text of each report, in order.
using Reports = std::vector<std::pair<int, std::string>>;

/// Records reports while it exists. It changes errno on each report, as a sink may.
class RecordedReports : public testing::Test {
protected:
  RecordedReports();
  ~RecordedReports() override;

  /// Returns the reports since the last call.
  static Reports take_reports();
};

} // namespace tavek::test
