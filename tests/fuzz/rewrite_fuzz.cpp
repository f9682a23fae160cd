// The rewrite of a rotation file, compared with a plain model of its rules.
//
// An input begins with a line of settings, one character each: period type, period, rotation count, address,
// anonymizing and flags. Each character picks a row of a table, so that every line means something: "112015" is
// by_time, monthly, a count of 5, no address, anonymizing on, compressed and with selected stanzas. The text of the
// file follows.

#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "finding.h"
#include "plain_rewrite.h"
#include "production_rewrite.h"

namespace tavek {

namespace {

constexpr std::size_t kSettings = 7; // With the newline.
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

// A system file is only copied where nothing is asked for. This needs no model: the bytes themselves must be there.
void check_copy(std::string_view text, RewriteJob job) {
  if (text.find("mail") == std::string_view::npos) {
    job.settings = {};
    job.settings.system_mode = true;
    expect_same("a run without settings copies a system file", text, rewrite_in_memory(text, job).text);
  }
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
  const tavek::RewriteResult expected = tavek::plain_rewrite(text, job);
  const tavek::RewriteResult actual = tavek::rewrite_in_memory(text, job);
  tavek::expect(actual.passes <= 2, "two passes are enough");
  tavek::expect_same("the passes", std::to_string(expected.passes), std::to_string(actual.passes));
  tavek::expect_same("the error of the rewrite", expected.error, actual.error);
  tavek::expect_same("the rewritten file", expected.text, actual.text);
  tavek::check_copy(text, job);
  return 0;
}
