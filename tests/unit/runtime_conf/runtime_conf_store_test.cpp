#include "runtime_conf/runtime_conf_store.h"

#include <gtest/gtest.h>

#include "unit/runtime_conf/fresh_store.h"

namespace tavek {

namespace {

using test::Reports;
using Entries = std::vector<std::string>;

class RuntimeConfStore : public test::FreshStore {};

TEST_F(RuntimeConfStore, ReservesTwentyZeroedEntriesAtFirst) {
  EXPECT_EQ(runtime_conf_reserve(store), 0);
  EXPECT_EQ(store->capacity, 20U);
  EXPECT_EQ(store->count, 0U);
  EXPECT_NE(store->sorted, 0);
  EXPECT_TRUE(unused_slots_are_zero());
}

TEST_F(RuntimeConfStore, ReservesNothingWhileThereIsRoom) {
  define_numbered(19);
  const RuntimeConfEntry* const before = store->entries;
  EXPECT_EQ(runtime_conf_reserve(store), 0);
  EXPECT_EQ(store->entries, before);
  EXPECT_EQ(store->capacity, 20U);
}

TEST_F(RuntimeConfStore, HoldsTwentyDefinitionsWithoutGrowing) {
  define_numbered(20);
  EXPECT_EQ(store->capacity, 20U);
  EXPECT_EQ(store->count, 20U);
}

TEST_F(RuntimeConfStore, GrowsFromTwentyToFortyEntries) {
  define_numbered(20);
  EXPECT_EQ(runtime_conf_reserve(store), 0);
  EXPECT_EQ(store->capacity, 40U);
  define_numbered(21);
  EXPECT_EQ(store->capacity, 40U);
  EXPECT_EQ(store->count, 21U);
  EXPECT_TRUE(unused_slots_are_zero());
  EXPECT_EQ(found("N000"), "0");
  EXPECT_EQ(found("N020"), "20");
}

TEST_F(RuntimeConfStore, DoublesEachTime) {
  define_numbered(41);
  EXPECT_EQ(store->capacity, 80U);
  define_numbered(161);
  EXPECT_EQ(store->capacity, 320U);
  EXPECT_TRUE(unused_slots_are_zero());
}

TEST_F(RuntimeConfStore, GrowsByTwentyWhenDoublingGivesLess) {
  store->entries = static_cast<RuntimeConfEntry*>(calloc(3, sizeof(RuntimeConfEntry)));
  store->capacity = 3;
  define_numbered(4);
  EXPECT_EQ(store->capacity, 23U);
  EXPECT_TRUE(unused_slots_are_zero());
}

TEST_F(RuntimeConfStore, CopiesNameAndValue) {
  std::string name = "NAME";
  std::string value = "value";
  EXPECT_EQ(runtime_conf_set(name.c_str(), value.c_str(), store), 0);
  name = "OTHER";
  value = "other";
  EXPECT_EQ(entries(), Entries{"NAME=value"});
}

TEST_F(RuntimeConfStore, KeepsDefinitionsInTheirOrderUntilSorted) {
  runtime_conf_set("C", "1", store);
  runtime_conf_set("A", "2", store);
  runtime_conf_set("B", "3", store);
  EXPECT_EQ(store->sorted, 0);
  EXPECT_EQ(entries(), (Entries{"C=1", "A=2", "B=3"}));
}

TEST_F(RuntimeConfStore, GivesAKnownNameTheNewValueInItsPlace) {
  runtime_conf_set("B", "1", store);
  runtime_conf_set("A", "2", store);
  runtime_conf_set("B", "3", store);
  EXPECT_EQ(entries(), (Entries{"B=3", "A=2"}));
}

TEST_F(RuntimeConfStore, StaysSortedWhenAKnownNameIsDefinedAgain) {
  runtime_conf_set("B", "1", store);
  runtime_conf_set("A", "2", store);
  runtime_conf_sort(store);
  runtime_conf_set("B", "3", store);
  EXPECT_NE(store->sorted, 0);
  EXPECT_EQ(entries(), (Entries{"A=2", "B=3"}));
}

TEST_F(RuntimeConfStore, IsNoLongerSortedAfterANewName) {
  runtime_conf_set("B", "1", store);
  runtime_conf_sort(store);
  runtime_conf_set("A", "2", store);
  EXPECT_EQ(store->sorted, 0);
  EXPECT_EQ(found("A"), "2");
}

TEST_F(RuntimeConfStore, TellsNamesApartByCaseAndLength) {
  runtime_conf_set("NAME", "1", store);
  runtime_conf_set("name", "2", store);
  runtime_conf_set("NAME_D", "3", store);
  EXPECT_EQ(entries(), (Entries{"NAME=1", "name=2", "NAME_D=3"}));
}

TEST_F(RuntimeConfStore, ReportsNothingWhileAllGoesWell) {
  define_numbered(50);
  runtime_conf_sort(store);
  EXPECT_EQ(found("absent"), "(none)");
  EXPECT_EQ(take_reports(), Reports{});
}

TEST(RuntimeConfFree, AcceptsNull) {
  runtime_conf_free(nullptr);
}

} // namespace

} // namespace tavek
