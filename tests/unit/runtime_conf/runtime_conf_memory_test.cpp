// Any allocation may fail: the store must then keep its definitions, and no memory may leak. The address sanitizer
// reports leaks.

#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>

#include "runtime_conf/runtime_conf.h"
#include "runtime_conf/runtime_conf_file.h"
#include "support/call_fault.h"
#include "support/temporary_directory.h"
#include "unit/runtime_conf/fresh_store.h"

namespace tavek {

namespace {

using test::Reports;

Reports cannot_grow() {
  return {{12, "Unable to read configuration: Cannot allocate memory"}};
}
Reports cannot_copy() {
  return {{12, "Unable to form configuration: Cannot allocate memory"}};
}
Reports no_store() {
  return {{3, "Not enough memory to allocate Tavek runtime configuration structure"}};
}

class RuntimeConfMemory : public test::FreshStore {
protected:
  /// Expects that a call has failed with ENOMEM and with these reports.
  void expect_failure(int result, const Reports& reports) {
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(take_reports(), reports);
    errno = 0;
  }

  /// Expects that a store with one entry and an impossible capacity is left unchanged.
  void expect_too_large(std::size_t capacity, std::size_t count) {
    RuntimeConfEntry only{};
    RuntimeConf huge{&only, capacity, count, 1};
    const CallFault counted(Call::allocation, ENOMEM);
    expect_failure(runtime_conf_reserve(&huge), cannot_grow());
    EXPECT_FALSE(counted.happened());
    EXPECT_EQ(huge.entries, &only);
    EXPECT_EQ(huge.capacity, capacity);
    EXPECT_EQ(huge.count, count);
  }
};

TEST_F(RuntimeConfMemory, ReportsNothingIfTheFirstArrayCannotBeAllocated) {
  store->capacity = 7;
  const CallFault first(Call::allocation, ENOMEM);
  expect_failure(runtime_conf_reserve(store), {});
  EXPECT_EQ(store->entries, nullptr);
  EXPECT_EQ(store->capacity, 0U);
}

TEST_F(RuntimeConfMemory, KeepsTheArrayIfItCannotGrow) {
  define_numbered(20);
  const RuntimeConfEntry* const before = store->entries;
  {
    const CallFault first(Call::allocation, ENOMEM);
    expect_failure(runtime_conf_reserve(store), cannot_grow());
  }
  EXPECT_EQ(store->entries, before);
  EXPECT_EQ(store->capacity, 20U);
  EXPECT_EQ(store->count, 20U);
  EXPECT_EQ(found("N019"), "19");
}

TEST_F(RuntimeConfMemory, RejectsACapacityThatOverflows) {
  constexpr std::size_t half = SIZE_MAX / 2 + 1;
  constexpr std::size_t fits = SIZE_MAX / sizeof(RuntimeConfEntry); // As many entries as a size can count.
  expect_too_large(half, half);                                     // Twice the capacity overflows.
  expect_too_large(1, SIZE_MAX - 19);                               // Adding twenty overflows.
  expect_too_large(fits / 2 + 1, fits / 2 + 1);                     // The size in bytes overflows.
}

TEST_F(RuntimeConfMemory, DefinesNothingIfTheArrayCannotBeAllocated) {
  const CallFault first(Call::allocation, ENOMEM);
  expect_failure(runtime_conf_set("A", "1", store), {});
  EXPECT_EQ(store->count, 0U);
}

TEST_F(RuntimeConfMemory, DefinesNothingIfEitherCopyCannotBeAllocated) {
  define_numbered(1);
  for (const int nth : {1, 2}) {
    const CallFault copy(Call::allocation, ENOMEM, nth);
    expect_failure(runtime_conf_set("A", "1", store), cannot_copy());
  }
  EXPECT_EQ(entries(), std::vector<std::string>{"N000=0"});
}

TEST_F(RuntimeConfMemory, KeepsTheOldValueIfEitherCopyCannotBeAllocated) {
  runtime_conf_set("A", "old", store);
  for (const int nth : {1, 2}) {
    const CallFault copy(Call::allocation, ENOMEM, nth);
    expect_failure(runtime_conf_set("A", "new", store), cannot_copy());
  }
  EXPECT_EQ(found("A"), "old");
}

/// The same tests for definitions that are read from a file.
class RuntimeConfFileMemory : public RuntimeConfMemory {
protected:
  ~RuntimeConfFileMemory() override {
    runtime_conf_reset();
    runtime_conf_use_file(nullptr);
  }
  TemporaryDirectory folder;
};

TEST_F(RuntimeConfFileMemory, OpensNoFileIfTheArrayCannotBeAllocated) {
  const CallFault first(Call::allocation, ENOMEM);
  expect_failure(runtime_conf_read_file((folder / "absent.conf").c_str(), store), {});
}

TEST_F(RuntimeConfFileMemory, StopsReadingAtALineThatCannotBeStored) {
  const std::string path = folder.write("oru.conf", "A 1\nB 2\nC 3\n");
  const CallFault value_of_b(Call::allocation, ENOMEM, 5); // Calls 1 to 4: the array, both texts of A, B's name.
  expect_failure(runtime_conf_read_file(path.c_str(), store), cannot_copy());
  EXPECT_EQ(entries(), std::vector<std::string>{"A=1"});
}

TEST_F(RuntimeConfFileMemory, ReportsAStoreThatCannotBeAllocated) {
  const std::string path = folder.write("oru.conf", "HTTPD_VHOSTS_D /srv/vhosts\n");
  runtime_conf_use_file(path.c_str());
  const CallFault first(Call::allocation, ENOMEM);
  expect_failure(runtime_conf_load(), no_store());
}

// If an allocation fails, the load fails and the next load succeeds.
TEST_F(RuntimeConfFileMemory, LoadsTheWholeFileOrNothing) {
  std::string content;
  for (int i = 0; i < 25; ++i) {
    content += numbered(i) + " " + std::to_string(i) + "\n";
  }
  const std::string path = folder.write("oru.conf", content);
  runtime_conf_use_file(path.c_str());
  bool struck = true;
  for (int nth = 1; struck; ++nth) {
    {
      const CallFault fault(Call::allocation, ENOMEM, nth);
      const int result = runtime_conf_load();
      const int error = errno;
      struck = fault.happened();
      EXPECT_TRUE(struck ? result == -1 && error == ENOMEM : result == 0) << nth;
    }
    EXPECT_STREQ(runtime_conf_lookup("N024"), "24") << nth;
    runtime_conf_reset();
  }
}

TEST_F(RuntimeConfFileMemory, ReturnsDefaultsAfterAFailedLoad) {
  const std::string path = folder.write("oru.conf", "HTTPD_VHOSTS_D /srv/vhosts\n");
  runtime_conf_use_file(path.c_str());
  {
    const CallFault first(Call::allocation, ENOMEM);
    EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/var/www/vhosts");
  }
  EXPECT_STREQ(runtime_conf_get(HTTPD_VHOSTS_D), "/srv/vhosts");
}

} // namespace

} // namespace tavek
