#pragma once

// The writers of the directives that the tool manages. Every managed directive is written by them, so that the tally of
// what a stanza already has is right.

#include <string>
#include <string_view>

#include "file/output_stream.h"
#include "rotation/directive_tally.h"

namespace tavek {

/// Whether a postrotate block is written around a command.
enum class PostrotateBlock { omit, write };

/// Writes managed directives to one output and keeps the tally; neither is owned. Failures of the output are the
/// output's to remember.
class DirectiveWriter {
public:
  DirectiveWriter(OutputStream& output, DirectiveTally& tally) : output_(output), tally_(tally) {}

  /// Copies text that is not managed.
  void copy(std::string_view text) { output_.write(text); }

  /// Writes the head of a stanza, which has no period yet.
  void begin_stanza(std::string_view head);

  /// Writes a period: "size=VALUE" for the type "by_size", the value itself for "by_time", `pass_through` unchanged for
  /// an empty type. A value that the stanza already has is not written again. Throws std::runtime_error for any other
  /// type; nothing is written then.
  void write_period(const std::string& type, const std::string& value, std::string_view pass_through);

  /// Writes a rotation count; for a negative one `pass_through` unchanged.
  void write_rotate(int count, std::string_view pass_through);

  /// Writes "compress" or "nocompress".
  void write_compress(bool compress);

  /// Writes "mail" with the address and "mailfirst"; nothing for an empty address, which counts all the same.
  void write_mail(const std::string& address);

  void write_missingok();
  void write_copytruncate();

  /// Writes the anonymizing command, with a postrotate block around it or alone. logrotate starts a script with the
  /// names of the rotated logs as its arguments, which the command passes on as $*.
  void write_anonymize(PostrotateBlock block);

  /// Calls write_anonymize() if `condition` is true.
  void write_anonymize_if(bool condition, PostrotateBlock block);

private:
  OutputStream& output_;
  DirectiveTally& tally_;
};

} // namespace tavek
