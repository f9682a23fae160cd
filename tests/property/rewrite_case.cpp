#include "rewrite_case.h"

#include <numeric>
#include <ostream>

namespace tavek {
namespace {

constexpr std::size_t kLongPiece = 16;

rc::Seq<std::string> halves(const std::string& piece) {
  return piece.size() < kLongPiece ? rc::Seq<std::string>() : rc::seq::just(piece.substr(0, piece.size() / 2));
}

rc::Seq<RewriteCase> smaller_cases(const RewriteCase& rewrite) {
  auto pieces =
      rc::seq::concat(rc::shrink::removeChunks(rewrite.pieces), rc::shrink::eachElement(rewrite.pieces, halves));
  return rc::seq::map(std::move(pieces), [job = rewrite.job](std::vector<std::string>&& fewer) {
    return RewriteCase{std::move(fewer), job};
  });
}

} // namespace

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

rc::Gen<RewriteCase> rewrite_cases(MakeRewriteCase make) {
  return [make](const rc::Random& random, int size) {
    Dice dice(random);
    return rc::shrinkable::shrinkRecur(make(dice, static_cast<std::size_t>(size)),
                                       [](const RewriteCase& rewrite) { return smaller_cases(rewrite); });
  };
}

} // namespace tavek
