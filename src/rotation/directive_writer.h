#pragma once

// Writes the directives that the tool manages. All of them are written here, so that the tally is correct.

#include <string>
#include <string_view>

#include "file/output_stream.h"
#include "rotation/directive_tally.h"

namespace tavek {

/// Whether a postrotate block is written around a command.
enum class PostrotateBlock { omit, write };

/// Writes managed directives to an output and counts them in a tally; both are borrowed. The output remembers write
/// errors.
class DirectiveWriter {
public:
  DirectiveWriter(OutputStream& output, DirectiveTally& tally) : output_(output), tally_(tally) {}

  /// Copies text that no rule manages.
  void copy(std::string_view text) { output_.write(text); }

  /// Writes the head of a stanza and forgets the period of the previous one.
  void begin_stanza(std::string_view head);

  /// Writes a period: "size=VALUE" for the type "by_size", the value alone for "by_time", or `pass_through` unchanged
  /// for an empty type. Does nothing if a non-empty value repeats the previous one in this stanza. For any other type,
  /// throws std::runtime_error and writes nothing.
  void write_period(const std::string& type, const std::string& value, std::string_view pass_through);

  /// Writes a rotation count, or `pass_through` unchanged if the count is negative.
  void write_rotate(int count, std::string_view pass_through);

  /// Writes "compress" or "nocompress".
  void write_compress(bool compress);

  /// Writes "mail" with the address, then "mailfirst". An empty address is counted too, but nothing is written for it.
  void write_mail(const std::string& address);

  void write_missingok();
  void write_copytruncate();

  /// Writes the anonymizing command, either inside a new postrotate block or alone. logrotate passes the names of the
  /// rotated logs to the script as arguments, and the command passes them to the anonymizer as $*.
  void write_anonymize(PostrotateBlock block);

  /// Calls write_anonymize() if `condition` is true.
  void write_anonymize_if(bool condition, PostrotateBlock block);

private:
  OutputStream& output_;
  DirectiveTally& tally_;
};

} // namespace tavek
