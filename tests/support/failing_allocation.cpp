#include "support/failing_allocation.h"

#include <cstddef>

namespace {

int calls_so_far = 0;
int failing_call = 0;

bool fails_now() {
  ++calls_so_far;
  return calls_so_far == failing_call;
}

} // namespace

// The linker's names: --wrap=NAME turns a reference to NAME into __wrap_NAME, and __real_NAME into one to NAME.
extern "C" {

void* real_malloc(std::size_t size) __asm__("__real_malloc");
void* real_calloc(std::size_t count, std::size_t size) __asm__("__real_calloc");
void* real_realloc(void* block, std::size_t size) __asm__("__real_realloc");
char* real_strdup(const char* text) __asm__("__real_strdup");

void* malloc_or_fail(std::size_t size) __asm__("__wrap_malloc");
void* calloc_or_fail(std::size_t count, std::size_t size) __asm__("__wrap_calloc");
void* realloc_or_fail(void* block, std::size_t size) __asm__("__wrap_realloc");
char* strdup_or_fail(const char* text) __asm__("__wrap_strdup");

void* malloc_or_fail(std::size_t size) {
  return fails_now() ? nullptr : real_malloc(size);
}
void* calloc_or_fail(std::size_t count, std::size_t size) {
  return fails_now() ? nullptr : real_calloc(count, size);
}
void* realloc_or_fail(void* block, std::size_t size) {
  return fails_now() ? nullptr : real_realloc(block, size);
}
char* strdup_or_fail(const char* text) {
  return fails_now() ? nullptr : real_strdup(text);
}
}

namespace tavek::test {

FailingAllocation::FailingAllocation(int nth) {
  calls_so_far = 0;
  failing_call = nth;
}

FailingAllocation::~FailingAllocation() {
  failing_call = 0;
}

int FailingAllocation::calls() const {
  return calls_so_far;
}

} // namespace tavek::test
