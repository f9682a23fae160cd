#include "driver/option_values.h"

#include <boost/any.hpp>
#include <gtest/gtest.h>
#include <stdexcept>

#include "unit/driver/command_line.h"

namespace tavek {

namespace {

using Words = std::vector<std::string>;

constexpr const char* kBadTime = "Invalid logrotation period value: should be 'daily', 'weekly' or 'monthly'";
constexpr const char* kBadType = "Invalid logrotation period type: should be 'by_time' or 'by_size'";
constexpr const char* kBadSize = "Logrotation period value should be unsigned integer: ";
constexpr const char* kHugeSize = "Logrotation period value is out of range: ";

RotationSettings filled(const Words& words) {
  RotationSettings settings;
  fill_settings(options_of(words), settings);
  return settings;
}

// What filling from a period type and a period throws, or "filled".
std::string complaint(const std::string& type, const std::string& period) {
  try {
    filled({"--", "x", "on", type, period, "5", "true"});
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "filled";
}

TEST(FillSettings, TakesAllFiveValues) {
  const RotationSettings settings = filled({"x", "on", "by_time", "daily", "5", "true", "a@b"});
  EXPECT_EQ(settings.period_type, "by_time");
  EXPECT_EQ(settings.period, "daily");
  EXPECT_EQ(settings.rot_count, 5);
  EXPECT_EQ(settings.email, "a@b");
  EXPECT_TRUE(settings.compress);
}

TEST(FillSettings, TakesNothingElse) {
  RotationSettings settings;
  settings.vhost_name = "before";
  fill_settings(options_of({"x", "on", "by_time", "daily", "5", "true", "a@b", "--anonymize-ip=on", "--apache-logs"}),
                settings);
  EXPECT_EQ(settings.vhost_name, "before");
  EXPECT_EQ(settings.anonymize, Switch::keep);
  EXPECT_FALSE(settings.system_mode);
}

TEST(FillSettings, CountAndAddressHaveDefaults) {
  const RotationSettings settings = filled({"x", "on", "by_time", "weekly", "--compress=on"});
  EXPECT_EQ(settings.rot_count, -1);
  EXPECT_EQ(settings.email, "");
}

TEST(FillSettings, OnlyOnCompresses) {
  EXPECT_TRUE(filled({"x", "on", "by_time", "weekly", "1", "on"}).compress);
  EXPECT_FALSE(filled({"x", "on", "by_time", "weekly", "1", "off"}).compress);
  EXPECT_FALSE(filled({"x", "on", "by_time", "weekly", "1", "keep"}).compress);
}

TEST(FillSettings, AMissingValueIsABadCast) {
  for (const Words& words : {Words{"x", "on"}, Words{"--period=daily", "--compress=on"},
                             Words{"--period-type=by_time", "--compress=on"}, Words{"x", "on", "by_time", "daily"}}) {
    EXPECT_THROW(filled(words), boost::bad_any_cast);
  }
}

TEST(FillSettings, ATimeIsDailyWeeklyOrMonthly) {
  for (const char* period : {"daily", "weekly", "monthly"}) {
    EXPECT_EQ(complaint("by_time", period), "filled") << period;
  }
  for (const char* period : {"Daily", "daily ", " daily", "dail", "hourly", "yearly", "10M", ""}) {
    EXPECT_EQ(complaint("by_time", period), kBadTime) << "'" << period << "'";
  }
}

TEST(FillSettings, AnyOtherTypeIsRefusedWhateverThePeriodIs) {
  for (const char* type : {"By_time", "by_date", "by_sizes", "by_siz", " by_time", "size"}) {
    EXPECT_EQ(complaint(type, "daily"), kBadType) << type;
    EXPECT_EQ(complaint(type, "x"), kBadType) << type;
  }
  EXPECT_THROW(filled({"x", "on", "", "daily", "5", "true"}), std::invalid_argument);
}

TEST(FillSettings, ASizeBeginsWithANumber) {
  for (const std::string period : {"1048576", "0", "10M", "100k", "-1", "-5", "+100", "  100", "\t7",
                                   "9223372036854775807", "-9223372036854775808", "1 2", "007x"}) {
    EXPECT_EQ(complaint("by_size", period), "filled") << "'" << period << "'";
  }
  for (const std::string period : {"daily", "abc", "M10", "", " ", "-", "+", "--1", "- 1", ".5"}) {
    EXPECT_EQ(complaint("by_size", period), kBadSize + period) << "'" << period << "'";
  }
}

TEST(FillSettings, ASizeFitsSixtyFourBits) {
  for (const std::string period : {"9223372036854775808", "-9223372036854775809", "99999999999999999999k"}) {
    EXPECT_EQ(complaint("by_size", period), kHugeSize + period);
  }
}

TEST(FillSettings, ASizeIsKeptAsItWasTyped) {
  EXPECT_EQ(filled({"x", "on", "by_size", " +010M", "1", "on"}).period, " +010M");
}

TEST(FillSettings, ValuesStayFilledWhenTheCheckFails) {
  RotationSettings settings;
  EXPECT_THROW(fill_settings(options_of({"x", "on", "by_time", "hourly", "3", "on", "a@b"}), settings),
               std::invalid_argument);
  EXPECT_EQ(settings.period, "hourly");
  EXPECT_EQ(settings.rot_count, 3);
  EXPECT_TRUE(settings.compress);
}

TEST(FillGivenSettings, TakesPeriodTypePeriodAndCount) {
  RotationSettings settings;
  fill_given_settings(options_of({"--period-type=by_size", "--period=10M", "--rot-count=3"}), settings);
  EXPECT_EQ(settings.period_type, "by_size");
  EXPECT_EQ(settings.period, "10M");
  EXPECT_EQ(settings.rot_count, 3);
}

TEST(FillGivenSettings, LeavesAPeriodThatIsNotGiven) {
  RotationSettings settings;
  settings.period_type = "before";
  settings.period = "then";
  fill_given_settings(options_of({}), settings);
  EXPECT_EQ(settings.period_type, "before");
  EXPECT_EQ(settings.period, "then");
}

TEST(FillGivenSettings, TakesTypeAndPeriodIndependently) {
  RotationSettings settings;
  fill_given_settings(options_of({"--period-type=by_time"}), settings);
  EXPECT_EQ(settings.period_type, "by_time");
  EXPECT_EQ(settings.period, "");
  RotationSettings other;
  fill_given_settings(options_of({"--period=daily"}), other);
  EXPECT_EQ(other.period_type, "");
  EXPECT_EQ(other.period, "daily");
}

// The count has a default, so there is always one to take.
TEST(FillGivenSettings, ACountThatIsNotGivenIsMinusOne) {
  RotationSettings settings;
  settings.rot_count = 7;
  fill_given_settings(options_of({}), settings);
  EXPECT_EQ(settings.rot_count, -1);
}

TEST(FillGivenSettings, NeitherCompressesNorMails) {
  RotationSettings settings;
  fill_given_settings(options_of({"--compress=on", "--email=a@b"}), settings);
  EXPECT_FALSE(settings.compress);
  EXPECT_EQ(settings.email, "");
}

TEST(FillGivenSettings, ChecksNothing) {
  RotationSettings settings;
  EXPECT_NO_THROW(fill_given_settings(options_of({"--period-type=by_moon", "--period=x"}), settings));
  EXPECT_EQ(settings.period_type, "by_moon");
}

} // namespace

} // namespace tavek
