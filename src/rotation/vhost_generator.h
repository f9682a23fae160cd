#pragma once

// Generates the contents of a virtual host's rotation file that is new or contains no stanza.

#include "rotation/directive_writer.h"
#include "rotation/rotation_settings.h"

namespace tavek {

/// Writes the default file: a warning header, a global allowhardlink and a stanza for each of the host's four log
/// families below the configured root of the virtual hosts. Throws std::runtime_error for an unknown period type.
void write_default_file(const RotationSettings& settings, DirectiveWriter& writer);

} // namespace tavek
