#pragma once

// What one rewrite has seen and written so far.

#include <string>

namespace tavek {

/// Counters over all stanzas, never reset between them. Each stanza should have exactly one directive of each kind, so
/// a stanza is taken to lack a directive when the counter for that directive is lower than `stanzas`.
struct DirectiveTally {
  int stanzas = 0;                   ///< Stanza heads seen.
  int periods = 0;                   ///< Periods written or passed through.
  int rotates = 0;                   ///< Rotation counts written or passed through.
  int compresses = 0;                ///< compress or nocompress written.
  int mails = 0;                     ///< Mail addresses written; an empty one is counted but not written.
  int missingoks = 0;                ///< missingok written.
  int anonymizers = 0;               ///< Anonymizing commands written, with or without a postrotate block.
  bool copytruncate_pending = false; ///< The current stanza has no copytruncate yet.
  std::string last_period;           ///< The previous write_period() value in this stanza.

  /// Directives that the first pass never wrote. The second pass writes them after each stanza head.
  bool need_period = false;
  bool need_rotate = false;
  bool need_compress = false;
  bool need_mail = false;

  bool stanza_targeted = true; ///< Whether the current stanza may get a new postrotate block.
};

} // namespace tavek
