// Compares the program's rewrite with the plain rules on every short input over small alphabets.
//
//   exhaustive_rewrite [--full]      --full uses longer inputs and takes minutes
//
// An input is a prefix followed by a sequence of tokens. The check stops at the first difference, prints it and exits
// with 1. Shorter sequences come first, so no shorter sequence over the same alphabet gives a difference. Other
// arguments are ignored.

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <rapidcheck.h>
#include <string>
#include <string_view>
#include <vector>

#include "plain_rewrite.h"
#include "production_rewrite.h"
#include "rewrite_case.h"

namespace tavek {
namespace {

using namespace std::string_view_literals;
using Tokens = std::vector<std::string_view>;

struct Alphabet {
  std::string_view name;
  std::string_view prefix;
  Tokens tokens;
  int length;      // Tokens in the longest input.
  int full_length; // The same with --full.
};

constexpr std::string_view kStanza = "/x {\n";

std::vector<Alphabet> alphabets() {
  // clang-format off
  std::vector<Alphabet> all = {
      // The bytes that start or end comments, stanza heads and stanzas. Each occurs at the start of the input and after
      // a newline, a carriage return, a NUL and a brace.
      {"bytes outside a stanza", "", {"#", "/", "{", "{\n", "}", "\n", "\r", "\0"sv}, 4, 6},
      // The bytes that end the first path of a head. In system mode that path decides whether the stanza gets the
      // anonymizer; the closing brace shows the decision.
      {"first path of a head", "/x", {" ", "\t", "\v", "\r", "\0"sv, "\n", "/x", "{", "{\n", "}"}, 3, 5},
      // Whole lines, to test the counters: directives that are repeated or missing in one stanza or in several,
      // scripts, stray braces, and a second pass over a stanza that never closes.
      {"lines of stanzas", kStanza,
       {"\tdaily\n", "size 5\n", "rotate 1\n", "compress\n", "missingok\n", "copytruncate\n", "mail a\n", "maillast\n",
        "postrotate\n", "endscript\n", "\t/x/anonymize_ip a\n", "/y {\n", "}\n", "}"}, 3, 5},
      // Words that share their first or last letters with a managed word, at the start of a line and elsewhere.
      {"parts of words", kStanza,
       {"no", "mail", "first", "last", "rotate", "post", "compress", "copy", "truncate", "dai", "ly", " ", "\n"}, 3, 5},
      // The path and the arguments of the anonymizer, and the end of a script. Without an "endscript" line the second
      // pass starts inside the script.
      {"lines of a script", "/x {\npostrotate\n",
       {"/", "x", "/anonymize_ip", "anonymize_ip", "endscript", " ", "\t", "\n", "\r", "\0"sv, "}"}, 3, 5},
  };
  // clang-format on
  // Each managed word with the bytes that may precede and follow it on its line. If an input has no newline after the
  // word, its last line is unfinished.
  for (const auto* word : {"size", "daily", "weekly", "monthly", "rotate", "compress", "missingok", "copytruncate",
                           "mail", "mailfirst", "maillast", "postrotate"}) {
    all.push_back({word, kStanza, {word, "no", " ", "\t", "\n", "\r", "\0"sv, "}", "x"}, 3, 5});
  }
  return all;
}

// Settings that together exercise every branch of the rules.
std::vector<RewriteJob> jobs() {
  const RewriteJob keep_everything;
  RewriteJob set_everything;
  set_everything.settings = {"by_size", "10M", 5, "a@b.c", true, Switch::on, false, "example.com"};
  RewriteJob remove_anonymizer;
  remove_anonymizer.settings = {"by_time", "daily", 0, "", false, Switch::off, false, "example.com"};
  RewriteJob system_period_without_type;
  system_period_without_type.settings.system_mode = true;
  system_period_without_type.settings.period = "weekly";
  RewriteJob system_with_targets;
  system_with_targets.settings = {"by_time", "weekly", 3, "a@b.c", true, Switch::on, true, ""};
  system_with_targets.select_targets = true;
  system_with_targets.target_logs = {"/x", "/x/x"};
  RewriteJob unknown_period_type;
  unknown_period_type.settings.period_type = "by_moon";
  return {keep_everything,     set_everything,     remove_anonymizer, system_period_without_type,
          system_with_targets, unknown_period_type};
}

class ExhaustiveCheck {
public:
  /// Compares every input of up to `longest` tokens. Returns whether all results are the same.
  bool run(const Alphabet& alphabet, int longest) {
    for (int length = 0; length <= longest; ++length) {
      input_ = alphabet.prefix;
      if (!extend(alphabet.tokens, length)) {
        return false;
      }
    }
    return true;
  }

  long comparisons() const { return comparisons_; }

private:
  bool extend(const Tokens& tokens, int missing) {
    if (missing == 0) {
      return std::all_of(jobs_.begin(), jobs_.end(), [this](const RewriteJob& job) { return compare(job); });
    }
    const auto size = input_.size();
    return std::all_of(tokens.begin(), tokens.end(), [&](std::string_view token) {
      input_.resize(size);
      input_.append(token);
      return extend(tokens, missing - 1);
    });
  }

  bool compare(const RewriteJob& job) {
    ++comparisons_;
    const auto expected = plain_rewrite(input_, job);
    const auto actual = production_rewrite(input_, job);
    if (expected != actual) {
      std::cout << "input    " << RewriteCase{{input_}, job} << "\nexpected ";
      rc::show(expected, std::cout);
      std::cout << "\nactual   ";
      rc::show(actual, std::cout);
      std::cout << "\n";
    }
    return expected == actual;
  }

  const std::vector<RewriteJob> jobs_ = jobs();
  std::string input_;
  long comparisons_ = 0;
};

// Returns whether all results are the same.
bool check_all(bool full) {
  ExhaustiveCheck check;
  for (const auto& alphabet : alphabets()) {
    const long before = check.comparisons();
    if (!check.run(alphabet, full ? alphabet.full_length : alphabet.length)) {
      return false;
    }
    std::cout << std::setw(10) << check.comparisons() - before << " comparisons of " << alphabet.name << std::endl;
  }
  std::cout << std::setw(10) << check.comparisons() << " comparisons\n";
  return true;
}

} // namespace
} // namespace tavek

int main(int argc, char** argv) {
  return tavek::check_all(std::find(argv, argv + argc, std::string_view("--full")) != argv + argc) ? 0 : 1;
}
