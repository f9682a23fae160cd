#include "runtime_conf/runtime_conf_store.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

#include "unit/runtime_conf/counted_comparisons.h"
#include "unit/runtime_conf/fresh_store.h"

namespace tavek {

namespace {

using test::Reports;
using Entries = std::vector<std::string>;

class RuntimeConfStore : public test::FreshStore {
protected:
  bool unused_slots_are_zero() const {
    return std::all_of(store->entries + store->count, store->entries + store->capacity,
                       [](const RuntimeConfEntry& entry) { return entry.name == nullptr && entry.value == nullptr; });
  }
};

/// A store over entries that are not on the heap, so that their order and the flag can be at odds.
class RuntimeConfFind : public testing::Test {
protected:
  static RuntimeConfEntry entry(std::string& name, std::string& value) { return {name.data(), value.data()}; }

  std::string a = "A", b = "B", c = "C", one = "1", two = "2", three = "3";
};

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

TEST_F(RuntimeConfStore, SortsByTheBytesOfTheNames) {
  for (const char* name : {"b", "_", "B", "A1", "A", "A_"}) {
    runtime_conf_set(name, "v", store);
  }
  runtime_conf_sort(store);
  EXPECT_NE(store->sorted, 0);
  EXPECT_EQ(entries(), (Entries{"A=v", "A1=v", "A_=v", "B=v", "_=v", "b=v"}));
}

TEST_F(RuntimeConfStore, SortsOnlyTheEntriesInUse) {
  define_numbered(3);
  std::swap(store->entries[0], store->entries[2]);
  runtime_conf_sort(store);
  EXPECT_EQ(entries(), (Entries{"N000=0", "N001=1", "N002=2"}));
  EXPECT_TRUE(unused_slots_are_zero());
}

TEST_F(RuntimeConfStore, IsNotSortedAgainWhileTheFlagIsSet) {
  define_numbered(10);
  runtime_conf_sort(store);
  EXPECT_EQ(test::comparisons_of([this] { runtime_conf_sort(store); }), 0);
}

TEST_F(RuntimeConfStore, SortsAStoreThatHasNoArrayYet) {
  runtime_conf_sort(store);
  EXPECT_NE(store->sorted, 0);
  EXPECT_EQ(store->count, 0U);
}

TEST_F(RuntimeConfStore, ReportsNothingWhileAllGoesWell) {
  define_numbered(50);
  runtime_conf_sort(store);
  EXPECT_EQ(found("absent"), "(none)");
  EXPECT_EQ(take_reports(), Reports{});
}

TEST_F(RuntimeConfStore, FindsNothingInAFreshStore) {
  EXPECT_EQ(found("A"), "(none)");
  runtime_conf_reserve(store);
  EXPECT_EQ(found("A"), "(none)");
}

TEST_F(RuntimeConfStore, FindsEachNameInAnySizeOfSortedStore) {
  for (int size = 1; size <= 45; ++size) {
    runtime_conf_set(numbered(size).c_str(), std::to_string(size).c_str(), store);
    runtime_conf_sort(store);
    for (int i = 1; i <= size; ++i) {
      EXPECT_EQ(found(numbered(i)), std::to_string(i)) << "of " << size;
    }
    EXPECT_EQ(found("N"), "(none)");
    EXPECT_EQ(found(numbered(0)), "(none)");
    EXPECT_EQ(found(numbered(size + 1)), "(none)");
  }
}

// 1000 names: a halving search needs ten comparisons at most.
TEST_F(RuntimeConfStore, HalvesASortedStoreWhenItSearches) {
  define_numbered(1000);
  runtime_conf_sort(store);
  EXPECT_LE(test::comparisons_of([this] { EXPECT_EQ(found("N999"), "999"); }), 10);
}

TEST(RuntimeConfFree, AcceptsNull) {
  runtime_conf_free(nullptr);
}

// "A" is not on the halving way through B, so only a search from end to end finds it.
TEST_F(RuntimeConfFind, HalvesWhenTheFlagIsSetAndWalksWhenItIsNot) {
  std::array entries{entry(c, three), entry(b, two), entry(a, one)};
  RuntimeConf store{entries.data(), entries.size(), entries.size(), 1};
  EXPECT_EQ(runtime_conf_find(&store, "A"), nullptr);
  EXPECT_EQ(runtime_conf_find(&store, "B"), two.data());
  store.sorted = 0;
  EXPECT_EQ(runtime_conf_find(&store, "A"), one.data());
}

TEST_F(RuntimeConfFind, TakesTheFirstMatchWhenItWalks) {
  std::array entries{entry(b, two), entry(a, one), entry(a, three)};
  const RuntimeConf store{entries.data(), entries.size(), entries.size(), 0};
  EXPECT_EQ(runtime_conf_find(&store, "A"), one.data());
}

TEST_F(RuntimeConfFind, LooksOnlyAtEntriesInUse) {
  std::array entries{entry(a, one), entry(b, two), entry(c, three)};
  RuntimeConf store{entries.data(), entries.size(), 2, 0};
  EXPECT_EQ(runtime_conf_find(&store, "C"), nullptr);
  store.sorted = 1;
  EXPECT_EQ(runtime_conf_find(&store, "C"), nullptr);
}

} // namespace

} // namespace tavek
