#pragma once

// What the scanner's rules call: one method for each thing that can stand in a rotation file.

#include <string_view>

#include "file/output_stream.h"
#include "rotation/directive_tally.h"
#include "rotation/directive_writer.h"
#include "rotation/rotation_settings.h"

namespace tavek {

/// One rewrite in progress. Each method takes the text matched in the input and writes what stands in its place to the
/// output; job and output are borrowed. Methods that write a period throw std::runtime_error for an unknown period
/// type. In system mode only period, rotate and the anonymizing command are managed, and the directives of the other
/// kinds are copied.
class RewriteContext {
public:
  RewriteContext(const RewriteJob& job, OutputStream& output);

  /// Text that is nobody's business here.
  void copy(std::string_view text) { writer_.copy(text); }

  void stanza_head(std::string_view text);
  void period_line(std::string_view text);
  void rotate_line(std::string_view text);
  void compress_line(std::string_view text);
  void missingok_line(std::string_view text);
  void copytruncate_line(std::string_view text);
  void mail_line(std::string_view text);

  /// A line of a postrotate script that starts a command by its path.
  void script_command(std::string_view text);

  void endscript_line(std::string_view text);

  /// The brace that closes a stanza: writes the directives that the stanza still lacks, then the brace.
  void stanza_close(std::string_view text);

  /// The input is used up. Writes the default file when it held no stanza. Returns whether it is to be scanned once
  /// more, from its start and into an emptied output, because some kind of directive was written nowhere.
  bool end_of_input();

  const DirectiveTally& tally() const { return tally_; }

private:
  bool targets(std::string_view head) const;
  bool anonymizes() const { return settings_.anonymize == Switch::on; }
  bool lacks(int DirectiveTally::*kind) const { return tally_.*kind < tally_.stanzas; }
  template <typename Write>
  void replace_for_vhost(std::string_view text, Write write);
  void insert_needed();
  void add_lacking_vhost_directives();
  bool needs_second_pass();

  const RewriteJob& job_;
  const RotationSettings& settings_;
  DirectiveTally tally_;
  DirectiveWriter writer_;
};

} // namespace tavek
