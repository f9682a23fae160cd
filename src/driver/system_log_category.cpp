#include "driver/system_log_category.h"

#include <algorithm>

#include "runtime_conf/product_root.h"

namespace tavek {

namespace {

constexpr const char* kApacheLogs[] = {"/var/log/apache2/*.log"};
constexpr const char* kNginxLogs[] = {"/var/log/nginx/*.log"};
constexpr const char* kTavekLogs[] = {"/var/log/maillog.processed", "/var/log/tavek/xferlog.processed"};
constexpr const char* kFail2banLogs[] = {"/var/log/fail2ban.log"};
constexpr const char* kModsecurityLogs[] = {"/var/log/modsec_audit.log"};

constexpr SystemLogCategory kCategories[] = {
    {"apache-logs", "/etc/logrotate.d/apache2", kApacheLogs, false},
    {"nginx-logs", "/etc/logrotate.d/nginx", kNginxLogs, false},
    {"tavek-logs", TAVEK_PRODUCT_ROOT "/etc/logrotate.conf", kTavekLogs, true},
    {"fail2ban-logs", "/etc/logrotate.d/fail2ban", kFail2banLogs, false},
    {"modsecurity-logs", "/etc/logrotate.d/mod_security", kModsecurityLogs, false},
};

} // namespace

std::span<const SystemLogCategory> system_log_categories() {
  return kCategories;
}

const SystemLogCategory* selected_category(const Options& options) {
  const auto* row = std::find_if(std::begin(kCategories), std::end(kCategories),
                                 [&](const SystemLogCategory& category) { return options.flag(category.option); });
  return row != std::end(kCategories) ? row : nullptr;
}

} // namespace tavek
