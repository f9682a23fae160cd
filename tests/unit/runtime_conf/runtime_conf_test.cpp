#include "runtime_conf/runtime_conf.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>

#include "log/log.h"
#include "runtime_conf/runtime_conf_keys.h"
#include "unit/runtime_conf/counted_comparisons.h"
#include "unit/runtime_conf/recorded_reports.h"
#include "unit/temporary_directory.h"

namespace tavek {

namespace {

using test::Reports;

/// Begins as a process does that has loaded nothing yet; the file is one of the test's own and absent at first.
class RuntimeConfiguration : public test::RecordedReports {
protected:
  RuntimeConfiguration() { start_from_scratch(path.c_str()); }
  ~RuntimeConfiguration() override { start_from_scratch(nullptr); }

  static void start_from_scratch(const char* path) {
    runtime_conf_reset();
    runtime_conf_use_file(path);
  }
  void write(const std::string& content) { folder.write("oru.conf", content); }
  Reports cannot_open() const {
    return {{12, "unable to open configuration file " + path + ": No such file or directory\n"}};
  }
  Reports unknown(const std::string& name) const {
    return {{3, "variable '" + name + "' was found neither in " + path + ", nor in compile-time defaults"}};
  }

  TemporaryDirectory folder;
  std::string path = folder / "oru.conf";
};

TEST_F(RuntimeConfiguration, IsLoadedFromTheFile) {
  write("HTTPD_VHOSTS_D /srv/vhosts\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/vhosts");
  EXPECT_EQ(take_reports(), Reports{});
}

TEST_F(RuntimeConfiguration, CannotBeLoadedWithoutTheFile) {
  errno = 0;
  EXPECT_EQ(runtime_conf_load(), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(take_reports(), cannot_open());
}

TEST_F(RuntimeConfiguration, IsReadOnceOnly) {
  write("HTTPD_VHOSTS_D /srv/first\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  write("HTTPD_VHOSTS_D /srv/second\nPRODUCT_ROOT_D /opt/second\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/first");
  EXPECT_STREQ(runtime_conf_get(PRODUCT_ROOT_D), "/opt/oru");
}

TEST_F(RuntimeConfiguration, StaysLoadedWhenTheFileGoes) {
  write("HTTPD_VHOSTS_D /srv/vhosts\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  std::filesystem::remove(path);
  EXPECT_EQ(runtime_conf_load(), 0);
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/vhosts");
}

TEST_F(RuntimeConfiguration, IsTriedAgainAfterAFailure) {
  EXPECT_EQ(runtime_conf_load(), -1);
  EXPECT_EQ(runtime_conf_load(), -1);
  EXPECT_EQ(take_reports().size(), 2U);
  write("HTTPD_VHOSTS_D /srv/vhosts\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/vhosts");
}

TEST_F(RuntimeConfiguration, IsNotLoadedFromWhatCannotBeRead) {
  start_from_scratch(folder.path().c_str());
  errno = 0;
  EXPECT_EQ(runtime_conf_load(), -1);
  EXPECT_EQ(errno, EISDIR);
  EXPECT_EQ(take_reports(), (Reports{{12, "Unable to read configuration file: Is a directory"}}));
}

TEST_F(RuntimeConfiguration, HasADefaultForEveryKey) {
  for (int key = 0; key < kRuntimeConfKeys; ++key) {
    EXPECT_STREQ(runtime_conf_get(key), kRuntimeConfKeyRows[key].value);
  }
  EXPECT_STREQ(runtime_conf_get(25), "/var/www/vhosts");
  EXPECT_STREQ(runtime_conf_get(29), "/opt/oru");
}

TEST_F(RuntimeConfiguration, IsSilentAtStartWhenTheFileIsMissingOrMalformed) {
  log_state() = LogState{};
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(runtime_conf_load(), -1);
  write("HTTPD_VHOSTS_D=/srv\nPRODUCT_ROOT_D\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/var/www/vhosts");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(RuntimeConfiguration, TakesAnyKeyFromTheFile) {
  std::string content;
  for (int key = 0; key < kRuntimeConfKeys; ++key) {
    content += kRuntimeConfKeyRows[key].name + std::string(" value") + std::to_string(key) + "\n";
  }
  write(content);
  for (int key = 0; key < kRuntimeConfKeys; ++key) {
    EXPECT_EQ(runtime_conf_get(key), "value" + std::to_string(key));
  }
}

TEST_F(RuntimeConfiguration, TellsWhatTheFileItselfDefines) {
  write("HTTPD_VHOSTS_D /srv/vhosts\n");
  EXPECT_STREQ(runtime_conf_file_value(HTTPD_VHOSTS_D), "/srv/vhosts");
  EXPECT_EQ(runtime_conf_file_value(PRODUCT_ROOT_D), nullptr);
}

TEST_F(RuntimeConfiguration, DefinesNothingWithoutTheFile) {
  EXPECT_EQ(runtime_conf_file_value(HTTPD_VHOSTS_D), nullptr);
  EXPECT_EQ(runtime_conf_lookup("HTTPD_VHOSTS_D"), nullptr);
}

TEST_F(RuntimeConfiguration, TriesAndReportsAtEachQuestionWithoutTheFile) {
  for (int question = 0; question < 3; ++question) {
    runtime_conf_get(HTTPD_VHOSTS_D);
    EXPECT_EQ(take_reports(), cannot_open());
  }
}

TEST_F(RuntimeConfiguration, SearchesAFoundValueOnlyOnce) {
  write("HTTPD_VHOSTS_D /srv/vhosts\nOTHER x\n");
  runtime_conf_load();
  const char* first = nullptr;
  const char* again = nullptr;
  EXPECT_GT(test::comparisons_of([&first] { first = runtime_conf_get(HTTPD_VHOSTS_D); }), 0);
  EXPECT_EQ(test::comparisons_of([&again] { again = runtime_conf_get(HTTPD_VHOSTS_D); }), 0);
  EXPECT_EQ(again, first);
}

TEST_F(RuntimeConfiguration, SearchesAMissingValueEachTime) {
  write("OTHER x\n");
  runtime_conf_load();
  for (int question = 0; question < 3; ++question) {
    EXPECT_GT(test::comparisons_of([] { runtime_conf_get(HTTPD_VHOSTS_D); }), 0);
  }
}

TEST_F(RuntimeConfiguration, LooksUpNamesOutsideTheKeySet) {
  write("FOO bar\n");
  EXPECT_STREQ(runtime_conf_lookup("FOO"), "bar");
  EXPECT_EQ(runtime_conf_lookup("BAR"), nullptr);
  EXPECT_EQ(runtime_conf_lookup("PRODUCT_ROOT_D"), nullptr);
}

TEST_F(RuntimeConfiguration, IsAskedByName) {
  write("HTTPD_VHOSTS_D /srv/vhosts\n");
  EXPECT_STREQ(runtime_conf_get_by_name("HTTPD_VHOSTS_D"), "/srv/vhosts");
  EXPECT_STREQ(runtime_conf_get_by_name("PRODUCT_ROOT_D"), "/opt/oru");
  EXPECT_STREQ(runtime_conf_get_by_name("TAVEK_MAILNAMES_D"), "/var/qmail/mailnames");
  EXPECT_EQ(take_reports(), Reports{});
}

TEST_F(RuntimeConfiguration, ReportsANameOutsideTheKeySetThoughTheFileDefinesIt) {
  write("FOO bar\n");
  for (const std::string name : {"FOO", "", "httpd_vhosts_d", "HTTPD_VHOSTS", "HTTPD_VHOSTS_D "}) {
    EXPECT_EQ(runtime_conf_get_by_name(name.c_str()), nullptr);
    EXPECT_EQ(take_reports(), unknown(name));
  }
}

TEST_F(RuntimeConfiguration, NamesTheFileOfTheSystemInItsReport) {
  start_from_scratch(nullptr);
  EXPECT_EQ(runtime_conf_get_by_name("FOO"), nullptr);
  EXPECT_EQ(take_reports(),
            (Reports{{3, "variable 'FOO' was found neither in /etc/oru/oru.conf, nor in compile-time defaults"}}));
}

TEST_F(RuntimeConfiguration, PrintsTheReportOfAnUnknownNameAtStart) {
  log_state() = LogState{};
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  runtime_conf_get_by_name("FOO");
  const std::string line = unknown("FOO")[0].second + "\n";
  EXPECT_EQ(testing::internal::GetCapturedStdout(), line);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), line);
}

TEST_F(RuntimeConfiguration, KnowsTheLowerSentinelByNameButNotTheUpper) {
  write("_MAX_POSSIBLE_ORU_CONF_VAR_NAME x\n");
  EXPECT_STREQ(runtime_conf_get_by_name("_MIN_POSSIBLE_ORU_CONF_VAR_NAME"), "_MIN_POSSIBLE_ORU_CONF_VAR_VALUE");
  EXPECT_EQ(take_reports(), Reports{});
  EXPECT_EQ(runtime_conf_get_by_name("_MAX_POSSIBLE_ORU_CONF_VAR_NAME"), nullptr);
  EXPECT_EQ(take_reports(), unknown("_MAX_POSSIBLE_ORU_CONF_VAR_NAME"));
}

TEST_F(RuntimeConfiguration, ForgetsEverythingWhenReset) {
  write("HTTPD_VHOSTS_D /srv/first\n");
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/first");
  write("HTTPD_VHOSTS_D /srv/second\n");
  runtime_conf_reset();
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/second");
}

} // namespace

} // namespace tavek
