#include "runtime_conf/runtime_conf_store.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

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

TEST_F(RuntimeConfStore, GrowsOnlyWhenItIsFull) {
  define_numbered(20);
  EXPECT_EQ(store->capacity, 20U);
  EXPECT_EQ(runtime_conf_reserve(store), 0);
  EXPECT_EQ(store->capacity, 40U);
  EXPECT_EQ(runtime_conf_reserve(store), 0);
  EXPECT_EQ(store->capacity, 40U);
  EXPECT_EQ(store->count, 20U);
  EXPECT_TRUE(unused_slots_are_zero());
}

TEST_F(RuntimeConfStore, DoublesItsCapacity) {
  define_numbered(161);
  EXPECT_EQ(store->capacity, 320U);
  EXPECT_EQ(store->count, 161U);
  EXPECT_TRUE(unused_slots_are_zero());
  EXPECT_EQ(found("N000"), "0");
  EXPECT_EQ(found("N160"), "160");
  EXPECT_EQ(take_reports(), Reports{});
}

TEST_F(RuntimeConfStore, GrowsByTwentyIfDoublingAddsLess) {
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

TEST_F(RuntimeConfStore, ReplacesTheValueOfAKnownNameInPlace) {
  runtime_conf_set("B", "1", store);
  runtime_conf_set("A", "2", store);
  runtime_conf_set("B", "3", store);
  EXPECT_EQ(entries(), (Entries{"B=3", "A=2"}));
}

TEST_F(RuntimeConfStore, ReplacesAndAddsAfterSorting) {
  define_numbered(30);
  runtime_conf_sort(store);
  EXPECT_EQ(runtime_conf_set("N007", "new", store), 0);
  EXPECT_EQ(runtime_conf_set("A", "added", store), 0);
  EXPECT_EQ(runtime_conf_set("N029", "last", store), 0);
  runtime_conf_sort(store);
  EXPECT_EQ(store->count, 31U);
  EXPECT_EQ(found("N007"), "new");
  EXPECT_EQ(found("A"), "added");
  EXPECT_EQ(found("N029"), "last");
}

TEST_F(RuntimeConfStore, ComparesWholeNamesCaseSensitively) {
  runtime_conf_set("NAME", "1", store);
  runtime_conf_set("name", "2", store);
  runtime_conf_set("NAME_D", "3", store);
  EXPECT_EQ(entries(), (Entries{"NAME=1", "name=2", "NAME_D=3"}));
}

TEST_F(RuntimeConfStore, RemainsSortedIfAKnownNameIsDefinedAgain) {
  runtime_conf_set("B", "1", store);
  runtime_conf_set("A", "2", store);
  runtime_conf_sort(store);
  runtime_conf_set("B", "3", store);
  EXPECT_NE(store->sorted, 0);
  EXPECT_EQ(entries(), (Entries{"A=2", "B=3"}));
}

TEST_F(RuntimeConfStore, IsNotSortedAfterANewName) {
  runtime_conf_set("B", "1", store);
  runtime_conf_sort(store);
  runtime_conf_set("A", "2", store);
  EXPECT_EQ(store->sorted, 0);
  EXPECT_EQ(found("A"), "2");
}

TEST_F(RuntimeConfStore, SortsByTheBytesOfTheNames) {
  for (const char* name : {"b", "_", "B", "A1", "A", "A_"}) {
    runtime_conf_set(name, "v", store);
  }
  runtime_conf_sort(store);
  EXPECT_NE(store->sorted, 0);
  EXPECT_EQ(entries(), (Entries{"A=v", "A1=v", "A_=v", "B=v", "_=v", "b=v"}));
  EXPECT_TRUE(unused_slots_are_zero());
}

TEST_F(RuntimeConfStore, IsNotSortedAgainIfItIsMarkedAsSorted) {
  define_numbered(3);
  runtime_conf_sort(store);
  std::swap(store->entries[0], store->entries[2]);
  runtime_conf_sort(store);
  EXPECT_EQ(entries(), (Entries{"N002=2", "N001=1", "N000=0"}));
}

TEST_F(RuntimeConfStore, CanBeSortedBeforeItHasAnArray) {
  runtime_conf_sort(store);
  EXPECT_NE(store->sorted, 0);
  EXPECT_EQ(store->count, 0U);
}

TEST_F(RuntimeConfStore, FindsNothingWithoutDefinitions) {
  EXPECT_EQ(found("A"), "(none)");
  runtime_conf_reserve(store);
  EXPECT_EQ(found("A"), "(none)");
}

TEST_F(RuntimeConfStore, FindsEveryNameInASortedStoreOfAnySize) {
  for (int size = 1; size <= 45; ++size) {
    runtime_conf_set(numbered(size).c_str(), std::to_string(size).c_str(), store);
    runtime_conf_sort(store);
    for (int i = 1; i <= size; ++i) {
      EXPECT_EQ(found(numbered(i)), std::to_string(i)) << "of " << size;
    }
    EXPECT_EQ(found(numbered(0)), "(none)");
    EXPECT_EQ(found(numbered(size + 1)), "(none)");
  }
}

// Searches an array of entries that is not on the heap. The store may be marked as sorted although its entries are not.
class RuntimeConfFind : public testing::Test {
protected:
  static RuntimeConfEntry entry(std::string& name, std::string& value) { return {name.data(), value.data()}; }

  std::string a = "A", b = "B", c = "C", one = "1", two = "2", three = "3";
};

// A binary search for A starts at B and continues in the wrong half.
TEST_F(RuntimeConfFind, SearchesLinearlyUnlessTheStoreIsMarkedAsSorted) {
  std::array entries{entry(c, three), entry(b, two), entry(a, one)};
  RuntimeConf store{entries.data(), entries.size(), entries.size(), 1};
  EXPECT_EQ(runtime_conf_find(&store, "A"), nullptr);
  EXPECT_EQ(runtime_conf_find(&store, "B"), two.data());
  store.sorted = 0;
  EXPECT_EQ(runtime_conf_find(&store, "A"), one.data());
}

TEST_F(RuntimeConfFind, SearchesOnlyEntriesInUse) {
  std::array entries{entry(a, one), entry(b, two), entry(c, three)};
  RuntimeConf store{entries.data(), entries.size(), 2, 0};
  EXPECT_EQ(runtime_conf_find(&store, "C"), nullptr);
  store.sorted = 1;
  EXPECT_EQ(runtime_conf_find(&store, "C"), nullptr);
}

TEST(RuntimeConfFree, AcceptsNull) {
  runtime_conf_free(nullptr);
}

} // namespace

} // namespace tavek
