#include "driver/options.h"

#include <boost/any.hpp>
#include <boost/program_options/errors.hpp>
#include <gtest/gtest.h>

#include "support/thrown.h"
#include "unit/driver/command_line.h"

namespace po = boost::program_options;

namespace tavek {

namespace {

constexpr const char* kFlags[] = {"system-logs",   "apache-logs",      "nginx-logs",   "tavek-logs",
                                  "fail2ban-logs", "modsecurity-logs", "keep-old-logs"};

TEST(Options, AreAbsentOrHaveTheirDefaults) {
  const Options options = options_of({});
  for (const char* name : {"vhost-name", "on-off", "period-type", "period", "compress", "help"}) {
    EXPECT_FALSE(options.has(name)) << name;
  }
  for (const char* flag : kFlags) {
    EXPECT_TRUE(options.has(flag)) << flag;
    EXPECT_FALSE(options.flag(flag)) << flag;
  }
  EXPECT_EQ(options.number("rot-count"), -1);
  EXPECT_EQ(options.text("email"), "");
  EXPECT_EQ(options.switch_value("anonymize-ip"), Switch::keep);
}

TEST(Options, ThrowIfAnAbsentOptionIsRead) {
  const Options options = options_of({});
  EXPECT_THROW(options.text("period"), boost::bad_any_cast);
  EXPECT_THROW(options.switch_value("compress"), boost::bad_any_cast);
}

TEST(Options, AreFilledByPositionalArgumentsInOrder) {
  const Options options = options_of({"example.com", "on", "by_time", "daily", "5", "true", "root@example.com"});
  EXPECT_EQ(options.text("vhost-name"), "example.com");
  EXPECT_EQ(options.switch_value("on-off"), Switch::on);
  EXPECT_EQ(options.text("period-type"), "by_time");
  EXPECT_EQ(options.text("period"), "daily");
  EXPECT_EQ(options.number("rot-count"), 5);
  EXPECT_EQ(options.switch_value("compress"), Switch::on);
  EXPECT_EQ(options.text("email"), "root@example.com");
}

TEST(Options, AreSetByTheFlagOfTheSameName) {
  for (const char* given : kFlags) {
    const Options options = options_of({std::string("--") + given});
    for (const char* flag : kFlags) {
      EXPECT_EQ(options.flag(flag), flag == given) << flag << " with " << given;
    }
  }
  EXPECT_TRUE(options_of({"-K"}).flag("keep-old-logs"));
}

// The library expands placeholders in its messages, including placeholders in a word that the user typed.
TEST(Options, AreReportedInErrorsTogetherWithTheWordAsTyped) {
  for (const std::string word : {"5x", "\x01", "%", "5%", "%value%", "%option%", "%original_token%",
                                 "%canonical_option%", "%prefix%", "%value", "\x01%", "%\x01\xff%value%"}) {
    EXPECT_EQ(thrown_by<po::error>([&] {
                options_of({"--rot-count", word});
              }),
              "the argument ('" + word + "') for option '--rot-count' is invalid");
    EXPECT_EQ(thrown_by<po::error>([&] { options_of({"--" + word}); }), "unrecognised option '--" + word + "'");
    EXPECT_EQ(thrown_by<po::error>([&] {
                options_of({word, "on", "by_time", word, "5x"});
              }),
              "the argument ('5x') for option '--rot-count' is invalid");
  }
}

TEST(Options, MayContainAPlaceholderOfTheLibrary) {
  const Options options = options_of({"%value%", "--email=%option%"});
  EXPECT_EQ(options.text("vhost-name"), "%value%");
  EXPECT_EQ(options.text("email"), "%option%");
}

TEST(Options, OutliveTheCommandLine) {
  Options options = options_of({"--vhost-name", std::string(100, 'x')});
  const Options moved = std::move(options);
  EXPECT_EQ(moved.text("vhost-name"), std::string(100, 'x'));
}

TEST(ParseOptions, ReturnsNothingAfterPrintingHelp) {
  const CommandLine line({"/a/tool", "x", "--help"});
  testing::internal::CaptureStdout();
  EXPECT_FALSE(parse_options(line.argc(), line.argv()));
  EXPECT_TRUE(testing::internal::GetCapturedStdout().starts_with("Usage: tool "));
}

} // namespace

} // namespace tavek
