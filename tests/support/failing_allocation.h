#pragma once

// Makes an allocation of the code under test fail. For programs that link tavek_failing_allocation, which leads malloc,
// calloc, realloc and strdup of all linked objects here; allocations inside the C library are not seen.

namespace tavek::test {

/// While one of these lives, the call number `nth`, counted from 1, returns null and every other succeeds; with 0 none
/// fails. A failing call leaves errno alone, so that a test sees whether the code sets it. One at a time.
class FailingAllocation {
public:
  explicit FailingAllocation(int nth);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  /// How many calls there were since the construction.
  int calls() const;
};

} // namespace tavek::test
