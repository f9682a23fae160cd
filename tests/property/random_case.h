#pragma once

// Cases, and generators of random ones.

#include <iosfwd>
#include <rapidcheck.h>
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

/// Managed words, similar words, lines and single bytes in any order, with any settings.
rc::Gen<RewriteCase> random_cases();

/// The same with one to three pieces of up to 200000 bytes.
rc::Gen<RewriteCase> long_random_cases();

/// Files in which each stanza closes and has each managed directive at most once, with settings that a rewrite accepts.
/// The anonymizer is kept or removed, never added.
rc::Gen<RewriteCase> well_formed_cases();

} // namespace tavek
