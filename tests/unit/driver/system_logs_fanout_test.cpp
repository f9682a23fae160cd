#include "driver/system_logs_fanout.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <system_error>

#include "support/call_fault.h"
#include "support/thrown.h"

namespace tavek {

namespace {

TEST(SystemLogsFanout, ReportsAFailedForkLikeAFailedExec) {
  const CallFault fault(Call::posix_spawn, EAGAIN);
  const char* const words[] = {"/opt/oru/admin/sbin/tavek-logrotate", nullptr};
  const Options options = parse_options(1, words).value();
  EXPECT_EQ(thrown_by<std::system_error>([&] { SystemLogsFanout("/bin/true", options).run(); }),
            "execve failed: Resource temporarily unavailable");
}

} // namespace

} // namespace tavek
