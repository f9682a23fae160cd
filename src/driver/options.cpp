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
#include <sstream>
#include <vector>

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
}

using Words = std::vector<std::string>;

bool has_percent_sign(const std::string& word) {
  return word.find('%') != std::string::npos;
}

void replace_byte(std::string& text, char from, char to) {
  std::replace(text.begin(), text.end(), from, to);
}

void store_words(const Words& words, const po::options_description& options, po::variables_map& map) {
  po::store(po::command_line_parser(words).options(options).positional(describe_positionals()).run(), map);
}

constexpr char kStandIn = '\x01'; // For a percent sign.

// What the library says of words that it refuses. In the text of an error it replaces its placeholders, such as
// %value%, until none is left, which never ends where a word that is put in holds one itself. So it is given the words
// without their percent signs, and they are put back into what it says.
std::string complaint_of(Words words, const po::options_description& options) {
  for (std::string& word : words) {
    replace_byte(word, '%', kStandIn);
  }
  std::string complaint;
  try {
    po::variables_map unused;
    store_words(words, options, unused);
  } catch (const po::error& error) {
    complaint = error.what();
  }
  replace_byte(complaint, kStandIn, '%');
  return complaint;
}

po::variables_map parse_words(const Words& words, const po::options_description& options) {
  po::variables_map map;
  try {
    store_words(words, options, map);
  } catch (const po::error_with_option_name&) {
    if (std::none_of(words.begin(), words.end(), has_percent_sign)) {
      throw;
    }
    throw po::error(complaint_of(words, options));
  }
  return map;
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
  const Words words(argv + std::min(argc, 1), argv + argc);
  auto map = std::make_unique<po::variables_map>(parse_words(words, options));
  // Only now: a malformed value elsewhere on the line is reported even when help is asked for.
  if (map->count("help") != 0) {
    print_usage(base_name(argv[0]), options);
    std::exit(EXIT_SUCCESS);
  }
  po::notify(*map);
  return Options(std::move(map));
}

} // namespace tavek
