#include "rewrite_case.h"

#include <numeric>
#include <rapidcheck.h>

namespace tavek {

std::string RewriteCase::text() const {
  return std::accumulate(pieces.begin(), pieces.end(), std::string());
}

std::ostream& operator<<(std::ostream& out, const RewriteCase& rewrite) {
  const RotationSettings& settings = rewrite.job.settings;
  rc::show(rewrite.text(), out);
  out << "\nperiod_type ";
  rc::show(settings.period_type, out);
  out << ", period ";
  rc::show(settings.period, out);
  out << ", rot_count " << settings.rot_count << ", email ";
  rc::show(settings.email, out);
  out << ", compress " << settings.compress << ", anonymize " << settings.anonymize << ", system_mode "
      << settings.system_mode << ", vhost_name ";
  rc::show(settings.vhost_name, out);
  out << ", select_targets " << rewrite.job.select_targets << ", target_logs ";
  rc::show(rewrite.job.target_logs, out);
  return out;
}

} // namespace tavek
