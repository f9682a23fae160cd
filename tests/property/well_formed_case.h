#pragma once

// Files as people and packages write them.

#include "rewrite_case.h"

namespace tavek {

/// A file whose stanzas are complete, hold each managed directive once at most and nothing that closes them early, and
/// settings as a command line may give them, with anonymize kept or off. Each stanza is a piece.
RewriteCase well_formed_case(Dice& dice, std::size_t size);

} // namespace tavek
