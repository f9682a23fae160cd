// The reader of the runtime configuration file, compared with a plain model of its syntax. An input is a file.

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "finding.h"
#include "log/log.h"
#include "plain_definitions.h"
#include "runtime_conf/runtime_conf_file.h"

namespace tavek {

namespace {

constexpr int kQuietLevel = 12;

std::vector<std::string> reports;

__attribute__((format(printf, 2, 3))) void record(int level, const char* format, ...) {
  expect(level == kQuietLevel, "a malformed line is reported quietly");
  char* text = nullptr;
  va_list arguments;
  va_start(arguments, format);
  if (vasprintf(&text, format, arguments) == -1) {
    std::abort();
  }
  va_end(arguments);
  reports.emplace_back(text);
  std::free(text);
}

struct FreeStore {
  void operator()(RuntimeConf* store) const { runtime_conf_free(store); }
};
using Store = std::unique_ptr<RuntimeConf, FreeStore>;

// A file in memory, which has a path like any other.
int memory_file(std::string_view content) {
  const int fd = memfd_create("oru.conf", MFD_CLOEXEC);
  if (fd == -1 || write(fd, content.data(), content.size()) != static_cast<ssize_t>(content.size())) {
    std::abort();
  }
  return fd;
}

Store read_definitions(std::string_view content) {
  Store store(static_cast<RuntimeConf*>(std::calloc(1, sizeof(RuntimeConf))));
  const int fd = memory_file(content);
  const std::string path = "/proc/self/fd/" + std::to_string(fd);
  expect(runtime_conf_read_file(path.c_str(), store.get()) == 0, "any file can be read");
  close(fd);
  return store;
}

void check_reports(const PlainDefinitions& expected) {
  expect_same("the number of reports", std::to_string(expected.reports.size()), std::to_string(reports.size()));
  for (std::size_t i = 0; i < reports.size(); ++i) {
    expect_same("a report", expected.reports[i], reports[i]);
  }
}

void check_store(const PlainDefinitions& expected, const RuntimeConf& store) {
  expect_same("the number of definitions", std::to_string(expected.values.size()), std::to_string(store.count));
  const RuntimeConfEntry* entry = store.entries; // Sorted by name, like the map.
  for (const auto& [name, value] : expected.values) {
    expect_same("a name", name, entry->name);
    expect_same("a value", value, entry->value);
    expect(runtime_conf_find(&store, name.c_str()) == entry->value, "a name is found");
    ++entry;
  }
  expect(runtime_conf_find(&store, "NOT IN ANY FILE") == nullptr, "an absent name is not found");
}

} // namespace

} // namespace tavek

// NOLINTNEXTLINE(*-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content(reinterpret_cast<const char*>(data), size);
  tavek::log_state().log_hook = tavek::record;
  tavek::reports.clear();
  const tavek::PlainDefinitions expected = tavek::plain_definitions(content);
  const tavek::Store store = tavek::read_definitions(content);
  tavek::check_reports(expected);
  tavek::check_store(expected, *store);
  return 0;
}
