#pragma once

// The message of an exception.

#include <exception>
#include <string>

namespace tavek {

/// Runs `action` and returns the message of the Error that it throws, or "nothing thrown". Does not catch any other
/// exception.
template <typename Error = std::exception, typename Action>
std::string thrown_by(const Action& action) {
  try {
    action();
  } catch (const Error& error) {
    return error.what();
  }
  return "nothing thrown";
}

} // namespace tavek
