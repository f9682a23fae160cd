#pragma once

// Generators of random cases.

#include <rapidcheck.h>

#include "rewrite_case.h"

namespace tavek {

/// Managed words, similar words, lines and single bytes in any order, with any settings.
rc::Gen<RewriteCase> random_cases();

/// The same with one to three pieces of up to 200000 bytes.
rc::Gen<RewriteCase> long_random_cases();

/// Files in which each stanza closes and has each managed directive at most once, with settings that a rewrite accepts.
/// The anonymizer is kept or removed, never added.
rc::Gen<RewriteCase> well_formed_cases();

} // namespace tavek
