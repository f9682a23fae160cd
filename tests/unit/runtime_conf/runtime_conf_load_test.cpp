#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "log/log.h"
#include "runtime_conf/runtime_conf.h"
#include "unit/runtime_conf/fresh_process.h"

namespace tavek {

namespace {

using test::Reports;

class RuntimeConfLoad : public test::FreshProcess {};

TEST_F(RuntimeConfLoad, IsLoadedFromTheFile) {
  write("HTTPD_VHOSTS_D /srv/vhosts\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/vhosts");
  EXPECT_EQ(take_reports(), Reports{});
}

TEST_F(RuntimeConfLoad, CannotBeLoadedWithoutTheFile) {
  errno = 0;
  EXPECT_EQ(runtime_conf_load(), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(take_reports(), cannot_open());
}

TEST_F(RuntimeConfLoad, IsReadOnceOnly) {
  write("HTTPD_VHOSTS_D /srv/first\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  write("HTTPD_VHOSTS_D /srv/second\nPRODUCT_ROOT_D /opt/second\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/first");
  EXPECT_STREQ(runtime_conf_get(PRODUCT_ROOT_D), "/opt/oru");
}

TEST_F(RuntimeConfLoad, StaysLoadedWhenTheFileGoes) {
  write("HTTPD_VHOSTS_D /srv/vhosts\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  std::filesystem::remove(path);
  EXPECT_EQ(runtime_conf_load(), 0);
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/vhosts");
}

TEST_F(RuntimeConfLoad, IsTriedAgainAfterAFailure) {
  EXPECT_EQ(runtime_conf_load(), -1);
  EXPECT_EQ(runtime_conf_load(), -1);
  EXPECT_EQ(take_reports().size(), 2U);
  write("HTTPD_VHOSTS_D /srv/vhosts\n");
  EXPECT_EQ(runtime_conf_load(), 0);
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/vhosts");
}

TEST_F(RuntimeConfLoad, IsNotLoadedFromWhatCannotBeRead) {
  start_from_scratch(folder.path().c_str());
  errno = 0;
  EXPECT_EQ(runtime_conf_load(), -1);
  EXPECT_EQ(errno, EISDIR);
  EXPECT_EQ(take_reports(), (Reports{{12, "Unable to read configuration file: Is a directory"}}));
}

TEST_F(RuntimeConfLoad, IsSilentAtStartWhenTheFileIsMissingOrMalformed) {
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

TEST_F(RuntimeConfLoad, TriesAndReportsAtEachQuestionWithoutTheFile) {
  for (int question = 0; question < 3; ++question) {
    runtime_conf_get(HTTPD_VHOSTS_D);
    EXPECT_EQ(take_reports(), cannot_open());
  }
}

TEST_F(RuntimeConfLoad, ForgetsEverythingWhenReset) {
  write("HTTPD_VHOSTS_D /srv/first\n");
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/first");
  write("HTTPD_VHOSTS_D /srv/second\n");
  runtime_conf_reset();
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/second");
}

} // namespace

} // namespace tavek
