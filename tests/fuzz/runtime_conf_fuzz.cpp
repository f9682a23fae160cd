// Compares the reader of the runtime configuration file with a plain model of its syntax. An input is a file.

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

#include "finding.h"
#include "log/log.h"
#include "runtime_conf/runtime_conf_file.h"

namespace tavek {

namespace {

// The last definition of each name in a file, and the reports about the file's malformed lines.
struct PlainDefinitions {
  std::map<std::string, std::string> values;
  std::string reports;
};

constexpr std::string_view kSpace = " \t\n\v\f\r";
constexpr std::string_view kNameCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";

std::string_view without_leading_space(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(kSpace), text.size()));
}

// The end of the line or the start of a comment.
bool is_empty(std::string_view text) {
  return text.empty() || text.front() == '#';
}

// A trailing run of white space, including the newline, loses one character if its length is odd and none if it is
// even.
std::string_view value_of(std::string_view text) {
  text = text.substr(0, text.find('#'));
  const std::size_t trailing = text.size() - 1 - text.find_last_not_of(kSpace);
  return text.substr(0, text.size() - trailing % 2);
}

void read_line(std::string_view line, PlainDefinitions& definitions) {
  const std::string_view definition = without_leading_space(line);
  if (is_empty(definition)) {
    return;
  }
  const std::string_view name = definition.substr(0, definition.find_first_not_of(kNameCharacters));
  const std::string_view after_name = definition.substr(name.size());
  const std::string_view value = without_leading_space(after_name);
  const std::string invalid = "Invalid variable definition " + std::string(definition);
  if (name.empty() || value.size() == after_name.size()) {
    definitions.reports += invalid + "\nExpected a space after variable name\n\n";
  } else if (is_empty(value)) {
    definitions.reports += invalid + "\nExpected a value\n";
  } else {
    definitions.values[std::string(name)] = value_of(value);
  }
}

PlainDefinitions plain_definitions(std::string_view file) {
  PlainDefinitions definitions;
  while (!file.empty()) {
    const std::size_t length = std::min(file.find('\n'), file.size() - 1) + 1;
    const std::string_view line = file.substr(0, length);
    read_line(line.substr(0, line.find('\0')), definitions); // A line is a C string.
    file.remove_prefix(length);
  }
  return definitions;
}

// The reports of the program, each followed by a newline.
std::string reports;

__attribute__((format(printf, 2, 3))) void record(int /*level*/, const char* format, ...) {
  char* text = nullptr;
  va_list arguments;
  va_start(arguments, format);
  if (vasprintf(&text, format, arguments) == -1) {
    std::abort();
  }
  va_end(arguments);
  reports.append(text).append("\n");
  std::free(text);
}

struct FreeStore {
  void operator()(RuntimeConf* store) const { runtime_conf_free(store); }
};
using Store = std::unique_ptr<RuntimeConf, FreeStore>;

// Returns a file without a directory entry; /proc gives it a path.
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

void check_store(const PlainDefinitions& expected, const RuntimeConf& store) {
  expect_same("the number of definitions", std::to_string(expected.values.size()), std::to_string(store.count));
  for (const auto& [name, value] : expected.values) {
    const char* const actual = runtime_conf_find(&store, name.c_str());
    expect_same("the value of " + name, value, actual != nullptr ? actual : "no value");
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
  tavek::expect_same("the reports", expected.reports, tavek::reports);
  tavek::check_store(expected, *store);
  return 0;
}
