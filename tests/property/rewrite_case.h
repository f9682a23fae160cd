#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "rotation/rotation_settings.h"

namespace tavek {

/// The content of a file and the settings to rewrite it with. The content is kept in pieces so that a failing random
/// case can shrink by whole pieces.
struct RewriteCase {
  std::vector<std::string> pieces;
  RewriteJob job;

  std::string text() const;
};

/// Prints the text, escaped, and the settings.
std::ostream& operator<<(std::ostream& out, const RewriteCase& rewrite);

} // namespace tavek
