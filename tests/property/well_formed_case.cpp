#include "well_formed_case.h"

#include <algorithm>
#include <string_view>

namespace tavek {
namespace {

// clang-format off
constexpr std::string_view kHeads[] = {
    "/var/log/example.log {\n", "/x{\n", "  /a/*.log /b/*.log {\n", "\"/with blank/log\" {\n",
    "/var/log/tavek/xferlog.processed\n{\n", "/x\n/y\n\t{\n",
};
// clang-format on

constexpr std::string_view kPeriodLines[] = {"\tdaily\n", "weekly\n", "  monthly # often\n", "\tsize 100k\n",
                                             "size=1G\n"};
constexpr std::string_view kRotateLines[] = {"\trotate 7\n", "rotate\t0 \n"};
constexpr std::string_view kCompressLines[] = {"\tcompress\n", "    nocompress \n"};
constexpr std::string_view kMissingokLines[] = {"\tmissingok\n", "nomissingok\n"};
constexpr std::string_view kCopytruncateLines[] = {"\tcopytruncate\n", "copytruncate\t\n"};
constexpr std::string_view kMailLines[] = {"\tmail root@localhost\n", "mail a\n\tmailfirst\n", "maillast\n mail b \n"};

// clang-format off
constexpr std::string_view kOtherLines[] = {
    "\tdelaycompress\n", "\tnotifempty\n", "\tcreate 640 root adm\n", "\n", "# /x {\n", "\tnomail\n",
    "\tmaxsize 5M\n", "\tsharedscripts\n", "\tolddir /var/log/old {\n", "\tdateformat -%Y\r\n", "\t\xc3\xa4\n",
};
// clang-format on

constexpr std::string_view kScripts[] = {"", "",
                                         "\tpostrotate\n\t\ttest ! -f /run/x || { kill -USR1 1; }\n\tendscript\n",
                                         "postrotate\n/x/sbin/anonymize_ip --find-rotated-logs $*\n endscript \n",
                                         "\tpostrotate\n\tdaily\n\t/x/anonymize_ip\n\trotate 5\n\tendscript\n"};

constexpr std::string_view kBetween[] = {"",         "", "\n", "# /x {\n", "compress\n", "include /etc/logrotate.d\n",
                                         "#\xff }\n"};

template <typename Table>
void add_one_or_none(std::vector<std::string_view>& lines, Dice& dice, const Table& table) {
  if (dice.coin()) {
    lines.push_back(dice.of(table));
  }
}

std::string stanza(Dice& dice) {
  std::vector<std::string_view> lines;
  add_one_or_none(lines, dice, kPeriodLines);
  add_one_or_none(lines, dice, kRotateLines);
  add_one_or_none(lines, dice, kCompressLines);
  add_one_or_none(lines, dice, kMissingokLines);
  add_one_or_none(lines, dice, kCopytruncateLines);
  add_one_or_none(lines, dice, kMailLines);
  add_one_or_none(lines, dice, kOtherLines);
  add_one_or_none(lines, dice, kOtherLines);
  for (std::size_t left = lines.size(); left > 1; --left) {
    std::swap(lines[left - 1], lines[dice.below(left)]);
  }
  std::string text(dice.of(kBetween));
  text.append(dice.of(kHeads));
  for (const auto line : lines) {
    text.append(line);
  }
  return text.append(dice.of(kScripts)).append("}\n");
}

// By time, by size, or as the file has it.
void choose_period(Dice& dice, RotationSettings& settings) {
  constexpr std::string_view times[] = {"daily", "weekly", "monthly"};
  constexpr std::string_view sizes[] = {"1", "100k", "10M", "daily"};
  switch (dice.below(3)) {
  case 0:
    settings.period_type = "by_time";
    settings.period = dice.of(times);
    break;
  case 1:
    settings.period_type = "by_size";
    settings.period = dice.of(sizes);
    break;
  default:
    settings.period = dice.coin() ? "" : dice.of(times);
  }
}

} // namespace

RewriteCase well_formed_case(Dice& dice, std::size_t size) {
  RewriteCase rewrite;
  RotationSettings& settings = rewrite.job.settings;
  for (std::size_t stanzas = dice.below(size / 8 + 2); stanzas > 0; --stanzas) {
    rewrite.pieces.push_back(stanza(dice));
  }
  choose_period(dice, settings);
  settings.rot_count = static_cast<int>(dice.below(12)) - 1;
  settings.email = dice.coin() ? "" : "webmaster@example.com";
  settings.compress = dice.coin();
  settings.anonymize = dice.coin() ? Switch::keep : Switch::off;
  settings.system_mode = dice.one_in(3);
  settings.vhost_name = "example.com";
  return rewrite;
}

} // namespace tavek
