// Code under test that calls exit(0) would end its test program as if all tests had passed. Here it fails instead; a
// death test's child may exit as it likes.

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

pid_t running_tests = 0;

void refuse_early_exit() {
  if (getpid() == running_tests) {
    std::fputs("The tests were ended before their end.\n", stderr);
    _exit(EXIT_FAILURE);
  }
}

class EarlyExit : public testing::Environment {
public:
  void SetUp() override {
    running_tests = getpid();
    std::atexit(refuse_early_exit);
  }
  void TearDown() override { running_tests = 0; }
};

// Where there is no memory for it there are no tests. NOLINTNEXTLINE(cert-err58-cpp)
const testing::Environment* const kEarlyExit = testing::AddGlobalTestEnvironment(new EarlyExit);

} // namespace
