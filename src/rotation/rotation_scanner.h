#pragma once

// The scanner of rotation files, whose rules are in rotation_scanner.l.

#include "rotation/input_text.h"
#include "rotation/rewrite_context.h"

namespace tavek {

/// Owns the generated scanner. What it recognises it hands to a context, which is borrowed and may throw. Where it is
/// in the file's structure (outside stanzas, in one, in a script) stays as it is from one text to the next.
class RotationScanner {
public:
  /// Throws std::bad_alloc.
  explicit RotationScanner(RewriteContext& context);
  ~RotationScanner();
  RotationScanner(const RotationScanner&) = delete;
  RotationScanner& operator=(const RotationScanner&) = delete;

  /// Scans a text from the beginning of a line to its end. The text is used as the scanner's buffer. Throws
  /// ScannerFatalError, and whatever the context throws; the scanner can then only be destroyed.
  void scan(InputText& text);

private:
  void* scanner_ = nullptr;
};

} // namespace tavek
