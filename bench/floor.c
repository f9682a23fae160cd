/* The floor: the lowest possible cost of one run on a machine. A minimal static C program that makes the same edit as

       tavek-logrotate NAME on by_time PERIOD COUNT true

   in a file whose stanzas lack no directive. It reads the configuration file, uses six patterns to search for surplus
   copies of logs, and replaces the file with a copy that has the new values. It has no options, checks no values and
   reports no errors. It is only a reference for measurements, not a usable program. */

#define _GNU_SOURCE
#include <fcntl.h>
#include <glob.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#define BEGINS(text, word) (memcmp(text, word, sizeof(word) - 1) == 0)

enum { ROOM = 65536, PATH_ROOM = 4096 };

static char vhosts[PATH_ROOM] = "/var/www/vhosts";
static char input[ROOM];
static char output[ROOM];
static char *end = output;

static int check(int result) {
  if (result == -1) {
    exit(1);
  }
  return result;
}

static void read_configuration(void) {
  FILE *file = fopen("/etc/oru/oru.conf", "re");
  char *line = NULL;
  size_t room = 0;
  ssize_t length;
  while (file != NULL && (length = getline(&line, &room, file)) != -1) {
    if (length < PATH_ROOM && BEGINS(line, "HTTPD_VHOSTS_D ")) {
      line[length - 1] = '\0';
      strcpy(vhosts, line + sizeof("HTTPD_VHOSTS_D ") - 1);
    }
  }
  if (file != NULL) {
    fclose(file);
  }
}

static void remove_surplus_copies(const char *directory, const char *name, const char *pattern, int count) {
  char path[2 * PATH_ROOM];
  glob_t copies;
  stpcpy(stpcpy(stpcpy(stpcpy(stpcpy(path, vhosts), directory), name), "/logs/"), pattern);
  if (glob(path, GLOB_MARK, NULL, &copies) == 0) {
    for (size_t i = 0; i < copies.gl_pathc; ++i) {
      if (atoi(strrchr(copies.gl_pathv[i], '.') + 1) > count) {
        unlink(copies.gl_pathv[i]);
      }
    }
  }
  globfree(&copies);
}

static void clean(const char *name, int count) {
  static const char *const directories[] = {"/system/", "/"};
  static const char *const patterns[] = {"*.processed.*", "error_log.*", "proxy_error_log.*"};
  for (int d = 0; d < 2; ++d) {
    for (int p = 0; p < 3; ++p) {
      remove_surplus_copies(directories[d], name, patterns[p], count);
    }
  }
}

static void read_input(const char *path) {
  struct stat status;
  const int fd = check(open(path, O_RDONLY | O_CLOEXEC));
  check(fstat(fd, &status));
  if (status.st_size >= ROOM / 2) {
    exit(1);
  }
  for (char *to = input; check((int)read(fd, to, 4096)) > 0; to += status.st_size) {
  }
  close(fd);
}

/* Writes the line from `line` up to `next`, or its replacement. */
static void rewrite_line(const char *line, const char *next, const char *period, const char *count) {
  if (BEGINS(line, "\tdaily\n") || BEGINS(line, "\tweekly\n") || BEGINS(line, "\tmonthly\n")) {
    end = stpcpy(stpcpy(stpcpy(end, "\t"), period), "\n");
  } else if (BEGINS(line, "\trotate ")) {
    end = stpcpy(stpcpy(stpcpy(end, "\trotate "), count), "\n");
  } else if (BEGINS(line, "\tcompress\n") || BEGINS(line, "\tnocompress\n")) {
    end = stpcpy(end, "\tcompress\n");
  } else {
    end = mempcpy(end, line, (size_t)(next - line));
  }
}

static void rewrite(const char *period, const char *count) {
  const char *next;
  for (const char *line = input; *line != '\0'; line = next) {
    next = strchr(line, '\n') + 1;
    rewrite_line(line, next, period, count);
  }
}

int main(int argc, char **argv) {
  char path[PATH_ROOM] = "/opt/oru/etc/logrotate.d/";
  char temporary[PATH_ROOM];
  if (argc != 7 || strlen(argv[1]) > PATH_ROOM / 2) {
    return 1;
  }
  read_configuration();
  umask(022);
  clean(argv[1], atoi(argv[5]));
  strcat(path, argv[1]);
  check(close(check(open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644))));
  strcpy(stpcpy(temporary, path), ".XXXXXX");
  const int fd = check(mkostemp(temporary, O_CLOEXEC));
  check(fchmod(fd, 0644));
  read_input(path);
  rewrite(argv[4], argv[5]);
  check((int)write(fd, output, (size_t)(end - output)));
  check(fsync(fd));
  check(close(fd));
  const int directory = check(open("/opt/oru/etc/logrotate.d/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  check(rename(temporary, path));
  check(fsync(directory));
  return 0;
}
