#pragma once

// A base class of fixtures. Before each test it resets the log facility to its state at process start and removes its
// environment variables.

#include <cstdarg>
#include <cstdlib>
#include <gtest/gtest.h>

#include "log/log.h"

namespace tavek::test {

class FreshLogState : public testing::Test {
protected:
  FreshLogState() { start_from_scratch(); }
  ~FreshLogState() override { start_from_scratch(); }

  static void start_from_scratch() {
    log_state() = LogState{};
    unsetenv("TAVEK_LOG_LEVEL");
    unsetenv("TAVEK_LOG_TRACE_ID");
  }

  /// Reports through log_vhook, as a caller with a va_list does.
  __attribute__((format(printf, 2, 3))) static void call_vhook(int level, const char* format, ...) {
    va_list args;
    va_start(args, format);
    log_state().log_vhook(level, format, args);
    va_end(args);
  }
};

} // namespace tavek::test
