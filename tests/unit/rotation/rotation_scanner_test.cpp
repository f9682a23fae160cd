// What the rules match and write is tested in tests/property and tests/cases.

#include "rotation/rotation_scanner.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <new>

#include "support/call_fault.h"

namespace tavek {

namespace {

TEST(RotationScanner, ThrowsIfItCannotBeAllocated) {
  const RewriteJob job;
  OutputStream output;
  RewriteContext context(job, output);
  const CallFault fault(Call::allocation, ENOMEM);
  EXPECT_THROW(RotationScanner{context}, std::bad_alloc);
}

} // namespace

} // namespace tavek
