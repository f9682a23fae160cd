#include "driver/driver.h"

#include <boost/any.hpp>
#include <gtest/gtest.h>
#include <stdexcept>
#include <unistd.h>

#include "rotation/scanner_fatal_error.h"
#include "unit/driver/driver_run.h"

namespace tavek {

namespace {

using Words = std::vector<std::string>;
using Driver = DriverRun;

constexpr const char* kScript = "\tpostrotate\n"
                                "\t\t/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*\n"
                                "\tendscript\n";

// A relative name whose directory exists on no machine, so that nothing is ever written there.
constexpr const char* kRelative = "unit-test.invalid/example.com";
constexpr const char* kRelativeError =
    "Failed to open /opt/oru/etc/logrotate.d/unit-test.invalid/example.com: No such file or directory";

TEST_F(Driver, GeneratesTheFileOfAHostUnderItsLastName) {
  run_tool({target, "on", "by_time", "daily", "5", "true", "a@b"});
  const std::string generated = content_of(target);
  EXPECT_TRUE(generated.starts_with("#ATTENTION!\n")) << generated;
  EXPECT_NE(generated.find("\n" + directory / "vhosts/system/target/logs/error_log {\n\tdaily\n\trotate 5\n\tcompress\n"
                                              "\tmail a@b\n\tmailfirst\n\tmissingok\n\tcopytruncate\n}\n"),
            std::string::npos)
      << generated;
  EXPECT_EQ(others(), Words{});
}

TEST_F(Driver, LoadsTheConfigurationBeforeItLooksAtTheCommandLine) {
  EXPECT_THROW(run_tool({"--bogus"}), std::exception);
  std::filesystem::remove(configuration);
  EXPECT_STREQ(runtime_conf_file_value(HTTPD_VHOSTS_D), (directory / "vhosts").c_str());
}

TEST_F(Driver, RewritesTheFileOfAHost) {
  directory.write("target", "/a {\n\tdaily\n\tnotifempty\n}\n");
  run_tool({target, "on", "by_size", "10M", "0", "false"});
  EXPECT_EQ(content_of(target),
            "/a {\n\tsize=10M\n\tnotifempty\n\trotate 0\n\tnocompress\n\tmissingok\n\tcopytruncate\n}\n");
}

TEST_F(Driver, GivesAHostTheAnonymizingScript) {
  directory.write("target", "/a {\n}\n");
  run_tool({target, "on", "by_time", "daily", "5", "true", "--anonymize-ip=true"});
  EXPECT_TRUE(content_of(target).ends_with(std::string(kScript) + "}\n")) << content_of(target);
}

TEST_F(Driver, EveryOneMayReadTheFileWhateverTheCallersMaskIs) {
  for (const mode_t mask : {0U, 077U, 0777U}) {
    std::filesystem::remove(target);
    umask(mask);
    run_tool({target, "keep"});
    EXPECT_EQ(mode_of(target), 0644U) << std::oct << mask;
    EXPECT_EQ(umask(022), 022U);
  }
}

TEST_F(Driver, OffRemovesTheFileAndLeavesTheLogs) {
  directory.write("target", "/a {\n}\n");
  write_below("vhosts/system/target/logs/error_log.6", "");
  run_tool({target, "off"});
  EXPECT_FALSE(std::filesystem::exists(target));
  EXPECT_TRUE(std::filesystem::exists(directory / "vhosts/system/target/logs/error_log.6"));
}

TEST_F(Driver, OffIsContentWithoutAFile) {
  EXPECT_EQ(complaint({target, "off"}), "done");
}

TEST_F(Driver, OffReportsWhatItCannotRemove) {
  write_below("target/file", "");
  EXPECT_THROW(run_tool({target, "off"}), std::filesystem::filesystem_error);
  EXPECT_TRUE(std::filesystem::exists(target + "/file"));
}

TEST_F(Driver, KeepNeitherChecksNorCleansNorTakesValues) {
  directory.write("target", "/a {\n weekly\n rotate 9\n compress\n mail x@y\n}\n");
  write_below("vhosts/system/" + std::string(kRelative) + "/logs/error_log.6", "");
  EXPECT_EQ(complaint({target, "keep", "by_moon", "x", "3", "true", "a@b"}), "done");
  EXPECT_EQ(content_of(target), "/a {\n weekly\n rotate 9\n\tnocompress\n\tmissingok\n\tcopytruncate\n}\n");
  EXPECT_EQ(complaint({kRelative, "keep"}), kRelativeError);
  EXPECT_TRUE(std::filesystem::exists(directory / "vhosts/system/" + kRelative + "/logs/error_log.6"));
}

TEST_F(Driver, ARelativeNameIsBelowTheProductsDirectory) {
  write_below(kRelative, "mine");
  EXPECT_EQ(complaint({kRelative, "on", "by_time", "daily", "5", "true"}), kRelativeError);
  EXPECT_EQ(complaint({kRelative, "off"}), "done");
  EXPECT_EQ(content_of(directory / kRelative), "mine") << "the current directory is none of its business";
}

TEST_F(Driver, CleansTheLogsOfAHostBeforeItsFileIsTouched) {
  const std::string logs = "vhosts/system/" + std::string(kRelative) + "/logs/";
  for (const char* log : {"error_log.5", "error_log.6", "a.processed.7.gz", "php-fpm_error.log.8"}) {
    write_below(logs + log, "");
  }
  EXPECT_EQ(complaint({kRelative, "on", "by_time", "daily", "5", "true"}), kRelativeError);
  EXPECT_TRUE(std::filesystem::exists(directory / logs + "error_log.5"));
  EXPECT_FALSE(std::filesystem::exists(directory / logs + "error_log.6"));
  EXPECT_FALSE(std::filesystem::exists(directory / logs + "a.processed.7.gz"));
  EXPECT_TRUE(std::filesystem::exists(directory / logs + "php-fpm_error.log.8"));
}

TEST_F(Driver, KeepOldLogsKeepsTheLogsOfAHost) {
  const std::string log = "vhosts/system/" + std::string(kRelative) + "/logs/error_log.6";
  write_below(log, "");
  EXPECT_EQ(complaint({"-K", kRelative, "on", "by_time", "daily", "5", "true"}), kRelativeError);
  EXPECT_TRUE(std::filesystem::exists(directory / log));
}

TEST_F(Driver, WrongValuesLeaveFileAndLogsAlone) {
  directory.write("target", "/a {\n}\n");
  const std::string log = "vhosts/system/" + std::string(kRelative) + "/logs/error_log.6";
  write_below(log, "");
  EXPECT_THROW(run_tool({target, "on", "by_time", "hourly", "5", "true"}), std::invalid_argument);
  EXPECT_THROW(run_tool({kRelative, "on", "by_size", "x", "5", "true"}), std::invalid_argument);
  EXPECT_THROW(run_tool({target, "on", "by_time", "daily"}), boost::bad_any_cast);
  EXPECT_EQ(content_of(target), "/a {\n}\n");
  EXPECT_TRUE(std::filesystem::exists(directory / log));
}

TEST_F(Driver, AMissingNameIsOutOfRange) {
  constexpr const char* message = "basic_string::at: __n (which is 0) >= this->size() (which is 0)";
  EXPECT_THROW(run_tool({}), std::out_of_range);
  EXPECT_EQ(complaint({}), message);
  EXPECT_EQ(complaint({"", "off"}), message);
}

TEST_F(Driver, AMissingStatusIsABadCast) {
  directory.write("target", "/a {\n}\n");
  EXPECT_EQ(complaint({target}), "boost::bad_any_cast: failed conversion using boost::any_cast");
  EXPECT_EQ(content_of(target), "/a {\n}\n");
  EXPECT_EQ(others(), Words{});
}

TEST_F(Driver, ADirectoryEndsTheScanner) {
  EXPECT_THROW(run_tool({directory.path() + "/", "keep"}), ScannerFatalError);
  EXPECT_EQ(directory.names(), Words{"oru.conf"});
}

TEST_F(Driver, ACategoryManagesPeriodAndCountOnly) {
  directory.write("target", "/a {\n daily\n compress\n mail x@y\n}\n");
  run_tool({"-K", "--apache-logs", target, "--period-type=by_time", "--period=weekly", "--rot-count=4", "--compress=on",
            "--email=a@b"});
  EXPECT_EQ(content_of(target), "/a {\n\tweekly\n compress\n mail x@y\n\trotate 4\n}\n");
  EXPECT_EQ(mode_of(target), 0644U);
}

TEST_F(Driver, ACategoryKeepsWhatIsNotGiven) {
  const std::string content = "# mine\n/a {\n daily\n rotate 9\n}\n";
  directory.write("target", content);
  run_tool({"-K", "--nginx-logs", target});
  EXPECT_EQ(content_of(target), content);
}

TEST_F(Driver, ACategoryNeedsNoStatusAndHeedsNone) {
  directory.write("target", "/a {\n}\n");
  run_tool({"-K", "--fail2ban-logs", target, "off", "--rot-count=4"});
  EXPECT_EQ(content_of(target), "/a {\n\trotate 4\n}\n");
}

TEST_F(Driver, ACategoryWithoutItsFileDoesNothing) {
  for (const std::string& name : Words{target, target + "/below", kRelative, ""}) {
    EXPECT_EQ(complaint({"-K", "--modsecurity-logs", "--vhost-name", name}), "done") << name;
  }
  EXPECT_EQ(directory.names(), Words{"oru.conf"});
}

TEST_F(Driver, ACategoryReportsAFileThatItCannotLookAt) {
  std::filesystem::create_symlink("target", target);
  EXPECT_THROW(run_tool({"-K", "--nginx-logs", target}), std::filesystem::filesystem_error);
}

// Whether it is there is asked of the name as it was given, and only then is the name resolved.
TEST_F(Driver, ACategoryLooksForARelativeNameInTheCurrentDirectory) {
  write_below(kRelative, "/a {\n}\n");
  EXPECT_EQ(complaint({"-K", "--nginx-logs", kRelative}), kRelativeError);
}

TEST_F(Driver, OnlyTheProductsOwnLogsSelectTheirStanzas) {
  const std::string content =
      "/var/log/maillog.processed {\n}\n/other {\n}\n/var/log/tavek/xferlog.processed /x {\n}\n";
  const Words arguments = {"-K", "--anonymize-ip=on", "--rot-count=1", target};
  const auto stanza = [](const std::string& head, const std::string& script) {
    return head + " {\n\trotate 1\n" + script + "}\n";
  };
  for (const char* category : {"--tavek-logs", "--apache-logs", "--fail2ban-logs"}) {
    directory.write("target", content);
    Words words = arguments;
    words.emplace_back(category);
    run_tool(words);
    const std::string script = words.back() == "--tavek-logs" ? "" : kScript;
    EXPECT_EQ(content_of(target), stanza("/var/log/maillog.processed", kScript) + stanza("/other", script) +
                                      stanza("/var/log/tavek/xferlog.processed /x", kScript))
        << category;
  }
}

TEST_F(Driver, OfTwoCategoriesTheFirstOfTheTableCounts) {
  directory.write("target", "/other {\n}\n");
  run_tool({"-K", "--tavek-logs", "--nginx-logs", "--anonymize-ip=on", "--rot-count=1", target});
  EXPECT_EQ(content_of(target), std::string("/other {\n\trotate 1\n") + kScript + "}\n");
}

TEST_F(Driver, ACategoryChecksNothingBeforeItWrites) {
  directory.write("target", "/a {\n}\n");
  EXPECT_EQ(complaint({"-K", "--nginx-logs", target, "--period-type=by_moon"}), "Unknown rotation type: by_moon");
  EXPECT_EQ(content_of(target), "/a {\n}\n");
  EXPECT_EQ(others(), Words{});
}

TEST_F(Driver, SystemLogsRunTheToolForEachCategoryAndNothingElse) {
  directory.write("tool", "#!/bin/sh\necho \"$1\" >>" + directory / "record\n");
  std::filesystem::permissions(directory / "tool", std::filesystem::perms{0755});
  run_tool({"--system-logs", "--apache-logs", target, "keep"});
  EXPECT_EQ(content_of(directory / "record"),
            "--apache-logs\n--nginx-logs\n--tavek-logs\n--fail2ban-logs\n--modsecurity-logs\n");
  EXPECT_FALSE(std::filesystem::exists(target));
}

TEST_F(Driver, HelpDoesNoOtherWork) {
  directory.write("target", "/a {\n}\n");
  testing::internal::CaptureStdout();
  run_tool({target, "off", "--help"});
  EXPECT_TRUE(testing::internal::GetCapturedStdout().starts_with("Usage: tool "));
  EXPECT_EQ(content_of(target), "/a {\n}\n");
}

} // namespace

} // namespace tavek
