#include "runtime_conf/runtime_conf_keys.h"

#include <gtest/gtest.h>

#include "runtime_conf/runtime_conf.h"

namespace tavek {

namespace {

// Other programs of the panel know each key by its number, its name and its default.
struct KnownKey {
  int index;
  RuntimeConfKey key;
  const char* name;
  const char* value;
};

const KnownKey kKnownKeys[] = {
    {0, MIN_POSSIBLE_ORU_CONF_VAR, "_MIN_POSSIBLE_ORU_CONF_VAR_NAME", "_MIN_POSSIBLE_ORU_CONF_VAR_VALUE"},
    {1, TAVEK_MAILNAMES_D, "TAVEK_MAILNAMES_D", "/var/qmail/mailnames"},
    {2, RBLSMTPD, "RBLSMTPD", "/usr/sbin/rblsmtpd"},
    {3, CLIENT_PHP_BIN, "CLIENT_PHP_BIN", "/opt/oru/bin/php-cli"},
    {4, LIB_CRYPTO_PATH, "LIB_CRYPTO_PATH", "/lib/libcrypto.so"},
    {5, LIB_SSL_PATH, "LIB_SSL_PATH", "/lib/libssl.so"},
    {6, AWSTATS_DOC_D, "AWSTATS_DOC_D", "/usr/share/awstats"},
    {7, AWSTATS_TOOLS_D, "AWSTATS_TOOLS_D", "/usr/share/awstats/tools"},
    {8, AWSTATS_BIN_D, "AWSTATS_BIN_D", "/usr/lib/cgi-bin"},
    {9, AWSTATS_ETC_D, "AWSTATS_ETC_D", "/etc/awstats"},
    {10, MAILMAN_VAR_D, "MAILMAN_VAR_D", "/var/lib/mailman3"},
    {11, MAILMAN_ROOT_D, "MAILMAN_ROOT_D", "/usr/lib/mailman3"},
    {12, PGSQL_DATA_D, "PGSQL_DATA_D", "/var/lib/postgresql/13/main"},
    {13, PGSQL_BIN_D, "PGSQL_BIN_D", "/usr/lib/postgresql/13/bin"},
    {14, MYSQL_BIN_D, "MYSQL_BIN_D", "/usr/bin"},
    {15, MYSQL_VAR_D, "MYSQL_VAR_D", "/var/lib/mysql"},
    {16, WEB_STAT, "WEB_STAT", "/usr/bin/webalizer"},
    {17, DUMP_D, "DUMP_D", "/var/lib/oru/dumps"},
    {18, DUMP_TMP_D, "DUMP_TMP_D", "/tmp"},
    {19, NAMED_RUN_ROOT_D, "NAMED_RUN_ROOT_D", "/var/named/run-root"},
    {20, HTTPD_BIN, "HTTPD_BIN", "/usr/sbin/apache2"},
    {21, HTTPD_SERVICE, "HTTPD_SERVICE", "apache2"},
    {22, HTTPD_LOG_D, "HTTPD_LOG_D", "/var/log/apache2"},
    {23, HTTPD_INCLUDE_D, "HTTPD_INCLUDE_D", "/etc/apache2/conf-enabled"},
    {24, HTTPD_CONF_D, "HTTPD_CONF_D", "/etc/apache2"},
    {25, HTTPD_VHOSTS_D, "HTTPD_VHOSTS_D", "/var/www/vhosts"},
    {26, MYSQL_SOCKET, "MYSQL_SOCKET", "/var/run/mysqld/mysqld.sock"},
    {27, SA_MAX_MAIL_SIZE, "SA_MAX_MAIL_SIZE", "256000"},
    {28, SNI_SUPPORT, "SNI_SUPPORT", "true"},
    {29, PRODUCT_ROOT_D, "PRODUCT_ROOT_D", "/opt/oru"},
    {30, MAX_POSSIBLE_ORU_CONF_VAR, "_MAX_POSSIBLE_ORU_CONF_VAR_NAME", "_MAX_POSSIBLE_ORU_CONF_VAR_VALUE"},
};

TEST(RuntimeConfKeys, HaveTheNumbersAndNamesAndDefaultsThatOtherProgramsKnow) {
  for (const KnownKey& known : kKnownKeys) {
    EXPECT_EQ(known.key, known.index);
    EXPECT_STREQ(kRuntimeConfKeyRows[known.index].name, known.name);
    EXPECT_STREQ(kRuntimeConfKeyRows[known.index].value, known.value);
  }
}

TEST(RuntimeConfKeys, EndWithARowOfNullPointers) {
  EXPECT_EQ(kRuntimeConfKeys, 31);
  EXPECT_EQ(kRuntimeConfKeyRows[31].name, nullptr);
  EXPECT_EQ(kRuntimeConfKeyRows[31].value, nullptr);
}

} // namespace

} // namespace tavek
