#pragma once

// Lets the memory for the line buffer run out, which happens inside the C library.

namespace tavek::test {

/// While it lives, the line number `nth`, counted from 1, is not read: getdelim returns -1 with ENOMEM, and the stream
/// is neither at its end nor in error.
class FailingGetdelim {
public:
  explicit FailingGetdelim(int nth);
  ~FailingGetdelim();
  FailingGetdelim(const FailingGetdelim&) = delete;
  FailingGetdelim& operator=(const FailingGetdelim&) = delete;
};

} // namespace tavek::test
