// Compares the rewrite of a rotation file with the plain rules.
//
// An input starts with a line of settings, one character each: period type, period, rotation count, mail address,
// anonymize switch and flags. Each character selects a row of a table, so every line is valid: "112015" is by_time,
// monthly, a count of 5, no address, anonymize on, compress on and selected stanzas. The content of the file follows.

#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "finding.h"
#include "rewrites.h"

namespace tavek {

namespace {

constexpr std::size_t kSettings = 7; // Including the newline.
constexpr const char* kPeriodTypes[] = {"", "by_time", "by_size", "by_moon"};
constexpr const char* kPeriods[] = {"daily", "monthly", "10M", ""};
constexpr int kCounts[] = {-1, 0, 5, 2147483647};
constexpr const char* kAddresses[] = {"", "root@example.com", "a%sb", "}"};
constexpr Switch kSwitches[] = {Switch::keep, Switch::on, Switch::off, Switch::on};

template <typename Table>
auto pick(const Table& table, char choice) {
  return table[static_cast<unsigned char>(choice) % std::size(table)];
}

RewriteJob job_of(std::string_view choices) {
  RewriteJob job;
  job.settings.vhost_name = "example.com";
  job.settings.period_type = pick(kPeriodTypes, choices[0]);
  job.settings.period = pick(kPeriods, choices[1]);
  job.settings.rot_count = pick(kCounts, choices[2]);
  job.settings.email = pick(kAddresses, choices[3]);
  job.settings.anonymize = pick(kSwitches, choices[4]);
  job.settings.compress = (choices[5] & 1) != 0;
  job.settings.system_mode = (choices[5] & 2) != 0;
  job.select_targets = (choices[5] & 4) != 0;
  job.target_logs = {"/var/log/maillog.processed", "/l"};
  return job;
}

} // namespace

} // namespace tavek

// NOLINTNEXTLINE(*-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < tavek::kSettings) {
    return -1;
  }
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::string_view text = input.substr(tavek::kSettings);
  const tavek::RewriteJob job = tavek::job_of(input);
  tavek::expect_same("the rewritten file", tavek::plain_rewrite(text, job), tavek::production_rewrite(text, job));
  return 0;
}
