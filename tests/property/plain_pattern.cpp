#include "plain_pattern.h"

#include <initializer_list>

namespace tavek::plain_pattern {
namespace {

/// Takes the parts of a pattern one after another from the front of a text. A part that is missing spoils the match.
class Match {
public:
  explicit Match(std::string_view text) : text_(text) {}

  Match& blanks() {
    while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t')) {
      ++at_;
    }
    return *this;
  }

  Match& some_blanks() {
    const auto before = at_;
    blanks();
    return require(at_ > before);
  }

  Match& optional(std::string_view word) {
    at_ += takes(word) ? word.size() : 0;
    return *this;
  }

  Match& one_of(std::initializer_list<std::string_view> words) {
    for (const auto word : words) {
      if (takes(word)) {
        at_ += word.size();
        return *this;
      }
    }
    return require(false);
  }

  Match& word(std::string_view word) { return one_of({word}); }

  /// Everything before the next `end`; it may be nothing, and is all that is left where there is none.
  Match& until(char end) {
    const auto stop = text_.find(end, at_);
    at_ = stop == std::string_view::npos ? text_.size() : stop;
    return *this;
  }

  Match& require(bool condition) {
    matches_ = matches_ && condition;
    return *this;
  }

  std::size_t length() const { return matches_ ? at_ : 0; }

private:
  bool takes(std::string_view word) const { return text_.substr(at_, word.size()) == word; }

  std::string_view text_;
  std::size_t at_ = 0;
  bool matches_ = true;
};

} // namespace

std::size_t comment(std::string_view rest) {
  return Match(rest).word("#").until('\n').length();
}

std::size_t stanza_head(std::string_view rest) {
  return Match(rest).word("/").until('{').word("{\n").length();
}

std::size_t period(std::string_view rest) {
  return Match(rest).blanks().one_of({"size", "daily", "weekly", "monthly"}).until('\n').word("\n").length();
}

std::size_t rotate(std::string_view rest) {
  return Match(rest).blanks().word("rotate").some_blanks().until('\n').word("\n").length();
}

std::size_t compress(std::string_view rest) {
  return Match(rest).blanks().optional("no").word("compress").blanks().word("\n").length();
}

std::size_t missingok(std::string_view rest) {
  return Match(rest).blanks().optional("no").word("missingok").blanks().word("\n").length();
}

std::size_t copytruncate(std::string_view rest) {
  return Match(rest).blanks().word("copytruncate").blanks().word("\n").length();
}

std::size_t mail(std::string_view rest) {
  return Match(rest).blanks().word("mail").some_blanks().until('\n').word("\n").length();
}

std::size_t mail_which(std::string_view rest) {
  return Match(rest).blanks().word("mail").one_of({"first", "last"}).blanks().word("\n").length();
}

std::size_t postrotate(std::string_view rest) {
  return Match(rest).blanks().word("postrotate").blanks().word("\n").length();
}

// The command is the line's first word: a path with something between its first '/' and its last component.
std::size_t anonymizer(std::string_view rest) {
  const auto start = Match(rest).blanks().length();
  const auto command = rest.substr(start, rest.substr(start).find_first_of(" \t\n"));
  constexpr std::string_view last = "/anonymize_ip";
  const bool is_anonymizer = command.starts_with("/") && command.ends_with(last) && command.size() > last.size() + 1;
  return Match(rest).require(is_anonymizer).blanks().word(command).some_blanks().until('\n').word("\n").length();
}

std::size_t endscript(std::string_view rest) {
  return Match(rest).blanks().word("endscript").blanks().word("\n").length();
}

std::size_t closing_brace(std::string_view rest) {
  return Match(rest).word("}").length();
}

std::size_t any_byte(std::string_view rest) {
  return rest.empty() ? 0 : 1;
}

} // namespace tavek::plain_pattern
