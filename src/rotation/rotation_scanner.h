#pragma once

// The scanner of rotation files; its rules are in rotation_scanner.l.

#include "rotation/rewrite_context.h"
#include "rotation/scanner_input.h"

namespace tavek {

/// Owns the generated scanner and reports what it recognises to a context, which is borrowed and may throw. The start
/// condition (outside a stanza, in a stanza, in a script) carries over from one input to the next.
class RotationScanner {
public:
  /// Throws std::bad_alloc.
  explicit RotationScanner(RewriteContext& context);
  ~RotationScanner();
  RotationScanner(const RotationScanner&) = delete;
  RotationScanner& operator=(const RotationScanner&) = delete;

  /// Scans a whole input, which must start at the beginning of a line, and uses it as the scanner's buffer. Throws
  /// ScannerFatalError and anything the context throws; the scanner can then only be destroyed.
  void scan(ScannerInput& input);

private:
  RewriteContext& context_;
  void* scanner_ = nullptr;
};

} // namespace tavek
