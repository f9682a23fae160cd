#include "io_trouble.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Trouble {
  std::minstd_rand random;
  int reads = 0;

  std::size_t below(std::size_t count) { return random() % count; }

  // One byte up to all that is wanted, more often few than many.
  std::size_t short_count(std::size_t wanted) { return below(3) == 0 ? wanted : std::min(wanted, 1 + below(1000)); }
};

std::optional<Trouble> trouble;

} // namespace

// The linker is told to bind the program's calls of read() and so on to these, which get by with the real ones.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {
ssize_t __real_read(int fd, void* to, std::size_t count);
ssize_t __real_write(int fd, const void* from, std::size_t count);
int __real_fstat(int fd, struct stat* status);

ssize_t __wrap_read(int fd, void* to, std::size_t count) {
  if (!trouble) {
    return __real_read(fd, to, count);
  }
  ++trouble->reads;
  if (trouble->below(4) == 0) {
    errno = EINTR;
    return -1;
  }
  return __real_read(fd, to, trouble->short_count(count));
}

ssize_t __wrap_write(int fd, const void* from, std::size_t count) {
  return __real_write(fd, from, trouble ? trouble->short_count(count) : count);
}

int __wrap_fstat(int fd, struct stat* status) {
  const int result = __real_fstat(fd, status);
  if (trouble && result == 0) {
    status->st_size = static_cast<off_t>(trouble->below(2 * static_cast<std::size_t>(status->st_size) + 1));
  }
  return result;
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace tavek {

IoTrouble::IoTrouble(std::uint64_t seed) {
  trouble.emplace(Trouble{std::minstd_rand(static_cast<std::uint32_t>(seed))});
}

IoTrouble::~IoTrouble() {
  trouble.reset();
}

int IoTrouble::reads() const {
  return trouble->reads;
}

} // namespace tavek
