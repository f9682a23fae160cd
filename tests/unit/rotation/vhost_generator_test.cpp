#include "rotation/vhost_generator.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "support/configured_file.h"
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

// The file of example.com with `directives` in every stanza and `script` in all but the last.
std::string file_with(const std::string& directives, const std::string& script, const std::string& root) {
  std::string file = kHeader;
  for (const std::string log : {"*.processed", "error_log", "proxy_error_log", "php-fpm_error.log"}) {
    file += root + "/system/example.com/logs/" + log + " {\n" + directives;
    file += (log != "php-fpm_error.log" ? script : "") + "}\n";
  }
  return file;
}

class VhostGenerator : public testing::Test {
protected:
  VhostGenerator() { settings.vhost_name = "example.com"; }

  std::string generated() {
    write_default_file(settings, writer);
    return output.text();
  }

  const TemporaryDirectory directory;
  const std::string configuration = directory.write("oru.conf", "HTTPD_VHOSTS_D /srv/www\n");
  const ConfiguredFile configured{configuration};
  RotationSettings settings;
  DirectiveTally tally;
  CapturedOutput output;
  DirectiveWriter writer{output.stream(), tally};
};

TEST_F(VhostGenerator, WritesAStanzaForEachLogFamilyBelowTheConfiguredRoot) {
  settings.period_type = "by_time";
  settings.period = "daily";
  settings.rot_count = 5;
  settings.compress = true;
  EXPECT_EQ(generated(), file_with("\tdaily\n\trotate 5\n\tcompress\n\tmissingok\n\tcopytruncate\n", "", "/srv/www"));
}

TEST_F(VhostGenerator, WritesSizeAndMailAddress) {
  settings.period_type = "by_size";
  settings.period = "10485760";
  settings.rot_count = 0;
  settings.email = "root@example.com";
  EXPECT_EQ(generated(), file_with("\tsize=10485760\n\trotate 0\n\tnocompress\n\tmail root@example.com\n\tmailfirst\n"
                                   "\tmissingok\n\tcopytruncate\n",
                                   "", "/srv/www"));
}

TEST_F(VhostGenerator, AnonymizesAllFamiliesExceptThePhpLog) {
  std::filesystem::remove(configuration);
  settings.anonymize = Switch::on;
  EXPECT_EQ(generated(), file_with("\tnocompress\n\tmissingok\n\tcopytruncate\n", kScript, "/var/www/vhosts"));
}

TEST_F(VhostGenerator, RejectsAnUnknownPeriodType) {
  settings.period_type = "by_moon";
  EXPECT_THROW(generated(), std::runtime_error);
}

} // namespace

} // namespace tavek
