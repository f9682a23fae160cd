#include "rewrites.h"

#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>

#include "file/file_descriptor.h"
#include "file/output_stream.h"
#include "rotation/rewrite_context.h"
#include "rotation/rotation_scanner.h"

namespace tavek {
namespace {

/// A file without a directory entry. It is reused because creating one takes longer than rewriting a short file.
class MemoryFile {
public:
  std::string path() const { return "/proc/self/fd/" + std::to_string(fd_.get()); }

  void set_content(std::string_view content) const {
    const auto size = static_cast<off_t>(content.size());
    if (ftruncate(fd_.get(), size) == -1 || pwrite(fd_.get(), content.data(), content.size(), 0) != size) {
      throw std::logic_error("cannot write a memory file");
    }
  }

  std::string content() const {
    std::string content(static_cast<std::size_t>(lseek(fd_.get(), 0, SEEK_END)), '\0');
    if (pread(fd_.get(), content.data(), content.size(), 0) != static_cast<ssize_t>(content.size())) {
      throw std::logic_error("cannot read a memory file");
    }
    return content;
  }

  /// A second descriptor, which the stream will close. Its position is the start of the file.
  FileDescriptor rewound() const {
    lseek(fd_.get(), 0, SEEK_SET);
    return FileDescriptor(dup(fd_.get()));
  }

private:
  FileDescriptor fd_{memfd_create("rotation_file", MFD_CLOEXEC)};
};

// Like rewrite(), without a temporary file.
void scan(const RewriteJob& job, OutputStream& output) {
  RewriteContext context(job, output);
  RotationScanner scanner(context);
  const auto scan_source = [&] {
    ScannerInput input(job.config_path);
    input.read();
    scanner.scan(input);
  };
  scan_source();
  if (context.end_of_input()) {
    output.restart();
    scan_source();
  }
}

} // namespace

std::string production_rewrite(std::string_view input, RewriteJob job) {
  static const MemoryFile source;
  static const MemoryFile result;
  source.set_content(input);
  result.set_content("");
  job.config_path = source.path();
  OutputStream output;
  output.open(result.rewound());
  try {
    scan(job, output);
  } catch (const std::runtime_error& error) {
    return std::string("error: ") + error.what();
  }
  output.finish();
  return output.error() == 0 ? result.content() : "error: cannot write";
}

} // namespace tavek
