#include "rotation/rewriter.h"

#include "rotation/rewrite_context.h"
#include "rotation/rotation_scanner.h"

namespace tavek {

ScannerInput open_scanner_streams(const RewriteJob& job, const FileReplacement& replacement) {
  ScannerInput input(job.config_path);
  replacement.require_open();
  return input;
}

void rewrite(const RewriteJob& job, FileReplacement& replacement) {
  RewriteContext context(job, replacement.output());
  RotationScanner scanner(context);
  const auto scan_target = [&] {
    ScannerInput input = open_scanner_streams(job, replacement);
    input.read();
    scanner.scan(input);
  };
  scan_target();
  if (context.end_of_input()) {
    replacement.output().restart();
    scan_target();
  }
}

} // namespace tavek
