#include "unit/runtime_conf/counted_comparisons.h"

namespace {

int comparisons = 0;

} // namespace

// The linker's names: --wrap=NAME turns a reference to NAME into __wrap_NAME, and __real_NAME into one to NAME.
extern "C" {

int real_strcmp(const char* left, const char* right) __asm__("__real_strcmp");
int strcmp_counted(const char* left, const char* right) __asm__("__wrap_strcmp");

int strcmp_counted(const char* left, const char* right) {
  ++comparisons;
  return real_strcmp(left, right);
}
}

namespace tavek::test {

int comparisons_of(const std::function<void()>& action) {
  const int before = comparisons;
  action();
  return comparisons - before;
}

} // namespace tavek::test
