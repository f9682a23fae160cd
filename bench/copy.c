/* Shows the cost of reading and writing alone: copies a file in pieces of 64 KiB without examining its contents. */

#include <fcntl.h>
#include <unistd.h>

int main(int argc, char **argv) {
  static char buffer[65536];
  ssize_t got = 0;
  if (argc != 3) {
    return 1;
  }
  const int from = open(argv[1], O_RDONLY);
  const int to = open(argv[2], O_WRONLY | O_CREAT | O_TRUNC, 0644);
  while ((got = read(from, buffer, sizeof(buffer))) > 0) {
    if (write(to, buffer, (size_t)got) != got) {
      return 1;
    }
  }
  return from == -1 || to == -1 || got == -1;
}
