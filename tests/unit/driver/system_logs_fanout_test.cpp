#include "driver/system_logs_fanout.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <system_error>

#include "support/call_fault.h"
#include "support/thrown.h"
#include "unit/driver/command_line.h"

namespace tavek {

namespace {

// If our code did not check for this error, the library would return a child that does not exist but has an exit
// status.
TEST(SystemLogsFanout, ReportsAFailedFork) {
  const CallFault fault(Call::fork, EAGAIN);
  EXPECT_EQ(thrown_by<std::system_error>([] { SystemLogsFanout("/bin/true", options_of({})).run(); }),
            "fork() failed: Resource temporarily unavailable");
}

} // namespace

} // namespace tavek
