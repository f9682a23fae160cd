// The option parser, and the two ways to fill the settings from it compared with a plain model of their checks. An
// input is a command line, one argument a line. Whatever it says, it is taken or refused by an exception that the entry
// point prints.

#include <algorithm>
#include <cstdint>
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
    arguments.emplace_back(line.c_str()); // An argument holds no NUL.
  }
  return arguments;
}

// Help ends the process. Any beginning of the long option asks for it, and the short one may stand among others. To the
// library "---h" is the short option in the place of a long one.
bool may_ask_for_help(const std::string& argument) {
  return argument.starts_with("--h") || argument.starts_with("---h") ||
         (argument.starts_with("-") && !argument.starts_with("--") && argument.find('h') != std::string::npos);
}

// Why a size is refused: it does not begin with a number, or with one that does not fit.
std::string size_refusal(const std::string& period) {
  std::string_view text = period;
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool negative = text.starts_with('-');
  text.remove_prefix(negative || text.starts_with('+') ? 1 : 0);
  const std::string_view digits = text.substr(0, text.find_first_not_of("0123456789"));
  if (digits.empty()) {
    return "Logrotation period value should be unsigned integer: " + period;
  }
  const std::string_view number = digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
  const std::string_view largest = negative ? "9223372036854775808" : "9223372036854775807";
  const bool fits = number.size() < largest.size() || (number.size() == largest.size() && number <= largest);
  return fits ? "" : "Logrotation period value is out of range: " + period;
}

// What the full reading says to these options; nothing when it takes them.
std::string plain_refusal(const Options& options) {
  if (!options.has("period-type") || !options.has("period") || !options.has("compress")) {
    return "boost::bad_any_cast: failed conversion using boost::any_cast";
  }
  const std::string& period = options.text("period");
  if (options.text("period-type") == "by_size") {
    return size_refusal(period);
  }
  if (options.text("period-type") != "by_time") {
    return "Invalid logrotation period type: should be 'by_time' or 'by_size'";
  }
  const bool known = period == "daily" || period == "weekly" || period == "monthly";
  return known ? "" : "Invalid logrotation period value: should be 'daily', 'weekly' or 'monthly'";
}

std::string actual_refusal(const Options& options, RotationSettings& settings) {
  try {
    fill_settings(options, settings);
    return "";
  } catch (const std::exception& error) {
    return error.what();
  }
}

void check_settings(const Options& options) {
  RotationSettings settings;
  const std::string refusal = plain_refusal(options);
  expect_same("the refusal of the settings", refusal, actual_refusal(options, settings));
  if (refusal.empty()) {
    expect_same("the period type", options.text("period-type"), settings.period_type);
    expect_same("the period", options.text("period"), settings.period);
    expect_same("the address", options.text("email"), settings.email);
    expect(settings.rot_count == options.number("rot-count"), "the count is the one given");
    expect(settings.compress == (options.switch_value("compress") == Switch::on), "only on compresses");
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

// What is printed of a switch is forwarded to children, who must read the same.
void check_forwarded_switch(const Options& options) {
  std::stringstream forwarded;
  forwarded << options.switch_value("anonymize-ip");
  Switch read = Switch::off;
  forwarded >> read;
  expect(read == options.switch_value("anonymize-ip"), "a printed switch reads back");
}

void check_category(const Options& options) {
  const SystemLogCategory* selected = selected_category(options);
  std::string expected;
  for (const char* name : {"modsecurity-logs", "fail2ban-logs", "tavek-logs", "nginx-logs", "apache-logs"}) {
    expected = options.flag(name) ? name : expected; // The last to be set here is the first to win.
  }
  expect_same("the category", expected, selected != nullptr ? selected->option : "");
}

void check_command_line(const std::vector<std::string>& arguments) {
  std::vector<const char*> argv(arguments.size() + 1);
  std::transform(arguments.begin(), arguments.end(), argv.begin(),
                 [](const std::string& argument) { return argument.c_str(); });
  const Options options = parse_options(static_cast<int>(arguments.size()), argv.data()).value();
  check_given_settings(options);
  check_forwarded_switch(options);
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
    tavek::expect(error.what() != nullptr, "a refusal has a text");
  }
  return 0;
}
