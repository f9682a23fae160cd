// Properties of the rewrite on random input and on every short input over small alphabets.

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "plain_pattern.h"
#include "random_case.h"
#include "rewrites.h"

namespace tavek {
namespace {

using namespace std::string_view_literals;
using Tokens = std::vector<std::string_view>;

// Tries a property on PROPERTY_RUNS / `share` cases. The environment variable PROPERTY_RUNS is 100000 by default. A
// failing run prints its seed N; RC_PARAMS="seed=N" repeats it.
template <typename Property>
void check_property(Property&& property, int share = 1) {
  const char* runs = std::getenv("PROPERTY_RUNS");
  rc::detail::TestParams params = rc::detail::configuration().testParams;
  params.maxSuccess = std::max((runs != nullptr ? std::stoi(runs) : 100000) / share, 1);
  const auto result = rc::detail::checkTestable(std::forward<Property>(property), rc::detail::TestMetadata(), params);
  std::ostringstream message;
  rc::detail::printResultMessage(result, message);
  EXPECT_TRUE(result.template is<rc::detail::SuccessResult>()) << message.str() << "\nSeed " << params.seed;
}

TEST(Rewrite, GivesTheSameResultAsThePlainRules) {
  check_property([] {
    const auto rewrite = *random_cases();
    RC_ASSERT(production_rewrite(rewrite.text(), rewrite.job) == plain_rewrite(rewrite.text(), rewrite.job));
  });
}

TEST(Rewrite, GivesTheSameResultAsThePlainRulesForLongTokens) {
  check_property(
      [] {
        const auto rewrite = *long_random_cases();
        RC_ASSERT(production_rewrite(rewrite.text(), rewrite.job) == plain_rewrite(rewrite.text(), rewrite.job));
      },
      2000);
}

TEST(Rewrite, ChangesNothingInItsOwnOutputForAWellFormedFile) {
  check_property(
      [] {
        const auto rewrite = *well_formed_cases();
        const auto first = production_rewrite(rewrite.text(), rewrite.job);
        RC_ASSERT(production_rewrite(first, rewrite.job) == first);
      },
      5);
}

struct Alphabet {
  std::string prefix;
  Tokens tokens;
  int length = 3; // Tokens in the longest input.
};

std::vector<Alphabet> alphabets() {
  // clang-format off
  std::vector<Alphabet> all = {
      // The bytes that start or end comments, stanza heads and stanzas.
      {"", {"#", "/", "{", "{\n", "}", "\n", "\r", "\0"sv}, 4},
      // The bytes that end the first path of a head, which decides in system mode whether the stanza gets the anonymizer.
      {"/x", {" ", "\t", "\v", "\r", "\0"sv, "\n", "/x", "{", "{\n", "}"}},
      // Whole lines, to test the counters: directives that are repeated or missing, stray braces, unclosed stanzas.
      {"/x {\n",
       {"\tdaily\n", "size 5\n", "rotate 1\n", "compress\n", "missingok\n", "copytruncate\n", "mail a\n", "maillast\n",
        "postrotate\n", "endscript\n", "\t/x/anonymize_ip a\n", "/y {\n", "}\n", "}"}},
      // Words that share their first or last letters with a managed word.
      {"/x {\n",
       {"no", "mail", "first", "last", "rotate", "post", "compress", "copy", "truncate", "dai", "ly", " ", "\n"}},
      // The path and the arguments of the anonymizer, and the end of a script.
      {"/x {\npostrotate\n",
       {"/", "x", "/anonymize_ip", "anonymize_ip", "endscript", " ", "\t", "\n", "\r", "\0"sv, "}"}},
  };
  // clang-format on
  // Each managed word with the bytes that may precede and follow it on its line.
  for (const auto word : plain_pattern::kManagedWords) {
    all.push_back({"/x {\n", {word, "no", " ", "\t", "\n", "\r", "\0"sv, "}", "x"}});
  }
  return all;
}

// Settings that together exercise every branch of the rules.
std::vector<RewriteJob> jobs() {
  std::vector<RewriteJob> all(6); // The first keeps everything.
  all[1].settings = {"by_size", "10M", 5, "a@b.c", true, Switch::on, false, "example.com"};
  all[2].settings = {"by_time", "daily", 0, "", false, Switch::off, false, "example.com"};
  all[3].settings.system_mode = true;
  all[3].settings.period = "weekly";
  all[4].settings = {"by_time", "weekly", 3, "a@b.c", true, Switch::on, true, ""};
  all[4].select_targets = true;
  all[4].target_logs = {"/x", "/x/x"};
  all[5].settings.period_type = "by_moon";
  return all;
}

// Compares the rewrites of all inputs that continue `text` with exactly `missing` tokens, up to the first difference.
void compare_all(const std::string& text, const Tokens& tokens, int missing, const std::vector<RewriteJob>& jobs) {
  for (std::size_t i = 0; missing > 0 && i < tokens.size() && !testing::Test::HasFailure(); ++i) {
    compare_all(text + std::string(tokens[i]), tokens, missing - 1, jobs);
  }
  for (std::size_t i = 0; missing == 0 && i < jobs.size(); ++i) {
    EXPECT_EQ(production_rewrite(text, jobs[i]), plain_rewrite(text, jobs[i])) << RewriteCase{{text}, jobs[i]};
  }
}

TEST(Rewrite, GivesTheSameResultAsThePlainRulesForEveryShortInput) {
  for (const Alphabet& alphabet : alphabets()) {
    for (int length = 0; length <= alphabet.length; ++length) {
      compare_all(alphabet.prefix, alphabet.tokens, length, jobs());
    }
  }
}

} // namespace
} // namespace tavek
