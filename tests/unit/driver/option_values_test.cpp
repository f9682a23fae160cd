#include "driver/option_values.h"

#include <boost/any.hpp>
#include <gtest/gtest.h>
#include <stdexcept>

#include "unit/driver/command_line.h"

namespace tavek {

namespace {

TEST(FillSettings, FillsOnlyPeriodAndCountAndAddressAndCompression) {
  RotationSettings settings;
  settings.vhost_name = "before";
  fill_settings(options_of({"x", "on", "by_time", "daily", "5", "true", "a@b", "--anonymize-ip=on", "--apache-logs"}),
                settings);
  EXPECT_EQ(settings.period_type, "by_time");
  EXPECT_EQ(settings.period, "daily");
  EXPECT_EQ(settings.rot_count, 5);
  EXPECT_EQ(settings.email, "a@b");
  EXPECT_TRUE(settings.compress);
  EXPECT_EQ(settings.vhost_name, "before");
  EXPECT_EQ(settings.anonymize, Switch::keep);
  EXPECT_FALSE(settings.system_mode);
}

TEST(FillSettings, CompressesOnlyIfCompressionIsOn) {
  for (const char* word : {"off", "keep"}) {
    RotationSettings settings;
    settings.compress = true;
    fill_settings(options_of({"x", "on", "by_size", "10M", "1", word}), settings);
    EXPECT_FALSE(settings.compress) << word;
  }
}

TEST(FillSettings, ThrowsForAMissingOrInvalidValue) {
  RotationSettings settings;
  EXPECT_THROW(fill_settings(options_of({"x", "on", "by_time", "daily"}), settings), boost::bad_any_cast);
  EXPECT_THROW(fill_settings(options_of({"x", "on", "by_time", "hourly", "5", "on"}), settings), std::invalid_argument);
  EXPECT_THROW(fill_settings(options_of({"x", "on", "by_size", "M", "5", "on"}), settings), std::invalid_argument);
}

TEST(FillGivenSettings, FillsOnlyPeriodTypeAndPeriodAndCount) {
  RotationSettings settings;
  fill_given_settings(
      options_of({"--period-type=by_size", "--period=10M", "--rot-count=3", "--compress=on", "--email=a@b"}), settings);
  EXPECT_EQ(settings.period_type, "by_size");
  EXPECT_EQ(settings.period, "10M");
  EXPECT_EQ(settings.rot_count, 3);
  EXPECT_FALSE(settings.compress);
  EXPECT_EQ(settings.email, "");
}

// The count has a default, so there is always one.
TEST(FillGivenSettings, LeavesThePeriodUnchangedIfNoneIsGiven) {
  RotationSettings settings;
  settings.period_type = "before";
  settings.period = "then";
  settings.rot_count = 7;
  fill_given_settings(options_of({}), settings);
  EXPECT_EQ(settings.period_type, "before");
  EXPECT_EQ(settings.period, "then");
  EXPECT_EQ(settings.rot_count, -1);
}

TEST(FillGivenSettings, ChecksNothing) {
  RotationSettings settings;
  fill_given_settings(options_of({"--period-type=by_moon"}), settings);
  EXPECT_EQ(settings.period_type, "by_moon");
  EXPECT_EQ(settings.period, "");
}

} // namespace

} // namespace tavek
