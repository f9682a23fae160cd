#include "driver/system_logs_fanout.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <system_error>

#include "support/call_fault.h"
#include "support/thrown.h"
#include "unit/driver/command_line.h"

namespace tavek {

namespace {

TEST(SystemLogsFanout, ReportsAFailedForkLikeAFailedExec) {
  const CallFault fault(Call::posix_spawn, EAGAIN);
  EXPECT_EQ(thrown_by<std::system_error>([] { SystemLogsFanout("/bin/true", options_of({})).run(); }),
            "execve failed: Resource temporarily unavailable");
}

} // namespace

} // namespace tavek
