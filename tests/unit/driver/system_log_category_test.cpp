#include "driver/system_log_category.h"

#include <gtest/gtest.h>
#include <string>

namespace tavek {

namespace {

TEST(SystemLogCategory, SelectsStanzasOnlyForTheLogsOfThePanel) {
  for (const SystemLogCategory& category : system_log_categories()) {
    EXPECT_EQ(category.select_stanzas, category.option == std::string("tavek-logs")) << category.option;
  }
}

} // namespace

} // namespace tavek
