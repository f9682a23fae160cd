#include "rewrite_result.h"

#include <ostream>
#include <rapidcheck.h>

namespace tavek {

std::ostream& operator<<(std::ostream& out, const RewriteResult& result) {
  out << "\n";
  rc::show(result.text, out);
  return out << " after " << result.passes << " passes, error \"" << result.error << "\"\n";
}

} // namespace tavek
