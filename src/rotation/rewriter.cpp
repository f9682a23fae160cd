#include "rotation/rewriter.h"

#include "rotation/rewrite_context.h"
#include "rotation/rotation_scanner.h"

namespace tavek {

InputText open_scanner_streams(const RewriteJob& job, const FileReplacement& replacement) {
  InputText text = InputText::of_file(job.config_path);
  replacement.require_open();
  return text;
}

void rewrite(const RewriteJob& job, FileReplacement& replacement) {
  RewriteContext context(job, replacement.output());
  RotationScanner scanner(context);
  const auto scan_target = [&] {
    InputText text = open_scanner_streams(job, replacement);
    scanner.scan(text);
  };
  scan_target();
  while (context.end_of_input()) {
    replacement.output().restart();
    scan_target();
  }
}

} // namespace tavek
