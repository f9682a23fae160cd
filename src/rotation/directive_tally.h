#pragma once

// What has been seen and written so far in one rewrite.

#include <string>

namespace tavek {

/// Counters that never reset between stanzas: each stanza is meant to carry exactly one directive of each kind, so a
/// stanza lacks a kind exactly when that kind's counter is below `stanzas`.
struct DirectiveTally {
  int stanzas = 0;                   ///< Stanza heads seen.
  int periods = 0;                   ///< Periods written or passed through.
  int rotates = 0;                   ///< Rotation counts written or passed through.
  int compresses = 0;                ///< compress or nocompress written.
  int mails = 0;                     ///< Mail addresses written, empty ones counted too.
  int missingoks = 0;                ///< missingok written.
  int anonymizers = 0;               ///< Anonymizing commands written, with or without a script around them.
  bool copytruncate_pending = false; ///< The current stanza has no copytruncate yet.
  std::string last_period;           ///< The period last written in the current stanza.
  int need_period = 0;               ///< The need_ flags are set after a first pass that never wrote that kind,
  int need_rotate = 0;               ///< and make the second pass write it at each stanza head.
  int need_compress = 0;
  int need_mail = 0;
  bool stanza_targeted = true; ///< The current stanza's log is one that the run is after.
};

} // namespace tavek
