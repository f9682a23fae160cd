/* Preloaded into a program, makes its allocations fail.

   FAIL_ALLOCATION=N   the Nth one fails, counted from 1 and from the moment when the libraries are ready
   FAIL_ALLOCATION=N+  every one from the Nth on
   COUNT_ALLOCATIONS=FILE   at the end, writes to FILE how many there were */

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

/* The names under which the C library offers its own routines. */
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

static int armed;
static long allocations;
static long first;
static int from_then_on;

/* Runs after the constructors of the libraries that the program needs, which are not the program's own business. */
__attribute__((constructor)) static void arm(void) {
  const char* text = getenv("FAIL_ALLOCATION");
  char* end = NULL;
  first = text != NULL ? strtol(text, &end, 10) : 0;
  from_then_on = end != NULL && *end == '+';
  armed = 1;
}

__attribute__((destructor)) static void report(void) {
  const char* path = getenv("COUNT_ALLOCATIONS");
  int fd = path != NULL ? open(path, O_WRONLY | O_CREAT | O_TRUNC, 0644) : -1;
  armed = 0;
  if (fd != -1) {
    dprintf(fd, "%ld\n", allocations);
    close(fd);
  }
}

static int fails(void) {
  if (!armed) {
    return 0;
  }
  ++allocations;
  if (allocations != first && !(from_then_on && allocations > first)) {
    return 0;
  }
  errno = ENOMEM;
  return 1;
}

void* malloc(size_t size) {
  return fails() ? NULL : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
  return fails() ? NULL : __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) {
  return fails() ? NULL : __libc_realloc(block, size);
}
