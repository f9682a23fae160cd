#pragma once

// Replaces a file as a whole: readers see either the old content or the new, never a part.

#include <cstdlib>
#include <memory>
#include <string>

#include "file/output_stream.h"

namespace tavek {

/// A temporary file beside its target. It is first written, then completed, then renamed over the target. The
/// destructor removes the temporary file unless the rename was attempted. If the rename fails, the complete temporary
/// file remains, so that the administrator can move it into place.
class FileReplacement {
public:
  /// Creates the temporary file: the target's name, a dot and six characters; mode 0644. require_open() reports a
  /// failure to create it. Throws std::bad_alloc.
  explicit FileReplacement(const std::string& target);
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  /// Throws std::runtime_error if the temporary file could not be created.
  void require_open() const;

  OutputStream& output() { return output_; }

  /// Flushes, syncs and closes the temporary file. Throws std::runtime_error if one of these steps or an earlier write
  /// failed.
  void complete();

  /// Renames the temporary file over the target and syncs the directory. Throws std::filesystem::filesystem_error if
  /// the rename fails. Throws std::runtime_error if the directory cannot be opened, or if its sync fails. After a
  /// failed sync the new file is in place, but it may not survive a power loss.
  void rename_over_target();

private:
  struct Free {
    void operator()(char* text) const { std::free(text); }
  };
  using HeapText = std::unique_ptr<char, Free>;

  static HeapText temporary_name(const std::string& target);
  int create();

  const std::string target_;
  const HeapText temp_path_;
  OutputStream output_;
  int create_error_ = 0;
  bool owns_temporary_file_ = false;
};

} // namespace tavek
