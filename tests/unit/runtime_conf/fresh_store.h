#pragma once

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "runtime_conf/runtime_conf_store.h"
#include "unit/runtime_conf/recorded_reports.h"

namespace tavek::test {

/// An empty store. The destructor frees it as the loader would. The address sanitizer reports an invalid free.
class FreshStore : public RecordedReports {
protected:
  ~FreshStore() override { runtime_conf_free(store); }

  /// Defines `count` names "N000", "N001" and so on, with the values "0", "1" and so on.
  void define_numbered(int count) {
    for (int i = 0; i < count; ++i) {
      ASSERT_EQ(runtime_conf_set(numbered(i).c_str(), std::to_string(i).c_str(), store), 0);
    }
  }
  static std::string numbered(int i) {
    const std::string digits = std::to_string(1000 + i);
    return "N" + digits.substr(1);
  }

  std::string found(const std::string& name) const {
    const char* value = runtime_conf_find(store, name.c_str());
    return value != nullptr ? value : "(none)";
  }

  /// The entries in use, in order, each as "NAME=value".
  std::vector<std::string> entries() const {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < store->count; ++i) {
      all.push_back(store->entries[i].name + std::string("=") + store->entries[i].value);
    }
    return all;
  }

  bool unused_slots_are_zero() const {
    return std::all_of(store->entries + store->count, store->entries + store->capacity,
                       [](const RuntimeConfEntry& entry) { return entry.name == nullptr && entry.value == nullptr; });
  }

  RuntimeConf* store = static_cast<RuntimeConf*>(calloc(1, sizeof(RuntimeConf)));
};

} // namespace tavek::test
