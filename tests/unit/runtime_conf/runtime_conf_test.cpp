#include "runtime_conf/runtime_conf.h"

#include <gtest/gtest.h>
#include <string>

#include "log/log.h"
#include "runtime_conf/runtime_conf_keys.h"
#include "unit/runtime_conf/fresh_process.h"

namespace tavek {

namespace {

using test::Reports;

class RuntimeConfiguration : public test::FreshProcess {};

TEST_F(RuntimeConfiguration, HasADefaultForEveryKey) {
  for (int key = 0; key < kRuntimeConfKeys; ++key) {
    EXPECT_STREQ(runtime_conf_get(key), kRuntimeConfKeyRows[key].value);
  }
  EXPECT_STREQ(runtime_conf_get(25), "/var/www/vhosts");
  EXPECT_STREQ(runtime_conf_get(29), "/opt/oru");
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

} // namespace

} // namespace tavek
