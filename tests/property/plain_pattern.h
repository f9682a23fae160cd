#pragma once

// The patterns of plain_rewrite().

#include <cstddef>
#include <initializer_list>
#include <string_view>

namespace tavek::plain_pattern {

/// The words that begin a managed line. Random and exhaustive inputs are made of them.
constexpr std::string_view kManagedWords[] = {"size",   "daily",     "weekly",    "monthly",
                                              "rotate", "compress",  "missingok", "copytruncate",
                                              "mail",   "mailfirst", "maillast",  "postrotate"};

/// Matches the parts of a pattern one after another. There is no match if one of them is missing.
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

  Match& one_of(std::initializer_list<std::string_view> words) {
    for (const auto word : words) {
      if (text_.substr(at_).starts_with(word)) {
        at_ += word.size();
        return *this;
      }
    }
    return require(false);
  }

  Match& word(std::string_view word) { return one_of({word}); }

  /// Matches everything before the next `end`, or the rest of the input if there is none.
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
  std::string_view text_;
  std::size_t at_ = 0;
  bool matches_ = true;
};

/// Each pattern returns the length of its match at the start of `rest`, the unread part of the input, or 0.
using Pattern = std::size_t (*)(std::string_view rest);

/// Blanks, one of `words`, blanks and a newline.
inline std::size_t word_line(std::string_view rest, std::initializer_list<std::string_view> words) {
  return Match(rest).blanks().one_of(words).blanks().word("\n").length();
}

inline std::size_t comment(std::string_view rest) {
  return Match(rest).word("#").until('\n').length();
}

inline std::size_t stanza_head(std::string_view rest) {
  return Match(rest).word("/").until('{').word("{\n").length();
}

inline std::size_t period(std::string_view rest) {
  return Match(rest).blanks().one_of({"size", "daily", "weekly", "monthly"}).until('\n').word("\n").length();
}

inline std::size_t rotate(std::string_view rest) {
  return Match(rest).blanks().word("rotate").some_blanks().until('\n').word("\n").length();
}

inline std::size_t compress(std::string_view rest) {
  return word_line(rest, {"compress", "nocompress"});
}

inline std::size_t missingok(std::string_view rest) {
  return word_line(rest, {"missingok", "nomissingok"});
}

inline std::size_t copytruncate(std::string_view rest) {
  return word_line(rest, {"copytruncate"});
}

inline std::size_t mail(std::string_view rest) {
  return Match(rest).blanks().word("mail").some_blanks().until('\n').word("\n").length();
}

inline std::size_t mail_which(std::string_view rest) {
  return word_line(rest, {"mailfirst", "maillast"});
}

inline std::size_t postrotate(std::string_view rest) {
  return word_line(rest, {"postrotate"});
}

/// The command is the first word of the line, a path with at least one component before the last.
inline std::size_t anonymizer(std::string_view rest) {
  const auto start = Match(rest).blanks().length();
  const auto command = rest.substr(start, rest.substr(start).find_first_of(" \t\n"));
  constexpr std::string_view last = "/anonymize_ip";
  const bool is_anonymizer = command.starts_with("/") && command.ends_with(last) && command.size() > last.size() + 1;
  return Match(rest).require(is_anonymizer).blanks().word(command).some_blanks().until('\n').word("\n").length();
}

inline std::size_t endscript(std::string_view rest) {
  return word_line(rest, {"endscript"});
}

inline std::size_t closing_brace(std::string_view rest) {
  return Match(rest).word("}").length();
}

inline std::size_t any_byte(std::string_view rest) {
  return rest.empty() ? 0 : 1;
}

} // namespace tavek::plain_pattern
