#pragma once

// Makes one call of the C library fail. Use it for an error of the system that no real file, mode or limit can cause
// exactly when a test needs it.
//
// The test program defines these functions itself, so a call from the code under test or from the C++ library arrives
// here first and is passed on unless a fault strikes it. Only allocations are redirected by the linker instead, in the
// linked objects alone: a definition of malloc would replace the allocator of the address sanitizer.

#include <functional>

namespace tavek {

/// The functions that can fail; `allocation` stands for malloc, calloc, realloc and strdup.
enum class Call { allocation, close, fchmod, fork, fstat, fsync, getdelim, lseek, mkostemp, open, read, remove, write };

/// Strikes one call of a function: the next one, or the one with number `nth` from now on. Only one fault may exist at
/// a time.
class CallFault {
public:
  /// The call fails with `error`. A failing close still closes, as the kernel's does. A failing allocation leaves errno
  /// unchanged, so that a test sees whether the code sets it.
  CallFault(Call call, int error, int nth = 1)
      : CallFault(
            call, [error] { return error; }, nth) {}

  /// Runs `event` right before the call. The call fails with the error that `event` returns, or is made if that is 0.
  CallFault(Call call, std::function<int()> event, int nth = 1);
  ~CallFault();
  CallFault(const CallFault&) = delete;
  CallFault& operator=(const CallFault&) = delete;

  /// Whether the fault has struck.
  bool happened() const { return calls_ >= nth_; }

  /// Called by the stand-ins: whether this call must fail. If so, errno is set.
  static bool strikes(Call call);

private:
  const Call call_;
  const std::function<int()> event_;
  const int nth_;
  int calls_ = 0;
};

} // namespace tavek
