/* Preloaded into a program to make its allocations fail.

   FAIL_ALLOCATION=N        the Nth allocation after the initialisation of the shared libraries fails; N starts at 1
   FAIL_ALLOCATION=N+       the Nth allocation and all later ones fail
   COUNT_ALLOCATIONS=FILE   the number of allocations is written to FILE at exit */

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

/* The C library's own functions. */
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

static int armed;
static long allocations;
static long first;
static int from_then_on;

/* Runs after the constructors of the shared libraries, so their allocations are not counted. */
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
