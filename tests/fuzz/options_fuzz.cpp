// Parses a command line. Fills settings from it with fill_settings() and with fill_given_settings(), and compares the
// results with a plain model. An input is a command line, one argument per line. It is either accepted or rejected with
// an exception.

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "driver/option_values.h"
#include "driver/options.h"
#include "driver/system_log_category.h"
#include "finding.h"

namespace tavek {

namespace {

constexpr std::size_t kArguments = 64;

std::vector<std::string> split(std::string_view input) {
  std::vector<std::string> arguments{"tavek-logrotate"};
  std::istringstream lines{std::string(input)};
  for (std::string line; arguments.size() < kArguments && std::getline(lines, line);) {
    arguments.emplace_back(line.c_str()); // An argument contains no NUL.
  }
  return arguments;
}

// If help is requested, parse_options() only prints the usage text. The help option may be given as any prefix of
// --help (at least --h), and -h may be combined with other short options in one argument. The library reads "---h" as
// -h too.
bool may_ask_for_help(const std::string& argument) {
  return argument.starts_with("--h") || argument.starts_with("---h") ||
         (argument.starts_with("-") && !argument.starts_with("--") && argument.find('h') != std::string::npos);
}

// The error for a size that does not start with a number or whose number does not fit into 64 bits, or "".
std::string size_error(const std::string& period) {
  char* rest = nullptr;
  errno = 0;
  static_cast<void>(std::strtoll(period.c_str(), &rest, 10));
  if (rest == period.c_str()) {
    return "Logrotation period value should be unsigned integer: " + period;
  }
  return errno == 0 ? "" : "Logrotation period value is out of range: " + period;
}

// The error of fill_settings() for these options, or "".
std::string plain_error(const Options& options) {
  if (!options.has("period-type") || !options.has("period") || !options.has("compress")) {
    return "boost::bad_any_cast: failed conversion using boost::any_cast";
  }
  const std::string& period = options.text("period");
  if (options.text("period-type") == "by_size") {
    return size_error(period);
  }
  if (options.text("period-type") != "by_time") {
    return "Invalid logrotation period type: should be 'by_time' or 'by_size'";
  }
  const bool known = period == "daily" || period == "weekly" || period == "monthly";
  return known ? "" : "Invalid logrotation period value: should be 'daily', 'weekly' or 'monthly'";
}

std::string actual_error(const Options& options, RotationSettings& settings) {
  try {
    fill_settings(options, settings);
    return "";
  } catch (const std::exception& error) {
    return error.what();
  }
}

void check_settings(const Options& options) {
  RotationSettings settings;
  const std::string error = plain_error(options);
  expect_same("the error for the settings", error, actual_error(options, settings));
  if (error.empty()) {
    expect_same("the period type", options.text("period-type"), settings.period_type);
    expect_same("the period", options.text("period"), settings.period);
    expect_same("the address", options.text("email"), settings.email);
    expect(settings.rot_count == options.number("rot-count"), "the count is the one given");
    expect(settings.compress == (options.switch_value("compress") == Switch::on), "only \"on\" compresses");
  }
}

void check_given_settings(const Options& options) {
  RotationSettings settings;
  settings.period_type = settings.period = "before";
  fill_given_settings(options, settings);
  const auto given = [&](const char* name) { return options.has(name) ? options.text(name) : "before"; };
  expect_same("the given period type", given("period-type"), settings.period_type);
  expect_same("the given period", given("period"), settings.period);
  expect(settings.rot_count == options.number("rot-count"), "the count has a default");
}

void check_category(const Options& options) {
  const SystemLogCategory* selected = selected_category(options);
  std::string expected;
  for (const char* name : {"modsecurity-logs", "fail2ban-logs", "tavek-logs", "nginx-logs", "apache-logs"}) {
    expected = options.flag(name) ? name : expected; // Assigned in reverse, so the program's first category wins.
  }
  expect_same("the category", expected, selected != nullptr ? selected->option : "");
}

void check_command_line(const std::vector<std::string>& arguments) {
  std::vector<const char*> argv(arguments.size() + 1);
  std::transform(arguments.begin(), arguments.end(), argv.begin(),
                 [](const std::string& argument) { return argument.c_str(); });
  const Options options = parse_options(static_cast<int>(arguments.size()), argv.data()).value();
  check_given_settings(options);
  check_category(options);
  check_settings(options);
}

} // namespace

} // namespace tavek

// NOLINTNEXTLINE(*-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<std::string> arguments = tavek::split({reinterpret_cast<const char*>(data), size});
  if (std::any_of(arguments.begin(), arguments.end(), tavek::may_ask_for_help)) {
    return -1;
  }
  try {
    tavek::check_command_line(arguments);
  } catch (const std::exception& error) {
    tavek::expect(error.what() != nullptr, "an error has a message");
  }
  return 0;
}
