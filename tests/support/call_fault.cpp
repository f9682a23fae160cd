#include "support/call_fault.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tavek {

namespace {

CallFault* armed = nullptr;

} // namespace

CallFault::CallFault(Call call, std::function<int()> event, int nth)
    : call_(call), event_(std::move(event)), nth_(nth) {
  armed = this;
}

CallFault::~CallFault() {
  armed = nullptr;
}

bool CallFault::strikes(Call call) {
  if (armed == nullptr || armed->call_ != call || ++armed->calls_ != armed->nth_) {
    return false;
  }
  const int error = armed->event_();
  errno = error != 0 ? error : errno;
  return error != 0;
}

} // namespace tavek

namespace {

using tavek::Call;
using tavek::CallFault;

// The next definition after ours: that of the C library, or that of a sanitizer, which in turn calls the C library.
template <typename Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// File offsets and times have 64 bits, also where a long has 32. So the headers redirect calls, and our definitions, to
// other symbols, such as open64.
constexpr const char* kFstat = sizeof(long) == 8 ? "fstat64" : "__fstat64_time64";

bool allocation_fails() {
  const int before = errno;
  const bool fails = CallFault::strikes(Call::allocation);
  errno = before;
  return fails;
}

} // namespace

extern "C" {

int close(int fd) {
  static auto* const close_next = next<int(int)>("close");
  if (CallFault::strikes(Call::close)) {
    const int error = errno;
    close_next(fd);
    errno = error;
    return -1;
  }
  return close_next(fd);
}

int fchmod(int fd, mode_t mode) noexcept {
  static auto* const fchmod_next = next<int(int, mode_t)>("fchmod");
  return CallFault::strikes(Call::fchmod) ? -1 : fchmod_next(fd, mode);
}

FILE* fdopen(int fd, const char* modes) noexcept {
  static auto* const fdopen_next = next<FILE*(int, const char*)>("fdopen");
  return CallFault::strikes(Call::fdopen) ? nullptr : fdopen_next(fd, modes);
}

int fstat(int fd, struct stat* buf) noexcept {
  static auto* const fstat_next = next<int(int, struct stat*)>(kFstat);
  return CallFault::strikes(Call::fstat) ? -1 : fstat_next(fd, buf);
}

int fsync(int fd) {
  static auto* const fsync_next = next<int(int)>("fsync");
  return CallFault::strikes(Call::fsync) ? -1 : fsync_next(fd);
}

ssize_t getdelim(char** lineptr, size_t* n, int delimiter, FILE* stream) {
  static auto* const getdelim_next = next<ssize_t(char**, size_t*, int, FILE*)>("getdelim");
  return CallFault::strikes(Call::getdelim) ? -1 : getdelim_next(lineptr, n, delimiter, stream);
}

off_t lseek(int fd, off_t offset, int whence) noexcept {
  static auto* const lseek_next = next<off_t(int, off_t, int)>("lseek64");
  return CallFault::strikes(Call::lseek) ? -1 : lseek_next(fd, offset, whence);
}

// In the header the parameter of mkostemp is called `template`, which is a C++ keyword. clang-tidy rejects a
// declaration of mkostemp with another parameter name. So in C++ this function is called temporary_file; its symbol is
// mkostemp64.
int temporary_file(char* name, int flags) asm("mkostemp64");

int temporary_file(char* name, int flags) {
  static auto* const mkostemp_next = next<int(char*, int)>("mkostemp64");
  return CallFault::strikes(Call::mkostemp) ? -1 : mkostemp_next(name, flags);
}

int open(const char* file, int oflag, ...) {
  static auto* const open_next = next<int(const char*, int, ...)>("open64");
  mode_t mode = 0;
  if ((oflag & O_CREAT) != 0) {
    va_list arguments;
    va_start(arguments, oflag);
    mode = va_arg(arguments, mode_t);
    va_end(arguments);
  }
  return CallFault::strikes(Call::open) ? -1 : open_next(file, oflag, mode);
}

// Returns the error instead of setting errno.
int posix_spawn(pid_t* pid, const char* path, const posix_spawn_file_actions_t* file_actions,
                const posix_spawnattr_t* attrp, char* const* argv, char* const* envp) {
  static auto* const posix_spawn_next = next<decltype(posix_spawn)>("posix_spawn");
  return CallFault::strikes(Call::posix_spawn) ? errno : posix_spawn_next(pid, path, file_actions, attrp, argv, envp);
}

ssize_t read(int fd, void* buf, size_t nbytes) {
  static auto* const read_next = next<ssize_t(int, void*, size_t)>("read");
  return CallFault::strikes(Call::read) ? -1 : read_next(fd, buf, nbytes);
}

int remove(const char* filename) noexcept {
  static auto* const remove_next = next<int(const char*)>("remove");
  return CallFault::strikes(Call::remove) ? -1 : remove_next(filename);
}

ssize_t write(int fd, const void* buf, size_t n) {
  static auto* const write_next = next<ssize_t(int, const void*, size_t)>("write");
  return CallFault::strikes(Call::write) ? -1 : write_next(fd, buf, n);
}

// The linker turns a reference to NAME into a reference to __wrap_NAME, and a reference to __real_NAME into a reference
// to NAME.
void* real_malloc(size_t size) asm("__real_malloc");
void* real_calloc(size_t count, size_t size) asm("__real_calloc");
void* real_realloc(void* block, size_t size) asm("__real_realloc");
char* real_strdup(const char* text) asm("__real_strdup");

void* malloc_or_fail(size_t size) asm("__wrap_malloc");
void* calloc_or_fail(size_t count, size_t size) asm("__wrap_calloc");
void* realloc_or_fail(void* block, size_t size) asm("__wrap_realloc");
char* strdup_or_fail(const char* text) asm("__wrap_strdup");

void* malloc_or_fail(size_t size) {
  return allocation_fails() ? nullptr : real_malloc(size);
}
void* calloc_or_fail(size_t count, size_t size) {
  return allocation_fails() ? nullptr : real_calloc(count, size);
}
void* realloc_or_fail(void* block, size_t size) {
  return allocation_fails() ? nullptr : real_realloc(block, size);
}
char* strdup_or_fail(const char* text) {
  return allocation_fails() ? nullptr : real_strdup(text);
}
}
