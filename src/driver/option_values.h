#pragma once

// Turns parsed options into the settings of a rewrite.

#include "driver/options.h"
#include "rotation/rotation_settings.h"

namespace tavek {

/// Full reading, for a virtual host whose rotation is turned on: stores period type, period, rotation count, mail
/// address and compression, then checks the period type and the period. Throws std::invalid_argument if one of these
/// two is invalid, and boost::bad_any_cast if a required option is missing.
void fill_settings(const Options& options, RotationSettings& settings);

/// Partial reading, for a system-log category: stores the period type and the period, if given, and the count (default
/// -1). Checks nothing.
void fill_given_settings(const Options& options, RotationSettings& settings);

} // namespace tavek
