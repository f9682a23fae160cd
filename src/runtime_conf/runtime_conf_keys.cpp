#include "runtime_conf/runtime_conf_keys.h"

#include <iterator>

#include "runtime_conf/product_root.h"
#include "runtime_conf/runtime_conf.h"

namespace tavek {

const RuntimeConfKeyRow kRuntimeConfKeyRows[] = {
    {"_MIN_POSSIBLE_ORU_CONF_VAR_NAME", "_MIN_POSSIBLE_ORU_CONF_VAR_VALUE"},
    {"TAVEK_MAILNAMES_D", "/var/qmail/mailnames"},
    {"RBLSMTPD", "/usr/sbin/rblsmtpd"},
    {"CLIENT_PHP_BIN", TAVEK_PRODUCT_ROOT "/bin/php-cli"},
    {"LIB_CRYPTO_PATH", "/lib/libcrypto.so"},
    {"LIB_SSL_PATH", "/lib/libssl.so"},
    {"AWSTATS_DOC_D", "/usr/share/awstats"},
    {"AWSTATS_TOOLS_D", "/usr/share/awstats/tools"},
    {"AWSTATS_BIN_D", "/usr/lib/cgi-bin"},
    {"AWSTATS_ETC_D", "/etc/awstats"},
    {"MAILMAN_VAR_D", "/var/lib/mailman3"},
    {"MAILMAN_ROOT_D", "/usr/lib/mailman3"},
    {"PGSQL_DATA_D", "/var/lib/postgresql/13/main"},
    {"PGSQL_BIN_D", "/usr/lib/postgresql/13/bin"},
    {"MYSQL_BIN_D", "/usr/bin"},
    {"MYSQL_VAR_D", "/var/lib/mysql"},
    {"WEB_STAT", "/usr/bin/webalizer"},
    {"DUMP_D", "/var/lib/oru/dumps"},
    {"DUMP_TMP_D", "/tmp"},
    {"NAMED_RUN_ROOT_D", "/var/named/run-root"},
    {"HTTPD_BIN", "/usr/sbin/apache2"},
    {"HTTPD_SERVICE", "apache2"},
    {"HTTPD_LOG_D", "/var/log/apache2"},
    {"HTTPD_INCLUDE_D", "/etc/apache2/conf-enabled"},
    {"HTTPD_CONF_D", "/etc/apache2"},
    {"HTTPD_VHOSTS_D", "/var/www/vhosts"},
    {"MYSQL_SOCKET", "/var/run/mysqld/mysqld.sock"},
    {"SA_MAX_MAIL_SIZE", "256000"},
    {"SNI_SUPPORT", "true"},
    {"PRODUCT_ROOT_D", TAVEK_PRODUCT_ROOT},
    {"_MAX_POSSIBLE_ORU_CONF_VAR_NAME", "_MAX_POSSIBLE_ORU_CONF_VAR_VALUE"},
    {nullptr, nullptr},
};

static_assert(std::size(kRuntimeConfKeyRows) == kRuntimeConfKeys + 1, "one row per key, and the end");

} // namespace tavek
