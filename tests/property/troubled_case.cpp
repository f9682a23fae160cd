#include "troubled_case.h"

#include <algorithm>
#include <climits>
#include <string_view>

namespace tavek {
namespace {

using namespace std::string_view_literals;

// clang-format off
// A piece of text that begins or ends something, or just fails to. What matters most stands here more than once.
constexpr std::string_view kFragments[] = {
    "/"sv, "/"sv, "{"sv, "{\n"sv, "{\n"sv, "}"sv, "}"sv, "}\n"sv, "#"sv, "#"sv, "\n"sv, "\n"sv, "\n"sv, "\r"sv,
    "\r\n"sv, "\0"sv, "\0"sv, " "sv, "\t"sv, " \t "sv, "\v"sv, "\f"sv, "a"sv, "no"sv, "\""sv, "\xef\xbb\xbf"sv,
    "\xff"sv, "/x {\n"sv, "/x {\n"sv, "/x {\n"sv, "/x {\n"sv, "/x{\n"sv, "/x { \n"sv, "/x {\r\n"sv, "/x\n{\n"sv,
    "\"/x\" /y {\n"sv, "/a/b.log\t{\n"sv, "/a/b.log\r{\n"sv, "/a/b.log\0 {\n"sv, "# /x {\n"sv, "# it's }\n"sv,
    "#\0/\n"sv, "/x # {\n"sv, "/{\n"sv, "postrotate\n"sv, "\tpostrotate\n"sv, "\tpostrotate\n"sv, "endscript\n"sv,
    "\tendscript\n"sv, "/x/anonymize_ip a\n"sv, "\t/x/anonymize_ip a\n"sv, "mailfirst"sv, "anonymize_ip"sv,
};

// What a line may start with.
constexpr std::string_view kWords[] = {
    "size"sv, "daily"sv, "weekly"sv, "monthly"sv, "yearly"sv, "hourly"sv, "minsize"sv, "maxsize"sv, "Daily"sv,
    "dail"sv, "dai\0ly"sv, "rotate"sv, "rotate"sv, "norotate"sv, "rotat"sv, "compress"sv, "nocompress"sv,
    "delaycompress"sv, "compresscmd"sv, "nonocompress"sv, "no compress"sv, "missingok"sv, "nomissingok"sv,
    "missingo"sv, "copytruncate"sv, "copytruncate"sv, "nocopytruncate"sv, "copy"sv, "mail"sv, "mail"sv, "nomail"sv,
    "mailfirst"sv, "maillast"sv, "mailfirstlast"sv, "nomailfirst"sv, "postrotate"sv, "postrotat"sv, "prerotate"sv,
    "endscript"sv, "endscript"sv, "endscrip"sv, "/x/anonymize_ip"sv, "/x/anonymize_ip"sv, "/a/b//anonymize_ip"sv,
    "//anonymize_ip"sv, "/anonymize_ip"sv, "/a/anonymize_ip/anonymize_ip"sv, "/usr/bin/env /x/anonymize_ip"sv,
    "/x\r/anonymize_ip"sv, "/x\0/anonymize_ip"sv, "/x/anonymize_ip\0"sv, "/x/anonymize_ips"sv, "x/anonymize_ip"sv,
    "/{}/anonymize_ip"sv, "#"sv, ""sv,
};

constexpr std::string_view kIndents[] = {""sv, ""sv, "\t"sv, "\t"sv, " "sv, " \t \t"sv, "\r"sv, "\0"sv, "}"sv, "x"sv};

constexpr std::string_view kTails[] = {
    "\n"sv, "\n"sv, "\n"sv, " \n"sv, "\t \n"sv, "\r\n"sv, " 5\n"sv, "\t5 \n"sv, "=100k\n"sv, " a@b.c\n"sv, " a\n"sv,
    " a {\n"sv, " /x {\n"sv, " }\n"sv, "}\n"sv, " #\n"sv, " # /x {\n"sv, "\0\n"sv, " \0a\0\n"sv, "x\n"sv, ""sv, " "sv,
};
// clang-format on

constexpr char kRunBytes[] = {' ', '\t', '\n', '\0', '/', '{', '}', '#', 'a', '\r', '\xff'};

std::string any_byte(Dice& dice) {
  return std::string(1, static_cast<char>(dice.below(UCHAR_MAX + 1)));
}

std::string any_line(Dice& dice) {
  std::string line(dice.of(kIndents));
  return line.append(dice.of(kWords)).append(dice.of(kTails));
}

std::string any_piece(Dice& dice) {
  constexpr std::size_t longest_run = 40;
  switch (dice.below(20)) {
  case 0:
    return any_byte(dice);
  case 1:
    return std::string(1 + dice.below(longest_run), dice.of(kRunBytes));
  default:
    return dice.coin() ? std::string(dice.of(kFragments)) : any_line(dice);
  }
}

// Up to `most` of them.
std::vector<std::string> any_pieces(Dice& dice, std::size_t most) {
  std::vector<std::string> pieces(dice.below(most + 1));
  std::generate(pieces.begin(), pieces.end(), [&dice] { return any_piece(dice); });
  return pieces;
}

// A line's beginning, something over and over again, and a line's end.
std::string long_piece(Dice& dice, std::size_t length) {
  std::string piece(dice.of(kIndents));
  piece.append(dice.of(kWords));
  const std::string part = dice.coin() ? std::string(1, dice.of(kRunBytes)) : any_piece(dice);
  while (!part.empty() && piece.size() < length) {
    piece.append(part);
  }
  return piece.append(dice.of(kTails));
}

RewriteJob any_job(Dice& dice) {
  constexpr std::string_view types[] = {"by_time"sv, "by_time"sv, "by_size"sv, "by_size"sv, ""sv, ""sv};
  constexpr std::string_view bogus_types[] = {"bogus"sv, "by_week"sv, "BY_TIME"sv, "by_time "sv, " "sv};
  constexpr std::string_view periods[] = {""sv, "daily"sv, "weekly"sv, "monthly"sv, "10M"sv, "%s%n"sv};
  constexpr int counts[] = {-1, -1, INT_MIN, 0, 1, 5, INT_MAX};
  constexpr std::string_view emails[] = {""sv, "a@b.c"sv, "%s"sv};
  constexpr std::string_view names[] = {"example.com"sv, "a/b"sv, ""sv};
  constexpr Switch switches[] = {Switch::keep, Switch::on, Switch::on, Switch::off};
  RewriteJob job;
  RotationSettings& settings = job.settings;
  settings.period_type = dice.one_in(16) ? dice.of(bogus_types) : dice.of(types);
  settings.period = dice.of(periods);
  settings.rot_count = dice.of(counts);
  settings.email = dice.of(emails);
  settings.compress = dice.coin();
  settings.anonymize = dice.of(switches);
  settings.system_mode = dice.one_in(3);
  settings.vhost_name = dice.of(names);
  job.select_targets = dice.coin();
  if (dice.coin()) {
    job.target_logs = {"/x", "/a/b.log", "/x{"};
  }
  return job;
}

// The last line of a file that lacks its newline.
std::string unfinished_line(Dice& dice) {
  constexpr std::string_view ends[] = {""sv, " "sv, "\0"sv, " }"sv, " } \0 }"sv, " /x {"sv, "\r"sv};
  std::string line(dice.of(kIndents));
  return line.append(dice.of(kWords)).append(dice.of(ends));
}

// Makes it a stanza that nothing closes.
void leave_unclosed(std::vector<std::string>& pieces) {
  for (std::string& piece : pieces) {
    std::erase(piece, '}');
  }
  pieces.insert(pieces.begin(), {"/x {\n", "\tdaily\n"});
}

RewriteCase with_any_end(Dice& dice, std::vector<std::string> pieces) {
  if (dice.one_in(6)) {
    leave_unclosed(pieces);
  }
  if (dice.one_in(4)) {
    pieces.push_back(unfinished_line(dice));
  }
  return {std::move(pieces), any_job(dice)};
}

} // namespace

RewriteCase troubled_case(Dice& dice, std::size_t size) {
  return with_any_end(dice, any_pieces(dice, size));
}

RewriteCase long_troubled_case(Dice& dice, std::size_t size) {
  constexpr std::size_t bytes_per_size = 2000;
  std::vector<std::string> pieces = any_pieces(dice, size);
  for (std::size_t count = 1 + dice.below(3); count > 0; --count) {
    const auto at = pieces.begin() + static_cast<std::ptrdiff_t>(dice.below(pieces.size() + 1));
    pieces.insert(at, long_piece(dice, dice.below(bytes_per_size * size + 1)));
  }
  return with_any_end(dice, std::move(pieces));
}

} // namespace tavek
