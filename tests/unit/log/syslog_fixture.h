#pragma once

#include <cerrno>
#include <string>
#include <vector>

#include "unit/log/fresh_log_state.h"
#include "unit/log/recorded_syslog.h"

namespace tavek::test {

using Calls = std::vector<std::string>;

/// A fresh log state in a process whose short name is "logtool". No syslog calls are recorded yet.
class SyslogFixture : public FreshLogState {
protected:
  SyslogFixture() {
    program_invocation_short_name = short_name_;
    syslog_calls().clear();
  }
  ~SyslogFixture() override { program_invocation_short_name = original_; }

  /// The syslog calls for a report with the format "%s!".
  static Calls calls_of_report(int level, const char* text) {
    syslog_calls().clear();
    log_state().log_hook(level, "%s!", text);
    return syslog_calls();
  }

private:
  char* original_ = program_invocation_short_name;
  char short_name_[8] = "logtool";
};

} // namespace tavek::test
