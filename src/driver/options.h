#pragma once

// The command line: options, positional arguments and usage text.

#include <memory>
#include <optional>
#include <string>

#include "rotation/switch.h"

namespace boost::program_options {
class variables_map;
}

namespace tavek {

/// The options that were given or have a default, by name. The typed readers throw boost::bad_any_cast if the option is
/// absent.
class Options {
public:
  explicit Options(std::unique_ptr<boost::program_options::variables_map> map);
  Options(Options&&) noexcept;
  ~Options();

  /// Whether the option was given on the command line or has a default.
  bool has(const std::string& name) const;

  bool flag(const std::string& name) const;
  const std::string& text(const std::string& name) const;
  int number(const std::string& name) const;
  Switch switch_value(const std::string& name) const;

private:
  std::unique_ptr<boost::program_options::variables_map> map_;
};

/// Parses a command line. Returns nothing if the command line asks for help; the usage text has then been printed on
/// standard output. Throws boost::program_options::error.
std::optional<Options> parse_options(int argc, const char* const* argv);

} // namespace tavek
