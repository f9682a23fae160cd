/* Runs a command COUNT times, one run after another. Prints the average wall time of a run, its average user and
   system time (both in microseconds), its average number of page faults, and the peak memory of the largest run in KiB.

       spawn COUNT PROGRAM [ARGUMENT ...]

   A '%d' in the first argument is replaced with the number of the run, starting at 0. This program is itself small and
   static: until a child executes its own program, the memory of its parent counts as the memory of the child. */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static double seconds_of(struct timeval time) { return (double)time.tv_sec + (double)time.tv_usec / 1e6; }

static double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

static int run(char **argv) {
  int status = 0;
  const pid_t child = vfork();
  if (child == 0) {
    execvp(argv[0], argv);
    _exit(127);
  }
  return child == -1 || waitpid(child, &status, 0) == -1 || status != 0;
}

int main(int argc, char **argv) {
  char name[256];
  struct rusage used;
  if (argc < 3) {
    return 2;
  }
  const int count = atoi(argv[1]);
  char *numbered = argc > 3 ? strstr(argv[3], "%d") : NULL;
  const char *tail = numbered != NULL ? numbered + 2 : "";
  const double start = now();
  for (int i = 0; i < count; ++i) {
    if (numbered != NULL) {
      snprintf(name, sizeof(name), "%.*s%d%s", (int)(numbered - argv[3]), argv[3], i, tail);
    }
    char *first = argv[3];
    argv[3] = numbered != NULL ? name : first;
    if (run(argv + 2) != 0) {
      return 1;
    }
    argv[3] = first;
  }
  const double wall = now() - start;
  getrusage(RUSAGE_CHILDREN, &used);
  printf("%.2f %.2f %.2f %ld\n", wall / count * 1e6, (seconds_of(used.ru_utime) + seconds_of(used.ru_stime)) / count * 1e6,
         (double)used.ru_minflt / count, used.ru_maxrss);
  return 0;
}
