#include "rotation/switch.h"

#include <istream>
#include <ostream>
#include <stdexcept>
#include <string>

namespace tavek {

namespace {

struct Spelling {
  std::string_view word;
  Switch value;
};

constexpr Spelling kSpellings[] = {
    {"on", Switch::on}, {"true", Switch::on}, {"off", Switch::off}, {"false", Switch::off}, {"keep", Switch::keep},
};

} // namespace

std::string_view to_text(Switch value) {
  switch (value) {
  case Switch::keep:
    return "keep";
  case Switch::on:
    return "on";
  case Switch::off:
    return "off";
  }
  throw std::invalid_argument("unknown Switch state");
}

std::ostream& operator<<(std::ostream& stream, Switch value) {
  return stream << to_text(value);
}

std::istream& operator>>(std::istream& stream, Switch& value) {
  std::string word;
  stream >> word;
  for (const Spelling& spelling : kSpellings) {
    if (spelling.word == word) {
      value = spelling.value;
      return stream;
    }
  }
  stream.setstate(std::ios_base::failbit);
  return stream;
}

} // namespace tavek
