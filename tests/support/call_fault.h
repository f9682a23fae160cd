#pragma once

// Faults of the operating system that no file or limit can bring about at will.
//
// The test program defines these calls of the C library itself, so that the code under test reaches them first. They
// pass everything on unless a test has armed a fault.

#include <functional>

namespace tavek {

enum class Call { close, fchmod, fork, fstat, fsync, lseek, mkostemp, open, read, write };

/// Strikes the next call of one function, once. One fault at a time.
class CallFault {
public:
  /// The call fails with `error`. A close that fails closes all the same, as the kernel's does.
  CallFault(Call call, int error) : CallFault(call, [error] { return error; }) {}

  /// `event` happens right before the call, which fails with the error that it returns, or is made when that is 0.
  CallFault(Call call, std::function<int()> event);
  ~CallFault();
  CallFault(const CallFault&) = delete;
  CallFault& operator=(const CallFault&) = delete;

  /// Whether the call was made.
  bool happened() const { return happened_; }

  /// Tells an armed fault of a call. Returns whether that is to fail; errno is then set.
  static bool strikes(Call call);

private:
  const Call call_;
  const std::function<int()> event_;
  bool happened_ = false;
};

} // namespace tavek
