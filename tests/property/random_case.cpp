#include "random_case.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <iterator>
#include <numeric>
#include <ostream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "plain_pattern.h"

namespace tavek {
namespace {

using namespace std::string_view_literals;

// Draws directly from rapidcheck's random numbers, which is much faster than one rapidcheck generator per choice.
class Dice {
public:
  explicit Dice(const rc::Random& random) : random_(random) {}

  /// 0 to `count` - 1.
  std::size_t below(std::size_t count) { return static_cast<std::size_t>(random_.next() % count); }

  bool one_in(std::size_t count) { return below(count) == 0; }
  bool coin() { return one_in(2); }

  /// An element of a table.
  template <typename Table>
  const auto& of(const Table& table) {
    return *(std::begin(table) + below(std::size(table)));
  }

private:
  rc::Random random_;
};

// clang-format off
// Pieces that start or end a construct, or nearly do so. The most important ones are listed more than once.
constexpr std::string_view kFragments[] = {
    "/"sv, "/"sv, "{"sv, "{\n"sv, "{\n"sv, "}"sv, "}"sv, "}\n"sv, "#"sv, "#"sv, "\n"sv, "\n"sv, "\n"sv, "\r"sv,
    "\r\n"sv, "\0"sv, "\0"sv, " "sv, "\t"sv, " \t "sv, "\v"sv, "\f"sv, "a"sv, "no"sv, "\""sv, "\xef\xbb\xbf"sv,
    "\xff"sv, "/x {\n"sv, "/x {\n"sv, "/x {\n"sv, "/x {\n"sv, "/x{\n"sv, "/x { \n"sv, "/x {\r\n"sv, "/x\n{\n"sv,
    "\"/x\" /y {\n"sv, "/a/b.log\t{\n"sv, "/a/b.log\r{\n"sv, "/a/b.log\0 {\n"sv, "# /x {\n"sv, "# it's }\n"sv,
    "#\0/\n"sv, "/x # {\n"sv, "/{\n"sv, "\tpostrotate\n"sv, "\tpostrotate\n"sv, "\tendscript\n"sv,
    "\t/x/anonymize_ip a\n"sv,
};

// First words of a line.
// Words that resemble managed ones, the ends of scripts, and the anonymizer.
constexpr std::string_view kOtherWords[] = {
    "yearly"sv, "minsize"sv, "Daily"sv, "dai\0ly"sv, "nocompress"sv, "delaycompress"sv, "compresscmd"sv, "nomissingok"sv,
    "nocopytruncate"sv, "nomail"sv, "prerotate"sv, "endscript"sv, "endscript"sv, "/x/anonymize_ip"sv, "/x/anonymize_ip"sv,
    "/a/b//anonymize_ip"sv, "//anonymize_ip"sv, "/anonymize_ip"sv, "/a/anonymize_ip/anonymize_ip"sv,
    "/usr/bin/env /x/anonymize_ip"sv, "/x\0/anonymize_ip"sv, "/x/anonymize_ips"sv, "/{}/anonymize_ip"sv, "#"sv, ""sv,
};

constexpr std::string_view kIndents[] = {""sv, ""sv, "\t"sv, "\t"sv, " "sv, " \t \t"sv, "\r"sv, "\0"sv, "}"sv, "x"sv};

constexpr std::string_view kTails[] = {
    "\n"sv, "\n"sv, "\n"sv, " \n"sv, "\t \n"sv, "\r\n"sv, " 5\n"sv, "\t5 \n"sv, "=100k\n"sv, " a@b.c\n"sv, " a\n"sv,
    " a {\n"sv, " /x {\n"sv, " }\n"sv, "}\n"sv, " #\n"sv, " # /x {\n"sv, "\0\n"sv, " \0a\0\n"sv, "x\n"sv, ""sv, " "sv,
};
// clang-format on

constexpr char kRunBytes[] = {' ', '\t', '\n', '\0', '/', '{', '}', '#', 'a', '\r', '\xff'};

std::string_view any_word(Dice& dice) {
  return dice.coin() ? dice.of(plain_pattern::kManagedWords) : dice.of(kOtherWords);
}

std::string any_line(Dice& dice) {
  std::string line(dice.of(kIndents));
  return line.append(any_word(dice)).append(dice.of(kTails));
}

std::string any_piece(Dice& dice) {
  constexpr std::size_t longest_run = 40;
  switch (dice.below(20)) {
  case 0:
    return std::string(1, static_cast<char>(dice.below(UCHAR_MAX + 1)));
  case 1:
    return std::string(1 + dice.below(longest_run), dice.of(kRunBytes));
  default:
    return dice.coin() ? std::string(dice.of(kFragments)) : any_line(dice);
  }
}

// Up to `most` pieces.
std::vector<std::string> any_pieces(Dice& dice, std::size_t most) {
  std::vector<std::string> pieces(dice.below(most + 1));
  std::generate(pieces.begin(), pieces.end(), [&dice] { return any_piece(dice); });
  return pieces;
}

// The start of a line, one part repeated many times, and the end of a line.
std::string long_piece(Dice& dice, std::size_t length) {
  std::string piece(dice.of(kIndents));
  piece.append(any_word(dice));
  const std::string part = dice.coin() ? std::string(1, dice.of(kRunBytes)) : any_piece(dice);
  while (!part.empty() && piece.size() < length) {
    piece.append(part);
  }
  return piece.append(dice.of(kTails));
}

RewriteJob any_job(Dice& dice) {
  constexpr std::string_view types[] = {"by_time", "by_size", ""};
  constexpr std::string_view periods[] = {"", "daily", "weekly", "monthly", "10M", "%s%n"};
  constexpr int counts[] = {-1, -1, INT_MIN, 0, 1, 5, INT_MAX};
  constexpr std::string_view emails[] = {"", "a@b.c", "%s"};
  constexpr std::string_view names[] = {"example.com", "a/b", ""};
  constexpr Switch switches[] = {Switch::keep, Switch::on, Switch::on, Switch::off};
  RewriteJob job;
  RotationSettings& settings = job.settings;
  settings.period_type = dice.one_in(16) ? "by_week" : dice.of(types);
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

// Adds a random job. Sometimes turns the text into a stanza that never closes.
RewriteCase with_any_job(Dice& dice, std::vector<std::string> pieces) {
  if (dice.one_in(6)) {
    for (std::string& piece : pieces) {
      std::erase(piece, '}');
    }
    pieces.insert(pieces.begin(), {"/x {\n", "\tdaily\n"});
  }
  return {std::move(pieces), any_job(dice)};
}

RewriteCase random_case(Dice& dice, std::size_t size) {
  return with_any_job(dice, any_pieces(dice, size));
}

RewriteCase long_random_case(Dice& dice, std::size_t size) {
  constexpr std::size_t bytes_per_size = 2000;
  std::vector<std::string> pieces = any_pieces(dice, size);
  for (std::size_t count = 1 + dice.below(3); count > 0; --count) {
    const auto at = pieces.begin() + static_cast<std::ptrdiff_t>(dice.below(pieces.size() + 1));
    pieces.insert(at, long_piece(dice, dice.below(bytes_per_size * size + 1)));
  }
  return with_any_job(dice, std::move(pieces));
}

// A stanza with about half of the lines below, in any order.
std::string well_formed_stanza(Dice& dice) {
  constexpr std::string_view heads[] = {"/x {\n"sv, "  /a/*.log /b {\n"sv, "\"/a b\"{\n"sv, "# /x {\n/x\n/y\n\t{\n"sv};
  constexpr std::string_view lines[] = {
      "  monthly # often\n"sv, "rotate\t7 \n"sv,
      "  nocompress \n"sv,     "\tmissingok\n"sv,
      "copytruncate\t\n"sv,    "maillast\n mail a@b.c \n"sv,
      "\tdelaycompress\n"sv,   "\tolddir /old {\n"sv,
      "# \xff {\r\n"sv,        "postrotate\n\tdaily\n\t{ kill 1; }\n/x/anonymize_ip $*\n endscript \n"sv,
  };
  std::vector<std::string_view> chosen;
  for (const auto line : lines) {
    if (dice.coin()) {
      chosen.insert(chosen.begin() + static_cast<std::ptrdiff_t>(dice.below(chosen.size() + 1)), line);
    }
  }
  std::string stanza(dice.of(heads));
  for (const auto line : chosen) {
    stanza.append(line);
  }
  return stanza.append("}\n");
}

RewriteCase well_formed_case(Dice& dice, std::size_t size) {
  constexpr std::pair<std::string_view, std::string_view> periods[] = {
      {"by_time", "daily"}, {"by_time", "monthly"}, {"by_size", "10M"}, {"by_size", "daily"}, {"", ""}, {"", "weekly"}};
  RewriteCase rewrite{{}, any_job(dice)};
  for (std::size_t stanzas = dice.below(size / 8 + 2); stanzas > 0; --stanzas) {
    rewrite.pieces.push_back(well_formed_stanza(dice));
  }
  RotationSettings& settings = rewrite.job.settings;
  std::tie(settings.period_type, settings.period) = dice.of(periods);
  settings.anonymize = dice.coin() ? Switch::keep : Switch::off;
  return rewrite;
}

rc::Seq<std::string> halves(const std::string& piece) {
  constexpr std::size_t long_piece = 16;
  return piece.size() < long_piece ? rc::Seq<std::string>() : rc::seq::just(piece.substr(0, piece.size() / 2));
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): rapidcheck frees it

rc::Seq<RewriteCase> smaller_cases(const RewriteCase& rewrite) {
  auto pieces =
      rc::seq::concat(rc::shrink::removeChunks(rewrite.pieces), rc::shrink::eachElement(rewrite.pieces, halves));
  return rc::seq::map(std::move(pieces), [job = rewrite.job](std::vector<std::string>&& fewer) {
    return RewriteCase{std::move(fewer), job};
  });
}

// Cases shrink by dropping pieces and by halving long ones.
rc::Gen<RewriteCase> cases_from(RewriteCase (*make)(Dice& dice, std::size_t size)) {
  return [make](const rc::Random& random, int size) {
    Dice dice(random);
    return rc::shrinkable::shrinkRecur(make(dice, static_cast<std::size_t>(size)), &smaller_cases);
  };
}

} // namespace

std::string RewriteCase::text() const {
  return std::accumulate(pieces.begin(), pieces.end(), std::string());
}

std::ostream& operator<<(std::ostream& out, const RewriteCase& rewrite) {
  const RotationSettings& settings = rewrite.job.settings;
  rc::show(rewrite.text(), out);
  out << "\nperiod_type ";
  rc::show(settings.period_type, out);
  out << ", period ";
  rc::show(settings.period, out);
  out << ", rot_count " << settings.rot_count << ", email ";
  rc::show(settings.email, out);
  out << ", compress " << settings.compress << ", anonymize " << settings.anonymize << ", system_mode "
      << settings.system_mode << ", vhost_name ";
  rc::show(settings.vhost_name, out);
  out << ", select_targets " << rewrite.job.select_targets << ", target_logs ";
  rc::show(rewrite.job.target_logs, out);
  return out;
}

rc::Gen<RewriteCase> random_cases() {
  return cases_from(random_case);
}

rc::Gen<RewriteCase> long_random_cases() {
  return cases_from(long_random_case);
}

rc::Gen<RewriteCase> well_formed_cases() {
  return cases_from(well_formed_case);
}

} // namespace tavek
