#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "log/log.h"
#include "unit/log/fresh_log_state.h"
#include "unit/log/recorded_syslog.h"

namespace tavek {

namespace {

class LogLevel : public test::FreshLogState {};

// The threshold after log_set_level(level) with this value of TAVEK_LOG_LEVEL.
int threshold_with(const char* variable, int level) {
  setenv("TAVEK_LOG_LEVEL", variable, 1);
  log_set_level(level);
  return log_state().log_threshold;
}

TEST_F(LogLevel, KeepsTheLowThreeBits) {
  const int levels[][2] = {{0, 0}, {5, 5}, {7, 7}, {16, 0}, {16 + 3, 3}, {64 + 7, 7}};
  for (const auto& [level, threshold] : levels) {
    log_set_level(level);
    EXPECT_EQ(log_state().log_threshold, threshold) << level;
  }
}

TEST_F(LogLevel, IsRaisedByTheEnvironmentOnRequest) {
  EXPECT_EQ(threshold_with("7", 5 | kLogLevelFromEnvironment), 7);
  EXPECT_EQ(threshold_with("6", 5 | kLogLevelFromEnvironment), 6);
  EXPECT_EQ(threshold_with("1", 0 | kLogLevelFromEnvironment), 1);
}

TEST_F(LogLevel, IsNotRaisedByTheEnvironmentUnlessRequested) {
  EXPECT_EQ(threshold_with("7", 5), 5);
  EXPECT_EQ(threshold_with("7", 5 | 16), 5);
}

TEST_F(LogLevel, IsNeverLoweredByTheEnvironment) {
  EXPECT_EQ(threshold_with("3", 5 | kLogLevelFromEnvironment), 5);
  EXPECT_EQ(threshold_with("0", 7 | kLogLevelFromEnvironment), 7);
}

TEST_F(LogLevel, IgnoresAVariableThatIsNotADigitFrom0To7) {
  for (const char* variable : {"", "07", "70", "8", "9", "debug", " 7", "7 ", "-", "/", "+7"}) {
    EXPECT_EQ(threshold_with(variable, 2 | kLogLevelFromEnvironment), 2) << variable;
  }
}

TEST_F(LogLevel, IsUnchangedWithoutTheVariable) {
  log_set_level(2 | kLogLevelFromEnvironment);
  EXPECT_EQ(log_state().log_threshold, 2);
}

TEST_F(LogLevel, SetsTheSyslogMaskWithoutADestination) {
  for (int level = 0; level <= 7; ++level) {
    test::syslog_calls().clear();
    log_set_level(level);
    const std::string mask = std::to_string((1 << (level + 1)) - 1);
    EXPECT_EQ(test::syslog_calls(), std::vector<std::string>{"setlogmask(" + mask + ")"});
  }
}

TEST_F(LogLevel, SetsTheSyslogMaskToARaisedThreshold) {
  test::syslog_calls().clear();
  threshold_with("7", 3 | kLogLevelFromEnvironment);
  EXPECT_EQ(test::syslog_calls(), std::vector<std::string>{"setlogmask(255)"});
}

TEST_F(LogLevel, DoesNotSetTheSyslogMaskWithADestination) {
  log_state().log_destination = "file";
  test::syslog_calls().clear();
  log_set_level(5);
  EXPECT_TRUE(test::syslog_calls().empty());
  EXPECT_EQ(log_state().log_threshold, 5);
}

} // namespace

} // namespace tavek
