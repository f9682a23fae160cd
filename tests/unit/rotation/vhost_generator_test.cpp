#include "rotation/vhost_generator.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <utility>

#include "log/log.h"
#include "runtime_conf/runtime_conf.h"
#include "support/temporary_directory.h"
#include "unit/rotation/captured_output.h"

namespace tavek {

namespace {

constexpr const char* kHeader = "#ATTENTION!\n"
                                "#\n"
                                "#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,\n"
                                "#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.\n"
                                "\nallowhardlink\n";

constexpr const char* kScript = "\tpostrotate\n"
                                "\t\t/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*\n"
                                "\tendscript\n";

// The file of example.com with these directives in each stanza, and these in each but the last.
std::string file_with(const std::string& directives, const std::string& but_last = "",
                      const std::string& root = "/var/www/vhosts") {
  std::string file = kHeader;
  for (const std::string log : {"*.processed", "error_log", "proxy_error_log", "php-fpm_error.log"}) {
    file += root + "/system/example.com/logs/" + log + " {\n" + directives;
    file += (log != "php-fpm_error.log" ? but_last : "") + "}\n";
  }
  return file;
}

class VhostGenerator : public testing::Test {
protected:
  VhostGenerator() {
    configure("");
    settings.vhost_name = "example.com";
  }
  ~VhostGenerator() override {
    runtime_conf_use_file(nullptr);
    runtime_conf_reset();
  }

  void configure(const std::string& content) {
    runtime_conf_reset();
    runtime_conf_use_file(configuration.c_str());
    directory.write("oru.conf", content);
  }

  std::string generated() {
    write_default_file(settings, writer);
    return output.text();
  }

  const TemporaryDirectory directory;
  const std::string configuration = directory / "oru.conf";
  RotationSettings settings;
  DirectiveTally tally;
  CapturedOutput output;
  DirectiveWriter writer{output.stream(), tally};
};

TEST_F(VhostGenerator, WritesAStanzaForEachFamilyOfAHostsLogs) {
  settings.period_type = "by_time";
  settings.period = "daily";
  settings.rot_count = 5;
  settings.compress = true;
  EXPECT_EQ(generated(), file_with("\tdaily\n\trotate 5\n\tcompress\n\tmissingok\n\tcopytruncate\n"));
}

TEST_F(VhostGenerator, WritesASizeAndAMailAddress) {
  settings.period_type = "by_size";
  settings.period = "10485760";
  settings.rot_count = 0;
  settings.email = "root@example.com";
  EXPECT_EQ(generated(), file_with("\tsize=10485760\n\trotate 0\n\tnocompress\n\tmail root@example.com\n\tmailfirst\n"
                                   "\tmissingok\n\tcopytruncate\n"));
}

TEST_F(VhostGenerator, LeavesPeriodAndCountOutWhenNoneIsSet) {
  EXPECT_EQ(generated(), file_with("\tnocompress\n\tmissingok\n\tcopytruncate\n"));
}

TEST_F(VhostGenerator, AnonymizesAllFamiliesButThePhpLog) {
  settings.anonymize = Switch::on;
  EXPECT_EQ(generated(), file_with("\tnocompress\n\tmissingok\n\tcopytruncate\n", kScript));
  EXPECT_EQ(tally.anonymizers, 3);
}

TEST_F(VhostGenerator, WritesNoScriptForOff) {
  settings.anonymize = Switch::off;
  EXPECT_EQ(generated(), file_with("\tnocompress\n\tmissingok\n\tcopytruncate\n"));
}

TEST_F(VhostGenerator, PutsTheLogsBelowTheConfiguredRoot) {
  configure("HTTPD_VHOSTS_D /srv/www\n");
  EXPECT_EQ(generated(), file_with("\tnocompress\n\tmissingok\n\tcopytruncate\n", "", "/srv/www"));
}

int failed_loads = 0;

void count_failed_load(int /*level*/, const char* /*format*/, ...) {
  ++failed_loads;
}

// A configuration that could not be loaded is tried again, and reported, each time that it is asked.
TEST_F(VhostGenerator, AsksForTheRootAnewForEachStanza) {
  const std::string missing = directory / "missing";
  runtime_conf_reset();
  runtime_conf_use_file(missing.c_str());
  const LogHook before = std::exchange(log_state().log_hook, count_failed_load);
  generated();
  log_state().log_hook = before;
  EXPECT_EQ(failed_loads, 4);
}

TEST_F(VhostGenerator, CountsEachDirectiveOfEachStanza) {
  settings.period_type = "by_time";
  settings.period = "weekly";
  generated();
  EXPECT_EQ(tally.periods, 4) << "the same period in the next stanza is no repetition";
  EXPECT_EQ(tally.rotates, 4);
  EXPECT_EQ(tally.compresses, 4);
  EXPECT_EQ(tally.mails, 4);
  EXPECT_EQ(tally.missingoks, 4);
  EXPECT_EQ(tally.anonymizers, 0);
  EXPECT_FALSE(tally.copytruncate_pending);
}

TEST_F(VhostGenerator, ForgetsAPeriodOfBeforeTheFirstStanza) {
  settings.period_type = "by_time";
  settings.period = "weekly";
  tally.last_period = "weekly";
  EXPECT_EQ(generated(), file_with("\tweekly\n\tnocompress\n\tmissingok\n\tcopytruncate\n"));
}

TEST_F(VhostGenerator, RefusesAnUnknownPeriodType) {
  settings.period_type = "by_moon";
  EXPECT_THROW(generated(), std::runtime_error);
}

} // namespace

} // namespace tavek
