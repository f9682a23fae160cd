#pragma once

// From the options to the settings of a rewrite.

#include "driver/options.h"
#include "rotation/rotation_settings.h"

namespace tavek {

/// The full reading, for a virtual host that is switched on: takes period type, period, rotation count, mail address
/// and compression, then checks period type and period. Throws std::invalid_argument for values that do not go together
/// and boost::bad_any_cast for a missing one.
void fill_settings(const Options& options, RotationSettings& settings);

/// The partial reading, for a system category: takes period type, period and rotation count, each only when the options
/// hold it, and checks nothing.
void fill_given_settings(const Options& options, RotationSettings& settings);

} // namespace tavek
