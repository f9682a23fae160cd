#pragma once

// The scoped way to start from scratch: each test of a fixture derived from this begins with the facility as at process
// start and without its environment variables, and leaves nothing behind.

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
};

} // namespace tavek::test
