#pragma once

// Texts and settings chosen to be trouble.

#include "rewrite_case.h"

namespace tavek {

/// Words, near-words, lines and bytes that mean something to a rewrite, thrown together, and any settings whatever.
RewriteCase troubled_case(Dice& dice, std::size_t size);

/// The same with one to three long pieces, of up to 2000 bytes for each unit of `size`.
RewriteCase long_troubled_case(Dice& dice, std::size_t size);

} // namespace tavek
