#include "driver/option_values.h"

#include <stdexcept>
#include <string>

namespace tavek {

namespace {

void check_time_period(const std::string& period) {
  if (period != "daily" && period != "weekly" && period != "monthly") {
    throw std::invalid_argument("Invalid logrotation period value: should be 'daily', 'weekly' or 'monthly'");
  }
}

// Rejects only text that std::stoll cannot convert. logrotate checks the rest: signs, leading blanks, a unit as in 10M.
// The number itself is not used.
void check_size_period(const std::string& period) {
  try {
    static_cast<void>(std::stoll(period));
  } catch (const std::invalid_argument&) {
    throw std::invalid_argument("Logrotation period value should be unsigned integer: " + period);
  } catch (const std::out_of_range&) {
    throw std::invalid_argument("Logrotation period value is out of range: " + period);
  }
}

void check_period(const std::string& period_type, const std::string& period) {
  if (period_type == "by_time") {
    check_time_period(period);
  } else if (period_type == "by_size") {
    check_size_period(period);
  } else {
    throw std::invalid_argument("Invalid logrotation period type: should be 'by_time' or 'by_size'");
  }
}

} // namespace

void fill_settings(const Options& options, RotationSettings& settings) {
  settings.period_type = options.text("period-type");
  settings.period = options.text("period");
  settings.rot_count = options.number("rot-count");
  settings.email = options.text("email");
  settings.compress = options.switch_value("compress") == Switch::on;
  check_period(settings.period_type, settings.period);
}

void fill_given_settings(const Options& options, RotationSettings& settings) {
  if (options.has("period-type")) {
    settings.period_type = options.text("period-type");
  }
  if (options.has("period")) {
    settings.period = options.text("period");
  }
  settings.rot_count = options.number("rot-count"); // -1 unless given.
}

} // namespace tavek
