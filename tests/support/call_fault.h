#pragma once

// Makes one call to the C library fail. Use it for a system error that a test cannot cause at the right moment with a
// real file, mode or limit.
//
// The test program defines the functions of `Call` itself. So a call from the code under test or from the C++ library
// arrives here first and is passed on unless a fault strikes it. Allocations are different: a definition of malloc
// would replace the allocator of the address sanitizer. So the linker redirects the calls to the allocation functions.
// It does not redirect calls inside shared libraries.

#include <functional>

namespace tavek {

/// The functions that can fail; `allocation` stands for malloc, calloc, realloc and strdup.
enum class Call {
  allocation,
  close,
  fchmod,
  fdopen,
  fstat,
  fsync,
  getdelim,
  lseek,
  mkostemp,
  open,
  posix_spawn,
  read,
  remove,
  write
};

/// Strikes one call to a function: the `nth` call after the construction of this object, by default the first. Only one
/// fault may exist at a time.
class CallFault {
public:
  /// The call fails with `error`. A failing close still closes the descriptor, as it does in the kernel. A failing
  /// allocation leaves errno unchanged, so that a test sees whether the code sets it.
  CallFault(Call call, int error, int nth = 1)
      : CallFault(
            call, [error] { return error; }, nth) {}

  /// Runs `event` right before the call. If `event` returns an error, the call fails with it; if `event` returns 0, the
  /// call is made normally.
  CallFault(Call call, std::function<int()> event, int nth = 1);
  ~CallFault();
  CallFault(const CallFault&) = delete;
  CallFault& operator=(const CallFault&) = delete;

  /// Whether the fault has struck.
  bool happened() const { return calls_ >= nth_; }

  /// Returns whether this call must fail; if so, errno is set. The replacement functions call this.
  static bool strikes(Call call);

private:
  const Call call_;
  const std::function<int()> event_;
  const int nth_;
  int calls_ = 0;
};

} // namespace tavek
