#pragma once

// The test program has its own remove(), which the C++ library calls too: a removal that the system refuses, whoever
// the tests run as.

#include <string>

namespace tavek::test {

/// While it lives, removing that path fails with EACCES; everything else is removed as ever.
class RefusedRemoval {
public:
  explicit RefusedRemoval(const std::string& path);
  ~RefusedRemoval();
  RefusedRemoval(const RefusedRemoval&) = delete;
  RefusedRemoval& operator=(const RefusedRemoval&) = delete;
};

} // namespace tavek::test
