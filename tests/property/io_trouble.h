#pragma once

// What a system call may do to whoever reads and writes files.

#include <cstdint>

namespace tavek {

/// While one lives, each read() and write() of this program moves only a few bytes, a read() is interrupted now and
/// then, and fstat() tells a size that the file does not have. There is one at a time.
class IoTrouble {
public:
  explicit IoTrouble(std::uint64_t seed);
  ~IoTrouble();
  IoTrouble(const IoTrouble&) = delete;
  IoTrouble& operator=(const IoTrouble&) = delete;

  /// How often read() has been called, to tell that the trouble gets where it is meant to.
  int reads() const;
};

} // namespace tavek
