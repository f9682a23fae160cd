#pragma once

// The methods that the scanner's rules call, one per construct of a rotation file.

#include <string_view>

#include "file/output_stream.h"
#include "rotation/directive_tally.h"
#include "rotation/directive_writer.h"
#include "rotation/rotation_settings.h"

namespace tavek {

/// One rewrite in progress. Each method gets the text matched in the input and writes its replacement to the output.
/// The job and the output are borrowed. Methods that write a period throw std::runtime_error for an unknown period
/// type. In system mode only the period, the rotate directive and the anonymizing command are managed; mailfirst and
/// maillast are dropped, and other directives are copied.
class RewriteContext {
public:
  RewriteContext(const RewriteJob& job, OutputStream& output);

  /// Copies text that no rule manages.
  void copy(std::string_view text) { writer_.copy(text); }

  void stanza_head(std::string_view text);
  void period_line(std::string_view text);
  void rotate_line(std::string_view text);
  void compress_line(std::string_view text);
  void missingok_line(std::string_view text);
  void copytruncate_line(std::string_view text);
  void mail_line(std::string_view text);

  /// A line of a postrotate script whose first non-blank character is '/'.
  void script_command(std::string_view text);

  void endscript_line(std::string_view text);

  /// The brace that closes a stanza: writes the directives that the stanza lacks, then the brace.
  void stanza_close(std::string_view text);

  /// The end of the first pass. Writes the default stanzas if a host's file contained none. Returns whether a second
  /// pass is needed because period, rotate, compress or mail was never written. The second pass reads the same input
  /// and writes to the emptied output.
  bool end_of_input();

private:
  bool targets(std::string_view head) const;
  bool anonymizes() const { return settings_.anonymize == Switch::on; }
  bool lacks(int DirectiveTally::*kind) const { return tally_.*kind < tally_.stanzas; }
  template <typename Write>
  void replace_for_vhost(std::string_view text, Write write);
  void insert_needed();
  void add_lacking_vhost_directives();
  bool plan_second_pass();

  const RewriteJob& job_;
  const RotationSettings& settings_;
  DirectiveTally tally_;
  DirectiveWriter writer_;
};

} // namespace tavek
