#include "driver/system_log_category.h"

#include <gtest/gtest.h>

#include "unit/driver/command_line.h"

namespace tavek {

namespace {

using Words = std::vector<std::string>;

struct Row {
  const char* option;
  const char* rotation_file;
  Words log_paths;
  bool select_stanzas;
};

std::vector<Row> expected_rows() {
  return {
      {"apache-logs", "/etc/logrotate.d/apache2", {"/var/log/apache2/*.log"}, false},
      {"nginx-logs", "/etc/logrotate.d/nginx", {"/var/log/nginx/*.log"}, false},
      {"tavek-logs",
       "/opt/oru/etc/logrotate.conf",
       {"/var/log/maillog.processed", "/var/log/tavek/xferlog.processed"},
       true},
      {"fail2ban-logs", "/etc/logrotate.d/fail2ban", {"/var/log/fail2ban.log"}, false},
      {"modsecurity-logs", "/etc/logrotate.d/mod_security", {"/var/log/modsec_audit.log"}, false},
  };
}

// The switch that wins, or nothing.
std::string selected(const Words& words) {
  const SystemLogCategory* category = selected_category(options_of(words));
  return category != nullptr ? category->option : "";
}

TEST(SystemLogCategory, EachHasItsFileItsLogsAndItsPlace) {
  const std::vector<Row> expected = expected_rows();
  ASSERT_EQ(system_log_categories().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const SystemLogCategory& category = system_log_categories()[i];
    EXPECT_STREQ(category.option, expected[i].option);
    EXPECT_STREQ(category.rotation_file, expected[i].rotation_file);
    EXPECT_EQ(Words(category.log_paths.begin(), category.log_paths.end()), expected[i].log_paths);
    EXPECT_EQ(category.select_stanzas, expected[i].select_stanzas) << expected[i].option;
  }
}

TEST(SystemLogCategory, NoneIsSelectedWithoutASwitch) {
  EXPECT_EQ(selected({}), "");
  EXPECT_EQ(selected({"--system-logs", "-K", "example.com", "on"}), "");
}

TEST(SystemLogCategory, EachIsSelectedByItsSwitch) {
  for (const Row& row : expected_rows()) {
    EXPECT_EQ(selected({std::string("--") + row.option}), row.option);
  }
}

TEST(SystemLogCategory, TheFirstOfSeveralWinsWhateverTheirOrderOnTheCommandLine) {
  const std::vector<Row> rows = expected_rows();
  Words words;
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
    words.push_back(std::string("--") + row->option);
    EXPECT_EQ(selected(words), row->option);
  }
}

} // namespace

} // namespace tavek
