#include "rewrites.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "plain_pattern.h"

namespace tavek {
namespace {

enum class Place { outside, stanza, script };

// The directives that are counted, and their number.
enum Kind { period, rotate, compress, mail, missingok, anonymizer, kinds };

class PlainRewrite {
public:
  PlainRewrite(std::string_view input, const RewriteJob& job) : input_(input), job_(job) {}

  std::string run() {
    pass();
    if (!settings_.system_mode && stanzas_ == 0) {
      default_file();
    } else if (!settings_.system_mode && some_kind_is_written_nowhere()) {
      output_.clear();
      pass();
    }
    return output_;
  }

private:
  struct Rule {
    bool applies; // In the current start condition.
    plain_pattern::Pattern pattern;
    void (PlainRewrite::*action)(std::string_view text);
  };

  void pass() {
    for (std::size_t at = 0; at < input_.size();) {
      const bool line_start = at == 0 || input_[at - 1] == '\n';
      at += step(input_.substr(at), line_start);
    }
  }

  std::size_t step(std::string_view rest, bool line_start) {
    namespace pattern = plain_pattern;
    const bool outside = place_ == Place::outside;
    const bool stanza = place_ == Place::stanza;
    const bool stanza_line = stanza && line_start;
    const bool script_line = place_ == Place::script && line_start;
    const Rule rules[] = {
        {outside && line_start, pattern::comment, &PlainRewrite::echo},
        {outside, pattern::stanza_head, &PlainRewrite::stanza_head},
        {stanza_line, pattern::period, &PlainRewrite::period_line},
        {stanza_line, pattern::rotate, &PlainRewrite::rotate_line},
        {stanza_line, pattern::compress, &PlainRewrite::compress_line},
        {stanza_line, pattern::missingok, &PlainRewrite::missingok_line},
        {stanza_line, pattern::copytruncate, &PlainRewrite::copytruncate_line},
        {stanza_line, pattern::mail, &PlainRewrite::mail_line},
        {stanza_line, pattern::mail_which, &PlainRewrite::drop},
        {stanza_line, pattern::postrotate, &PlainRewrite::script_start},
        {script_line, pattern::anonymizer, &PlainRewrite::anonymizer_line},
        {script_line, pattern::endscript, &PlainRewrite::script_end},
        {stanza, pattern::closing_brace, &PlainRewrite::stanza_close},
        {true, pattern::any_byte, &PlainRewrite::echo},
    };
    const Rule* best = nullptr;
    std::size_t longest = 0;
    for (const Rule& rule : rules) {
      const std::size_t length = rule.applies ? rule.pattern(rest) : 0;
      if (length > longest) {
        longest = length;
        best = &rule;
      }
    }
    (this->*best->action)(rest.substr(0, longest));
    return longest;
  }

  void echo(std::string_view text) { output_ += text; }
  void drop(std::string_view) {}

  void stanza_head(std::string_view text) {
    const auto path = text.substr(0, text.find_first_of(" \t\n\v\f\r"));
    const auto& logs = job_.target_logs;
    targeted_ =
        !job_.settings.system_mode || !job_.select_targets || std::find(logs.begin(), logs.end(), path) != logs.end();
    ++stanzas_;
    last_period_.clear();
    place_ = Place::stanza;
    echo(text);
    copytruncate_pending_ = true;
    for (const Kind kind : {period, rotate, compress, mail}) {
      write_if(needed_[kind], kind);
    }
  }

  void period_line(std::string_view text) { write(period, text); }
  void rotate_line(std::string_view text) { write(rotate, text); }
  void compress_line(std::string_view text) { settings_.system_mode ? echo(text) : write(compress); }
  void missingok_line(std::string_view text) { settings_.system_mode ? echo(text) : write(missingok); }
  void copytruncate_line(std::string_view text) { settings_.system_mode ? echo(text) : write_copytruncate(); }
  void mail_line(std::string_view text) { settings_.system_mode ? echo(text) : write(mail); }

  void script_start(std::string_view text) {
    echo(text);
    place_ = Place::script;
  }

  void anonymizer_line(std::string_view text) {
    if (settings_.anonymize == Switch::keep) {
      echo(text);
    } else {
      write_if(settings_.anonymize == Switch::on, anonymizer);
    }
  }

  void script_end(std::string_view text) {
    write_if(lacks(anonymizer) && settings_.anonymize == Switch::on, anonymizer);
    echo(text);
    place_ = Place::stanza;
  }

  void stanza_close(std::string_view text) {
    write_if(lacks(period), period);
    write_if(lacks(rotate), rotate);
    if (!settings_.system_mode) {
      write_if(lacks(compress), compress);
      write_if(lacks(mail), mail);
      write_if(lacks(missingok), missingok);
      if (copytruncate_pending_) {
        write_copytruncate();
      }
    }
    if (lacks(anonymizer) && settings_.anonymize == Switch::on && (!settings_.system_mode || targeted_)) {
      write_anonymizer_block();
    }
    place_ = Place::outside;
    echo(text);
  }

  bool some_kind_is_written_nowhere() {
    for (const Kind kind : {period, rotate, compress, mail}) {
      needed_[kind] = written_[kind] == 0;
    }
    return needed_[period] || needed_[rotate] || needed_[compress] || needed_[mail];
  }

  void default_file() {
    echo("#ATTENTION!\n#\n#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,\n"
         "#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.\n");
    echo("\nallowhardlink\n");
    const bool anonymize = settings_.anonymize == Switch::on;
    default_stanza("*.processed", anonymize);
    default_stanza("error_log", anonymize);
    default_stanza("proxy_error_log", anonymize);
    default_stanza("php-fpm_error.log", false);
  }

  void default_stanza(const std::string& logs, bool anonymize) {
    echo("/var/www/vhosts/system/" + settings_.vhost_name + "/logs/" + logs + " {\n");
    last_period_.clear();
    for (const Kind kind : {period, rotate, compress, mail, missingok}) {
      write(kind);
    }
    write_copytruncate();
    if (anonymize) {
      write_anonymizer_block();
    }
    echo("}\n");
  }

  bool lacks(Kind kind) const { return written_[kind] < stanzas_; }

  void write_if(bool condition, Kind kind) {
    if (condition) {
      write(kind);
    }
  }

  void write(Kind kind, std::string_view pass_through = "") {
    if (kind == period && !settings_.period.empty() && settings_.period == last_period_) {
      return;
    }
    echo(text_of(kind, std::string(pass_through)));
    ++written_[kind];
    if (kind == period) {
      last_period_ = settings_.period;
    }
  }

  void write_copytruncate() {
    echo("\tcopytruncate\n");
    copytruncate_pending_ = false;
  }

  void write_anonymizer_block() {
    echo("\tpostrotate\n");
    write(anonymizer);
    echo("\tendscript\n");
  }

  std::string text_of(Kind kind, const std::string& pass_through) const {
    switch (kind) {
    case period:
      return period_text(pass_through);
    case rotate:
      return settings_.rot_count < 0 ? pass_through : "\trotate " + std::to_string(settings_.rot_count) + "\n";
    case compress:
      return settings_.compress ? "\tcompress\n" : "\tnocompress\n";
    case mail:
      return settings_.email.empty() ? "" : "\tmail " + settings_.email + "\n\tmailfirst\n";
    case missingok:
      return "\tmissingok\n";
    default:
      return "\t\t/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*\n";
    }
  }

  std::string period_text(const std::string& pass_through) const {
    const auto& type = settings_.period_type;
    if (type == "by_size") {
      return "\tsize=" + settings_.period + "\n";
    }
    if (type == "by_time") {
      return "\t" + settings_.period + "\n";
    }
    return type.empty() ? pass_through : throw std::runtime_error("Unknown rotation type: " + type);
  }

  const std::string_view input_;
  const RewriteJob& job_;
  const RotationSettings& settings_ = job_.settings;
  std::string output_;
  Place place_ = Place::outside;
  int stanzas_ = 0;
  std::array<int, kinds> written_{};
  std::array<bool, kinds> needed_{}; // To be written at each stanza head of the second pass.
  bool copytruncate_pending_ = false;
  bool targeted_ = true;
  std::string last_period_;
};

} // namespace

std::string plain_rewrite(std::string_view input, const RewriteJob& job) {
  try {
    return PlainRewrite(input, job).run();
  } catch (const std::runtime_error& error) {
    return std::string("error: ") + error.what();
  }
}

} // namespace tavek
