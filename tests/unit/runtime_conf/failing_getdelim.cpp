#include "unit/runtime_conf/failing_getdelim.h"

#include <cerrno>
#include <cstdio>
#include <sys/types.h>

namespace {

int lines_left = 0;

} // namespace

// The linker's names: --wrap=NAME turns a reference to NAME into __wrap_NAME, and __real_NAME into one to NAME.
extern "C" {

ssize_t real_getdelim(char** line, size_t* size, int delimiter, FILE* file) __asm__("__real_getdelim");
ssize_t getdelim_or_fail(char** line, size_t* size, int delimiter, FILE* file) __asm__("__wrap_getdelim");

ssize_t getdelim_or_fail(char** line, size_t* size, int delimiter, FILE* file) {
  if (lines_left > 0 && --lines_left == 0) {
    errno = ENOMEM;
    return -1;
  }
  return real_getdelim(line, size, delimiter, file);
}
}

namespace tavek::test {

FailingGetdelim::FailingGetdelim(int nth) {
  lines_left = nth;
}

FailingGetdelim::~FailingGetdelim() {
  lines_left = 0;
}

} // namespace tavek::test
