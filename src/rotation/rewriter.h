#pragma once

// Rewrites one rotation file.

#include "file/file_replacement.h"
#include "rotation/rotation_settings.h"
#include "rotation/scanner_input.h"

namespace tavek {

/// Opens the file that a job rewrites, then checks that the replacement is open. Throws std::runtime_error "Failed to
/// open ..." for either file. Nothing has been read yet, so a replacement that is not open is reported even if the file
/// turns out to be a directory.
ScannerInput open_scanner_streams(const RewriteJob& job, const FileReplacement& replacement);

/// Copies the job's file into the replacement; managed directives are replaced and missing ones added. Makes one or two
/// passes over the file. Does not touch the target. Throws the exceptions of open_scanner_streams, of
/// ScannerInput and of the scanner.
void rewrite(const RewriteJob& job, FileReplacement& replacement);

} // namespace tavek
