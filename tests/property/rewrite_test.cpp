// What holds for the rewrite of any text whatever.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "check_property.h"
#include "io_trouble.h"
#include "plain_rewrite.h"
#include "production_rewrite.h"
#include "rewrite_case.h"
#include "troubled_case.h"
#include "unmanaged_text.h"
#include "well_formed_case.h"

namespace tavek {
namespace {

TEST(Rewrite, EqualsThePlainRendering) {
  check_property([] {
    const auto rewrite = *rewrite_cases(troubled_case);
    RC_ASSERT(rewrite_in_memory(rewrite.text(), rewrite.job) == plain_rewrite(rewrite.text(), rewrite.job));
  });
}

TEST(Rewrite, EqualsThePlainRenderingOfLongTokens) {
  check_property(
      [] {
        const auto rewrite = *rewrite_cases(long_troubled_case);
        RC_ASSERT(rewrite_in_memory(rewrite.text(), rewrite.job) == plain_rewrite(rewrite.text(), rewrite.job));
      },
      2000);
}

TEST(Rewrite, EndsWithinTwoPassesOnAnyBytes) {
  check_property(
      [](const std::string& bytes) {
        const auto rewrite = *rewrite_cases(troubled_case);
        RC_ASSERT(rewrite_in_memory(bytes, rewrite.job).passes <= 2);
        RC_ASSERT(rewrite_in_memory("/x {\n" + bytes + rewrite.text(), rewrite.job).passes <= 2);
      },
      10);
}

TEST(Rewrite, KeepsWhatIsOutsideManagedLinesWholeAndInOrder) {
  check_property(
      [] {
        const auto rewrite = *rewrite_cases(troubled_case);
        const auto result = rewrite_in_memory(rewrite.text(), rewrite.job);
        RC_PRE(result.error.empty());
        RC_ASSERT(holds_in_order(result.text, unmanaged_text(rewrite.text())));
      },
      5);
}

TEST(Rewrite, OfItsOwnResultChangesNothingInAWellFormedFile) {
  check_property(
      [] {
        const auto rewrite = *rewrite_cases(well_formed_case);
        const auto first = rewrite_in_memory(rewrite.text(), rewrite.job);
        const auto second = rewrite_in_memory(first.text, rewrite.job);
        RC_ASSERT(first.error + second.error == "");
        RC_ASSERT(second.text == first.text);
      },
      5);
}

TEST(Rewrite, DoesNotDependOnHowTheFileIsReadAndWritten) {
  check_property(
      [](std::uint64_t seed) {
        const auto rewrite = *rewrite_cases(long_troubled_case);
        const auto expected = rewrite_in_memory(rewrite.text(), rewrite.job);
        const IoTrouble trouble(seed);
        const auto result = rewrite_on_disk(rewrite.text(), rewrite.job);
        RC_ASSERT(trouble.reads() > 0);
        RC_ASSERT(result.text == expected.text);
        RC_ASSERT(result.error == expected.error);
      },
      1000);
}

} // namespace
} // namespace tavek
