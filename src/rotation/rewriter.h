#pragma once

// The rewrite of one rotation file.

#include "file/file_replacement.h"
#include "rotation/rotation_settings.h"
#include "rotation/scanner_input.h"

namespace tavek {

/// Opens and reads the file that a job rewrites, and makes sure that there is a file to write to. Throws
/// std::runtime_error "Failed to open ..." for either, or what ScannerInput throws.
ScannerInput open_scanner_streams(const RewriteJob& job, const FileReplacement& replacement);

/// Copies the job's file into the replacement, managed directives replaced, missing ones added. Needs one pass over the
/// file, or two. Throws what open_scanner_streams and the scanner throw; the target is not touched.
void rewrite(const RewriteJob& job, FileReplacement& replacement);

} // namespace tavek
