#include "driver/options.h"

#include <algorithm>
#include <boost/program_options/errors.hpp>
#include <boost/program_options/options_description.hpp>
#include <boost/program_options/parsers.hpp>
#include <boost/program_options/positional_options.hpp>
#include <boost/program_options/value_semantic.hpp>
#include <boost/program_options/variables_map.hpp>
#include <cstdio>
#include <sstream>
#include <vector>

#include "log/base_name.h"

namespace po = boost::program_options;

namespace tavek {

namespace {

constexpr const char* kPositionals[] = {"vhost-name", "on-off",   "period-type", "period",
                                        "rot-count",  "compress", "email"};

po::options_description describe_options() {
  po::options_description options("Allowed options");
  // clang-format off
  options.add_options()
      ("vhost-name", po::value<std::string>(), "Config name")
      ("on-off", po::value<Switch>(), "Logrotation status (on|off)")
      ("period-type", po::value<std::string>(), "Logrotation type (by_time|by_size)")
      ("period", po::value<std::string>(), "Logrotation trigger (daily|weekly|monthly|<size in bytes>)")
      ("rot-count", po::value<int>()->default_value(-1), "Maximum number of rotated files (<number>)")
      ("compress", po::value<Switch>(), "Compress logfiles (true|false)")
      ("email", po::value<std::string>()->default_value(""), "Address to mail just-rotated logs to (may be empty)")
      ("anonymize-ip", po::value<Switch>()->default_value(Switch::keep), "Anonymize ip addresses (true|false|keep)")
      ("system-logs", po::bool_switch(), "Modify rotation config for system logs")
      ("apache-logs", po::bool_switch(), "Modify rotation config for apache global logs")
      ("nginx-logs", po::bool_switch(), "Modify rotation config for nginx global logs")
      ("tavek-logs", po::bool_switch(), "Modify rotation config for logs rotated by tavek")
      ("fail2ban-logs", po::bool_switch(), "Modify rotation config for fail2ban logs")
      ("modsecurity-logs", po::bool_switch(), "Modify rotation config for modsecurity logs")
      // "removed" is a known slip. It stays, because tools compare this text.
      ("keep-old-logs,K", po::bool_switch(), "Do not removed logs rotated more than rot-count times")
      ("help,h", "produce help message");
  // clang-format on
  return options;
}

po::positional_options_description describe_positionals() {
  po::positional_options_description positionals;
  for (const char* name : kPositionals) {
    positionals.add(name, 1);
  }
  return positionals;
}

void print_usage(const char* program, const po::options_description& options) {
  std::ostringstream usage;
  usage << "Usage: " << program << " <config_fname> <on|off>"
        << " <by_time|by_size> <daily|weekly|monthly|size_in_bytes>"
        << " <max_number_of_logfiles> <compress_logfiles> [email]"
        << " [--anonymize-ip=(true|false|keep)]\n\n"
        << "Examples:\n"
        << "    Enable ip anonymization for system logs:\n"
        << "    " << program << " --system-logs --anonymize-ip=true\n\n"
        << "    Disable ip anonymization for system logs:\n"
        << "    " << program << " --system-logs --anonymize-ip=false\n\n"
        << "    Edit rotation settings for system logs:\n"
        << "    " << program << " --system-logs --period-type=by_time --period=daily --rot-count=7\n\n"
        << options << "\n";
  std::fputs(usage.str().c_str(), stdout);
}

// Gives complaint_of() access to protected members of the library's error.
struct ErrorInternals : po::error_with_option_name {
  static auto words() { return &ErrorInternals::m_substitutions; }
  static auto message() { return &ErrorInternals::m_message; }
};

// The library's text for an error. The library expands placeholders such as %value% repeatedly, so the expansion would
// never end if a word from the command line contained one. So during the expansion, a NUL replaces each percent sign of
// these words. The words themselves contain no NUL.
std::string complaint_of(po::error_with_option_name& error) {
  for (auto& [placeholder, word] : error.*ErrorInternals::words()) {
    std::replace(word.begin(), word.end(), '%', '\0');
  }
  static_cast<void>(error.what()); // Expands the message, which may contain a NUL now.
  std::string message = error.*ErrorInternals::message();
  std::replace(message.begin(), message.end(), '\0', '%');
  return message;
}

void store_words(const std::vector<std::string>& words, const po::options_description& options,
                 po::variables_map& map) {
  try {
    po::store(po::command_line_parser(words).options(options).positional(describe_positionals()).run(), map);
  } catch (po::error_with_option_name& error) {
    throw po::error(complaint_of(error));
  }
}

} // namespace

Options::Options(std::unique_ptr<po::variables_map> map) : map_(std::move(map)) {}
Options::Options(Options&&) noexcept = default;
Options::~Options() = default;

bool Options::has(const std::string& name) const {
  return map_->count(name) != 0;
}
bool Options::flag(const std::string& name) const {
  return (*map_)[name].as<bool>();
}
const std::string& Options::text(const std::string& name) const {
  return (*map_)[name].as<std::string>();
}
int Options::number(const std::string& name) const {
  return (*map_)[name].as<int>();
}
Switch Options::switch_value(const std::string& name) const {
  return (*map_)[name].as<Switch>();
}

std::optional<Options> parse_options(int argc, const char* const* argv) {
  // The description is never destroyed: its destruction would take a twentieth of the time of a run.
  static const auto& options = *new po::options_description(describe_options());
  auto map = std::make_unique<po::variables_map>();
  store_words({argv + std::min(argc, 1), argv + argc}, options, *map);
  // Help is handled only now, so that a malformed value elsewhere on the line is reported even if help is requested.
  if (map->count("help") != 0) {
    print_usage(base_name(argv[0]), options);
    return std::nullopt;
  }
  po::notify(*map);
  return Options(std::move(map));
}

} // namespace tavek
