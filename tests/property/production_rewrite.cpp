#include "production_rewrite.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/mman.h>

#include "rotation/rewriter.h"
#include "rotation/rotation_scanner.h"

namespace tavek {
namespace {

/// A file in memory.
class MemoryFile {
public:
  explicit MemoryFile(std::string_view content = "") : fd_(memfd_create("file", MFD_CLOEXEC)) {
    if (pwrite(fd_.get(), content.data(), content.size(), 0) != static_cast<ssize_t>(content.size())) {
      throw std::logic_error("The input cannot be written");
    }
  }

  /// A name by which the file can be opened while this object lives.
  std::string path() const { return "/proc/self/fd/" + std::to_string(fd_.get()); }

  /// A second descriptor of the file, for the stream to close.
  FileDescriptor duplicate() const { return FileDescriptor(dup(fd_.get())); }

  std::string content() const {
    std::string text(static_cast<std::size_t>(lseek(fd_.get(), 0, SEEK_END)), '\0');
    if (pread(fd_.get(), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
      throw std::logic_error("The output cannot be read back");
    }
    return text;
  }

private:
  FileDescriptor fd_;
};

/// A directory that goes with all that is in it.
class TemporaryDirectory {
public:
  TemporaryDirectory() {
    std::string name = std::filesystem::temp_directory_path() / "rewrite.XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
      throw std::logic_error("No temporary directory");
    }
    path_ = name;
  }
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

private:
  std::filesystem::path path_;
};

int scan_passes(std::string_view input, const RewriteJob& job, OutputStream& output) {
  RewriteContext context(job, output);
  RotationScanner scanner(context);
  const MemoryFile file(input);
  const auto scan = [&] {
    ScannerInput content(file.path());
    scanner.scan(content);
  };
  scan();
  if (!context.end_of_input()) {
    return 1;
  }
  output.restart();
  scan();
  return 2;
}

std::string file_content(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

} // namespace

RewriteResult rewrite_in_memory(std::string_view input, const RewriteJob& job) {
  const MemoryFile file;
  OutputStream output;
  output.open(file.duplicate());
  try {
    const int passes = scan_passes(input, job, output);
    output.finish();
    return {file.content(), "", passes};
  } catch (const std::runtime_error& error) {
    return {"", error.what(), 0};
  }
}

RewriteResult rewrite_on_disk(std::string_view input, RewriteJob job) {
  const TemporaryDirectory directory;
  job.config_path = directory.path() / "host";
  std::ofstream(job.config_path, std::ios::binary) << input;
  try {
    FileReplacement replacement(job.config_path);
    rewrite(job, replacement);
    replacement.complete();
    replacement.rename_over_target();
    return {file_content(job.config_path), "", 0};
  } catch (const std::runtime_error& error) {
    return {"", error.what(), 0};
  }
}

} // namespace tavek
