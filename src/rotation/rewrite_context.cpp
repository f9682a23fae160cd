#include "rotation/rewrite_context.h"

#include <algorithm>

#include "rotation/vhost_generator.h"

namespace tavek {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
constexpr std::string_view kAnonymizer = "/anonymize_ip";

// The text before the first of `delimiters`, or all of it.
std::string_view word(std::string_view text, std::string_view delimiters) {
  return text.substr(0, text.find_first_of(delimiters));
}

// Whether a script line runs the anonymizer with arguments. Any product root will do, but there must be one: it is at
// least one byte (the + 1) between the first slash and kAnonymizer.
bool runs_anonymizer(std::string_view line) {
  line.remove_prefix(line.find_first_not_of(kBlanks));
  const std::string_view path = word(line, " \t\n");
  const bool has_arguments = line[path.size()] != '\n';
  return has_arguments && path.ends_with(kAnonymizer) && path.size() > kAnonymizer.size() + 1;
}

} // namespace

RewriteContext::RewriteContext(const RewriteJob& job, OutputStream& output)
    : job_(job), settings_(job.settings), writer_(output, tally_) {}

void RewriteContext::stanza_head(std::string_view text) {
  tally_.stanza_targeted = targets(text);
  ++tally_.stanzas;
  writer_.begin_stanza(text);
  tally_.copytruncate_pending = true;
  insert_needed();
}

bool RewriteContext::targets(std::string_view head) const {
  return !settings_.system_mode || !job_.select_targets ||
         std::find(job_.target_logs.begin(), job_.target_logs.end(), word(head, kWhiteSpace)) != job_.target_logs.end();
}

// The flags are set only in a second pass.
void RewriteContext::insert_needed() {
  if (tally_.need_period) {
    writer_.write_period(settings_.period_type, settings_.period, "");
  }
  if (tally_.need_rotate) {
    writer_.write_rotate(settings_.rot_count, "");
  }
  if (tally_.need_compress) {
    writer_.write_compress(settings_.compress);
  }
  if (tally_.need_mail) {
    writer_.write_mail(settings_.email);
  }
}

void RewriteContext::period_line(std::string_view text) {
  writer_.write_period(settings_.period_type, settings_.period, text);
}

void RewriteContext::rotate_line(std::string_view text) {
  writer_.write_rotate(settings_.rot_count, text);
}

// A system rotation file keeps the directives that are managed only for virtual hosts.
template <typename Write>
void RewriteContext::replace_for_vhost(std::string_view text, Write write) {
  if (settings_.system_mode) {
    copy(text);
  } else {
    write();
  }
}

void RewriteContext::compress_line(std::string_view text) {
  replace_for_vhost(text, [&] { writer_.write_compress(settings_.compress); });
}

void RewriteContext::missingok_line(std::string_view text) {
  replace_for_vhost(text, [&] { writer_.write_missingok(); });
}

void RewriteContext::copytruncate_line(std::string_view text) {
  replace_for_vhost(text, [&] { writer_.write_copytruncate(); });
}

void RewriteContext::mail_line(std::string_view text) {
  replace_for_vhost(text, [&] { writer_.write_mail(settings_.email); });
}

void RewriteContext::script_command(std::string_view text) {
  if (settings_.anonymize == Switch::keep || !runs_anonymizer(text)) {
    copy(text);
  } else {
    writer_.write_anonymize_if(anonymizes(), PostrotateBlock::omit);
  }
}

void RewriteContext::endscript_line(std::string_view text) {
  writer_.write_anonymize_if(lacks(&DirectiveTally::anonymizers) && anonymizes(), PostrotateBlock::omit);
  copy(text);
}

void RewriteContext::stanza_close(std::string_view text) {
  if (lacks(&DirectiveTally::periods)) {
    writer_.write_period(settings_.period_type, settings_.period, "");
  }
  if (lacks(&DirectiveTally::rotates)) {
    writer_.write_rotate(settings_.rot_count, "");
  }
  if (!settings_.system_mode) {
    add_lacking_vhost_directives();
  }
  writer_.write_anonymize_if(lacks(&DirectiveTally::anonymizers) && anonymizes() && tally_.stanza_targeted,
                             PostrotateBlock::write);
  copy(text);
}

void RewriteContext::add_lacking_vhost_directives() {
  if (lacks(&DirectiveTally::compresses)) {
    writer_.write_compress(settings_.compress);
  }
  if (lacks(&DirectiveTally::mails)) {
    writer_.write_mail(settings_.email);
  }
  if (lacks(&DirectiveTally::missingoks)) {
    writer_.write_missingok();
  }
  if (tally_.copytruncate_pending) {
    writer_.write_copytruncate();
  }
}

bool RewriteContext::end_of_input() {
  if (settings_.system_mode) {
    return false;
  }
  if (tally_.stanzas == 0) {
    write_default_file(settings_, writer_);
    return false;
  }
  return plan_second_pass();
}

// A closed stanza has every directive, so a second pass happens only if no stanza closes. It inserts the missing
// directives after the stanza heads that it finds. Neither the counters nor the scanner's start condition is reset. So
// the second pass starts inside a stanza or a script, and finds no head before a closing brace. For example, a stray
// brace in the first line of the file is text in the first pass, but ends a stanza in the second.
bool RewriteContext::plan_second_pass() {
  tally_.need_period = tally_.periods == 0;
  tally_.need_rotate = tally_.rotates == 0;
  tally_.need_compress = tally_.compresses == 0;
  tally_.need_mail = tally_.mails == 0;
  return tally_.need_period || tally_.need_rotate || tally_.need_compress || tally_.need_mail;
}

} // namespace tavek
