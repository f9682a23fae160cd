#include "runtime_conf/runtime_conf.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <string>

#include "runtime_conf/runtime_conf_keys.h"
#include "support/configured_file.h"
#include "support/temporary_directory.h"
#include "unit/runtime_conf/recorded_reports.h"

namespace tavek {

namespace {

using test::Reports;

// Nothing is loaded yet, and the file does not exist until a test writes it.
class RuntimeConfiguration : public test::RecordedReports {
protected:
  void write(const std::string& content) { folder.write("oru.conf", content); }

  Reports cannot_open() const {
    return {{12, "unable to open configuration file " + path + ": No such file or directory\n"}};
  }
  static Reports unknown(const std::string& name, const std::string& file) {
    return {{3, "variable '" + name + "' was found neither in " + file + ", nor in compile-time defaults"}};
  }

  const TemporaryDirectory folder;
  const std::string path = folder / "oru.conf";
  const ConfiguredFile configuration{path};
};

TEST_F(RuntimeConfiguration, HasADefaultForEveryKey) {
  for (int key = 0; key < kRuntimeConfKeys; ++key) {
    EXPECT_STREQ(runtime_conf_get(key), kRuntimeConfKeyRows[key].value);
  }
}

TEST_F(RuntimeConfiguration, ReadsEveryKeyFromTheFile) {
  std::string content;
  for (int key = 0; key < kRuntimeConfKeys; ++key) {
    content += kRuntimeConfKeyRows[key].name + std::string(" value") + std::to_string(key) + "\n";
  }
  write(content);
  for (int key = 0; key < kRuntimeConfKeys; ++key) {
    EXPECT_EQ(runtime_conf_get(key), "value" + std::to_string(key));
  }
  EXPECT_EQ(take_reports(), Reports{});
}

TEST_F(RuntimeConfiguration, FailsToLoadWithoutTheFileAndTriesAgainEachTime) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    errno = 0;
    EXPECT_EQ(runtime_conf_load(), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(take_reports(), cannot_open());
  }
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/var/www/vhosts");
  EXPECT_EQ(take_reports(), cannot_open());
  write("HTTPD_VHOSTS_D /srv/vhosts\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/vhosts");
}

TEST_F(RuntimeConfiguration, ReadsTheFileOnlyOnce) {
  write("HTTPD_VHOSTS_D /srv/first\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  write("HTTPD_VHOSTS_D /srv/second\nPRODUCT_ROOT_D /opt/second\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/first");
  EXPECT_STREQ(runtime_conf_get(PRODUCT_ROOT_D), "/opt/oru");
}

TEST_F(RuntimeConfiguration, ForgetsEverythingOnReset) {
  write("HTTPD_VHOSTS_D /srv/first\n");
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/first");
  write("HTTPD_VHOSTS_D /srv/second\n");
  runtime_conf_reset();
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/second");
}

TEST_F(RuntimeConfiguration, DistinguishesValuesOfTheFileFromDefaults) {
  EXPECT_EQ(runtime_conf_file_value(HTTPD_VHOSTS_D), nullptr);
  write("HTTPD_VHOSTS_D /srv/vhosts\n");
  EXPECT_STREQ(runtime_conf_file_value(HTTPD_VHOSTS_D), "/srv/vhosts");
  EXPECT_EQ(runtime_conf_file_value(PRODUCT_ROOT_D), nullptr);
}

TEST_F(RuntimeConfiguration, LooksUpAnyNameThatTheFileDefines) {
  EXPECT_EQ(runtime_conf_lookup("FOO"), nullptr);
  write("FOO bar\n");
  EXPECT_STREQ(runtime_conf_lookup("FOO"), "bar");
  EXPECT_EQ(runtime_conf_lookup("BAR"), nullptr);
  EXPECT_EQ(runtime_conf_lookup("PRODUCT_ROOT_D"), nullptr);
}

TEST_F(RuntimeConfiguration, ReturnsTheValueOfAKeyByName) {
  write("HTTPD_VHOSTS_D /srv/vhosts\n");
  EXPECT_STREQ(runtime_conf_get_by_name("HTTPD_VHOSTS_D"), "/srv/vhosts");
  EXPECT_STREQ(runtime_conf_get_by_name("PRODUCT_ROOT_D"), "/opt/oru");
  EXPECT_STREQ(runtime_conf_get_by_name("_MIN_POSSIBLE_ORU_CONF_VAR_NAME"), "_MIN_POSSIBLE_ORU_CONF_VAR_VALUE");
  EXPECT_EQ(take_reports(), Reports{});
}

TEST_F(RuntimeConfiguration, ReportsANameOutsideTheKeySetEvenIfTheFileDefinesIt) {
  write("FOO bar\n_MAX_POSSIBLE_ORU_CONF_VAR_NAME x\n");
  for (const std::string name : {"FOO", "", "httpd_vhosts_d", "HTTPD_VHOSTS", "_MAX_POSSIBLE_ORU_CONF_VAR_NAME"}) {
    EXPECT_EQ(runtime_conf_get_by_name(name.c_str()), nullptr);
    EXPECT_EQ(take_reports(), unknown(name, path));
  }
}

TEST_F(RuntimeConfiguration, ReadsTheSystemsConfigurationFileByDefault) {
  runtime_conf_use_file(nullptr);
  EXPECT_EQ(runtime_conf_get_by_name("FOO"), nullptr);
  EXPECT_EQ(take_reports(), unknown("FOO", "/etc/oru/oru.conf"));
}

} // namespace

} // namespace tavek
