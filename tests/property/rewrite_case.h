#pragma once

// One rewrite to try: a text and the settings to rewrite it with.

#include <iosfwd>
#include <rapidcheck.h>
#include <string>
#include <vector>

#include "dice.h"
#include "rotation/rotation_settings.h"

namespace tavek {

/// The text is kept in the pieces that it was put together from, so that a failing case shrinks by whole pieces.
struct RewriteCase {
  std::vector<std::string> pieces;
  RewriteJob job;

  std::string text() const;
};

/// Prints the text, escaped, and the settings: what rapidcheck shows of a case that fails.
std::ostream& operator<<(std::ostream& out, const RewriteCase& rewrite);

/// Makes a case by rolling dice; `size` says how much of it.
using MakeRewriteCase = RewriteCase (*)(Dice& dice, std::size_t size);

/// The cases that `make` makes. They shrink by leaving out pieces and by halving long ones.
rc::Gen<RewriteCase> rewrite_cases(MakeRewriteCase make);

} // namespace tavek
