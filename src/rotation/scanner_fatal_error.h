#pragma once

#include <stdexcept>

namespace tavek {

/// The input cannot be read or is too large to scan. The program ends as it would after a generated scanner's own fatal
/// error: with the message on standard error and exit status 2.
class ScannerFatalError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
  static constexpr int kExitStatus = 2;
};

} // namespace tavek
