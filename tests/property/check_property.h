#pragma once

// Runs a property as a test of GoogleTest's.

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <sstream>
#include <string>

namespace tavek {

/// How many cases a property is tried on: the environment variable PROPERTY_RUNS, 100000 unless it is set.
inline int property_runs() {
  const char* runs = std::getenv("PROPERTY_RUNS");
  return runs != nullptr ? std::stoi(runs) : 100000;
}

/// Tries `property` on one in `share` of property_runs() cases. RC_PARAMS="seed=N" repeats a run; a failing
/// run prints its N.
template <typename Property>
void check_property(Property&& property, int share = 1) {
  rc::detail::TestParams params = rc::detail::configuration().testParams;
  params.maxSuccess = std::max(property_runs() / share, 1);
  const auto result = rc::detail::checkTestable(std::forward<Property>(property), rc::detail::TestMetadata(), params);
  std::ostringstream message;
  rc::detail::printResultMessage(result, message);
  EXPECT_TRUE(result.template is<rc::detail::SuccessResult>()) << message.str() << "\nSeed " << params.seed;
}

} // namespace tavek
