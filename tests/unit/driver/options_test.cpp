#include "driver/options.h"

#include <boost/any.hpp>
#include <boost/program_options/errors.hpp>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/temporary_directory.h"
#include "unit/driver/command_line.h"

namespace po = boost::program_options;

namespace tavek {

namespace {

using Words = std::vector<std::string>;

constexpr const char* kTextOptions[] = {"vhost-name", "period-type", "period"};
constexpr const char* kFlags[] = {"system-logs",   "apache-logs",      "nginx-logs",   "tavek-logs",
                                  "fail2ban-logs", "modsecurity-logs", "keep-old-logs"};

constexpr const char* kUsageHead =
    "Usage: tool <config_fname> <on|off> <by_time|by_size> <daily|weekly|monthly|size_in_bytes>"
    " <max_number_of_logfiles> <compress_logfiles> [email] [--anonymize-ip=(true|false|keep)]\n"
    "\n"
    "Examples:\n"
    "    Enable ip anonymization for system logs:\n"
    "    tool --system-logs --anonymize-ip=true\n"
    "\n"
    "    Disable ip anonymization for system logs:\n"
    "    tool --system-logs --anonymize-ip=false\n"
    "\n"
    "    Edit rotation settings for system logs:\n"
    "    tool --system-logs --period-type=by_time --period=daily --rot-count=7\n"
    "\n"
    "Allowed options:\n";

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

TEST(Options, ATypedReadOfAnAbsentOneThrows) {
  const Options options = options_of({});
  for (const char* name : kTextOptions) {
    EXPECT_THROW(options.text(name), boost::bad_any_cast) << name;
  }
  EXPECT_THROW(options.switch_value("on-off"), boost::bad_any_cast);
  EXPECT_THROW(options.switch_value("compress"), boost::bad_any_cast);
}

TEST(Options, PositionalArgumentsFillTheirPlacesInOrder) {
  const Options options = options_of({"example.com", "on", "by_time", "daily", "5", "true", "root@example.com"});
  EXPECT_EQ(options.text("vhost-name"), "example.com");
  EXPECT_EQ(options.switch_value("on-off"), Switch::on);
  EXPECT_EQ(options.text("period-type"), "by_time");
  EXPECT_EQ(options.text("period"), "daily");
  EXPECT_EQ(options.number("rot-count"), 5);
  EXPECT_EQ(options.switch_value("compress"), Switch::on);
  EXPECT_EQ(options.text("email"), "root@example.com");
}

TEST(Options, AnEighthPositionalArgumentIsOneTooMany) {
  EXPECT_THROW(options_of({"a", "on", "by_time", "daily", "5", "true", "b", "c"}),
               po::too_many_positional_options_error);
}

TEST(Options, APositionalArgumentMayBeEmpty) {
  const Options options = options_of({"", "off", "", "", "1", "keep", ""});
  EXPECT_EQ(options.text("vhost-name"), "");
  EXPECT_EQ(options.text("period-type"), "");
  EXPECT_EQ(options.text("email"), "");
}

TEST(Options, ALongOneTakesItsValueBehindAnEqualsSignOrAsTheNextWord) {
  for (const Words& words : {Words{"--period=daily x"}, Words{"--period", "daily x"}}) {
    EXPECT_EQ(options_of(words).text("period"), "daily x");
  }
}

TEST(Options, ALongOneMayBeCutShort) {
  EXPECT_TRUE(options_of({"--apa"}).flag("apache-logs"));
  EXPECT_EQ(options_of({"--rot=3"}).number("rot-count"), 3);
  EXPECT_THROW(options_of({"--pe=x"}), po::ambiguous_option);
  EXPECT_EQ(options_of({"--period=x"}).text("period"), "x") << "a whole name is no prefix of another";
}

TEST(Options, EachFlagStandsForItself) {
  for (const char* given : kFlags) {
    const Options options = options_of({std::string("--") + given});
    for (const char* flag : kFlags) {
      EXPECT_EQ(options.flag(flag), flag == given) << flag << " with " << given;
    }
  }
  EXPECT_TRUE(options_of({"-K"}).flag("keep-old-logs"));
}

TEST(Options, ACountIsAWholeNumberOfThirtyTwoBits) {
  EXPECT_EQ(options_of({"--rot-count=2147483647"}).number("rot-count"), 2147483647);
  EXPECT_EQ(options_of({"--rot-count=-2147483648"}).number("rot-count"), -2147483647 - 1);
  EXPECT_EQ(options_of({"--rot-count=007"}).number("rot-count"), 7);
  for (const std::string word : {"2147483648", "-2147483649", "5x", "x", "1.0", "", " 5", "5 ", "0x5"}) {
    EXPECT_THROW(options_of({"--rot-count=" + word}), po::error) << "'" << word << "'";
  }
}

TEST(Options, ASwitchTakesOneOfItsSpellings) {
  EXPECT_EQ(options_of({"--anonymize-ip=true"}).switch_value("anonymize-ip"), Switch::on);
  EXPECT_EQ(options_of({"--anonymize-ip=off"}).switch_value("anonymize-ip"), Switch::off);
  EXPECT_EQ(options_of({"--anonymize-ip", "keep"}).switch_value("anonymize-ip"), Switch::keep);
  for (const char* name : {"--on-off", "--compress", "--anonymize-ip"}) {
    for (const char* word : {"True", "yes", "1", "", " on", "on ", "on off", "onn"}) {
      EXPECT_THROW(options_of({name, word}), po::error) << name << " '" << word << "'";
    }
  }
  EXPECT_THROW(options_of({"--compress=maybe"}), po::invalid_option_value);
}

TEST(Options, AnOptionThatLacksItsValueIsRefused) {
  for (const char* name : {"--anonymize-ip", "--period", "--rot-count", "--on-off", "--email="}) {
    EXPECT_THROW(options_of({name}), po::invalid_command_line_syntax) << name;
  }
}

TEST(Options, AFlagTakesNoValue) {
  EXPECT_THROW(options_of({"--system-logs=true"}), po::invalid_command_line_syntax);
}

TEST(Options, AnOptionGivenTwiceIsRefused) {
  for (const Words& words :
       {Words{"--compress=on", "--compress=on"}, Words{"--period=a", "--period=b"}, Words{"-K", "--keep-old-logs"},
        Words{"--rot-count=1", "--rot-count=1"}, Words{"--vhost-name=a", "a"}}) {
    EXPECT_THROW(options_of(words), po::multiple_occurrences) << words.front();
  }
}

TEST(Options, AnUnknownOneIsRefused) {
  for (const char* word : {"--logs", "-x", "-1", "-KX"}) {
    EXPECT_THROW(options_of({word}), po::unknown_option) << word;
  }
}

// What parsing the words throws.
std::string complaint(const Words& words) {
  try {
    options_of(words);
  } catch (const po::error& error) {
    return error.what();
  }
  return "parsed";
}

TEST(Options, AnErrorNamesTheOptionAndTheWord) {
  const std::string behind = "') for option '--rot-count' is invalid";
  EXPECT_EQ(complaint({"h", "on", "by_time", "daily", "5x"}), "the argument ('5x" + behind);
  EXPECT_EQ(complaint({"--rot-count=\x01"}), "the argument ('\x01" + behind);
  EXPECT_EQ(complaint({"--bogus"}), "unrecognised option '--bogus'");
}

TEST(Options, AnErrorNamesAWordThatLooksLikeAPlaceholderOfTheLibrary) {
  for (const std::string word : {"%", "5%", "%value%", "%option%", "%original_token%", "%canonical_option%", "%prefix%",
                                 "%value", "\x01%", "%\x01\xff%value%"}) {
    EXPECT_EQ(complaint({"--rot-count", word}), "the argument ('" + word + "') for option '--rot-count' is invalid");
    EXPECT_EQ(complaint({"--" + word}), "unrecognised option '--" + word + "'");
    EXPECT_EQ(complaint({word, "on", "by_time", word, "5x"}),
              "the argument ('5x') for option '--rot-count' is invalid");
  }
}

TEST(Options, AWordThatLooksLikeAPlaceholderIsAValueLikeAnyOther) {
  const Options options = options_of({"%value%", "--email=%option%"});
  EXPECT_EQ(options.text("vhost-name"), "%value%");
  EXPECT_EQ(options.text("email"), "%option%");
}

TEST(Options, BehindADoubleDashEveryWordIsAnArgument) {
  const Options options = options_of({"--", "--help", "off", "-x", "--period"});
  EXPECT_EQ(options.text("vhost-name"), "--help");
  EXPECT_EQ(options.text("period-type"), "-x");
  EXPECT_EQ(options.text("period"), "--period");
}

TEST(Options, OutliveTheCommandLine) {
  Options options = options_of({"--vhost-name", std::string(100, 'x')});
  const Options moved = std::move(options);
  EXPECT_EQ(moved.text("vhost-name"), std::string(100, 'x'));
}

// What a command line that asks for help prints.
std::string help_for(const Words& words) {
  const CommandLine line(words);
  testing::internal::CaptureStdout();
  EXPECT_FALSE(parse_options(line.argc(), line.argv()));
  return testing::internal::GetCapturedStdout();
}

TEST(Help, PrintsTheUsage) {
  for (const Words& words : {Words{"/a/b/tool", "--help"}, Words{"tool", "-h"}, Words{"./tool", "x", "off", "--help"},
                             Words{"tool", "-Kh"}, Words{"tool", "--he"}}) {
    const std::string usage = help_for(words);
    EXPECT_TRUE(usage.starts_with(kUsageHead)) << usage;
    EXPECT_TRUE(usage.ends_with("produce help message\n\n")) << usage;
  }
}

TEST(Help, ListsEachOptionWithItsDefault) {
  const std::string usage = help_for({"tool", "-h"});
  std::size_t at = 0;
  for (const char* entry : {"--vhost-name arg ",
                            "Config name\n",
                            "--on-off arg ",
                            "Logrotation status (on|off)\n",
                            "--period-type arg ",
                            "--period arg ",
                            "--rot-count arg (=-1) ",
                            "--compress arg ",
                            "Compress logfiles (true|false)\n",
                            "--email arg ",
                            "--anonymize-ip arg (=keep) ",
                            "--system-logs ",
                            "Modify rotation config for system logs\n",
                            "--apache-logs ",
                            "--nginx-logs ",
                            "--tavek-logs ",
                            "Modify rotation config for logs rotated by tavek\n",
                            "--fail2ban-logs ",
                            "--modsecurity-logs ",
                            "-K [ --keep-old-logs ] ",
                            "Do not removed logs rotated",
                            "-h [ --help ] ",
                            "produce help message\n"}) {
    at = usage.find(entry, at);
    ASSERT_NE(at, std::string::npos) << entry << " is not where it belongs in\n" << usage;
  }
}

TEST(Help, ShowsNoNameForAPathThatEndsInASlash) {
  EXPECT_TRUE(help_for({"/a/", "-h"}).starts_with("Usage:  <config_fname>"));
}

TEST(Options, AMalformedValueIsReportedEvenWhereHelpIsAskedFor) {
  EXPECT_THROW(options_of({"--help", "--rot-count=x"}), po::error);
  EXPECT_THROW(options_of({"x", "maybe", "--help"}), po::error);
}

} // namespace

} // namespace tavek
