// Sorting the store and searching it.

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "runtime_conf/runtime_conf_store.h"
#include "unit/runtime_conf/fresh_store.h"

namespace tavek {

namespace {

using Entries = std::vector<std::string>;

class RuntimeConfSearch : public test::FreshStore {};

/// A store over entries that are not on the heap, so that their order and the flag can be at odds.
class RuntimeConfFind : public testing::Test {
protected:
  static RuntimeConfEntry entry(std::string& name, std::string& value) { return {name.data(), value.data()}; }

  std::string a = "A", b = "B", c = "C", one = "1", two = "2", three = "3";
};

TEST_F(RuntimeConfSearch, SortsByTheBytesOfTheNames) {
  for (const char* name : {"b", "_", "B", "A1", "A", "A_"}) {
    runtime_conf_set(name, "v", store);
  }
  runtime_conf_sort(store);
  EXPECT_NE(store->sorted, 0);
  EXPECT_EQ(entries(), (Entries{"A=v", "A1=v", "A_=v", "B=v", "_=v", "b=v"}));
}

TEST_F(RuntimeConfSearch, SortsOnlyTheEntriesInUse) {
  define_numbered(3);
  std::swap(store->entries[0], store->entries[2]);
  runtime_conf_sort(store);
  EXPECT_EQ(entries(), (Entries{"N000=0", "N001=1", "N002=2"}));
  EXPECT_TRUE(unused_slots_are_zero());
}

TEST_F(RuntimeConfSearch, IsNotSortedAgainWhileTheFlagIsSet) {
  define_numbered(3);
  runtime_conf_sort(store);
  std::swap(store->entries[0], store->entries[2]);
  runtime_conf_sort(store);
  EXPECT_EQ(entries(), (Entries{"N002=2", "N001=1", "N000=0"}));
}

TEST_F(RuntimeConfSearch, SortsAStoreThatHasNoArrayYet) {
  runtime_conf_sort(store);
  EXPECT_NE(store->sorted, 0);
  EXPECT_EQ(store->count, 0U);
}

TEST_F(RuntimeConfSearch, FindsNothingInAFreshStore) {
  EXPECT_EQ(found("A"), "(none)");
  runtime_conf_reserve(store);
  EXPECT_EQ(found("A"), "(none)");
}

TEST_F(RuntimeConfSearch, FindsEachNameInAnySizeOfSortedStore) {
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
