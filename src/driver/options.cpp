#include "driver/options.h"

#include <algorithm>
#include <boost/program_options/errors.hpp>
#include <boost/program_options/options_description.hpp>
#include <boost/program_options/parsers.hpp>
#include <boost/program_options/positional_options.hpp>
#include <boost/program_options/value_semantic.hpp>
#include <boost/program_options/variables_map.hpp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <sstream>

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

std::string base_name(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return slash != nullptr ? slash + 1 : path;
}

void print_usage(const std::string& program, const po::options_description& options) {
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
  std::fflush(stdout);
}

// In the text of an error the library replaces its placeholders until none is left. Where the word that is put in holds
// one itself, that never ends.
constexpr const char* kPlaceholders[] = {"%value%", "%option%", "%original_token%", "%canonical_option%", "%prefix%"};

bool holds_placeholder(const char* word) {
  return std::any_of(std::begin(kPlaceholders), std::end(kPlaceholders),
                     [&](const char* placeholder) { return std::strstr(word, placeholder) != nullptr; });
}

void parse_into(po::variables_map& map, int argc, const char* const* argv, const po::options_description& options) {
  const po::positional_options_description positionals = describe_positionals();
  try {
    po::store(po::command_line_parser(argc, argv).options(options).positional(positionals).run(), map);
  } catch (const po::error_with_option_name&) {
    const char* const* word = std::find_if(argv, argv + argc, holds_placeholder);
    if (word == argv + argc) {
      throw;
    }
    throw po::error(std::string("the word '").append(*word).append("' on the command line cannot be read"));
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

Options parse_options(int argc, const char* const* argv) {
  // Never destroyed: the run is about to end, and taking the description apart would be a twentieth of it.
  static const auto& options = *new po::options_description(describe_options());
  auto map = std::make_unique<po::variables_map>();
  parse_into(*map, argc, argv, options);
  // Only now: a malformed value elsewhere on the line is reported even when help is asked for.
  if (map->count("help") != 0) {
    print_usage(base_name(argv[0]), options);
    std::exit(EXIT_SUCCESS);
  }
  po::notify(*map);
  return Options(std::move(map));
}

} // namespace tavek
