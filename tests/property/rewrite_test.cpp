// Properties of the rewrite on random input.

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <sstream>
#include <string>

#include "plain_rewrite.h"
#include "production_rewrite.h"
#include "random_case.h"

namespace tavek {
namespace {

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

} // namespace
} // namespace tavek
