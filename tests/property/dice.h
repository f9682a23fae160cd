#pragma once

// The choices of a generator.

#include <cstddef>
#include <iterator>
#include <rapidcheck.h>

namespace tavek {

/// Draws from one of rapidcheck's random numbers, which a seed repeats. Faster by far than a generator for each choice.
class Dice {
public:
  explicit Dice(const rc::Random& random) : random_(random) {}

  /// 0 up to `count` - 1.
  std::size_t below(std::size_t count) { return static_cast<std::size_t>(random_.next() % count); }

  bool one_in(std::size_t count) { return below(count) == 0; }
  bool coin() { return one_in(2); }

  /// An element of a table.
  template <typename Table>
  const auto& of(const Table& table) {
    return *(std::begin(table) + below(std::size(table)));
  }

private:
  rc::Random random_;
};

} // namespace tavek
