#pragma once

// The panel's runtime configuration: where its installation keeps things, by key, with compile-time defaults.
//
// The file /etc/oru/oru.conf is read once per process. Every string returned is borrowed, points into the store or
// the table of defaults and stays valid for the life of the process. Problems are reported through `log_hook`; a
// missing or malformed file is never fatal, since every key has a default. Single-threaded.

namespace tavek {

/// The file that is read.
inline constexpr const char* kRuntimeConfPath = "/etc/oru/oru.conf";

/// The keys, in the order of their tables. The first and the last are sentinels that mark the ends of the range.
enum RuntimeConfKey : int {
  MIN_POSSIBLE_ORU_CONF_VAR,
  TAVEK_MAILNAMES_D,
  RBLSMTPD,
  CLIENT_PHP_BIN,
  LIB_CRYPTO_PATH,
  LIB_SSL_PATH,
  AWSTATS_DOC_D,
  AWSTATS_TOOLS_D,
  AWSTATS_BIN_D,
  AWSTATS_ETC_D,
  MAILMAN_VAR_D,
  MAILMAN_ROOT_D,
  PGSQL_DATA_D,
  PGSQL_BIN_D,
  MYSQL_BIN_D,
  MYSQL_VAR_D,
  WEB_STAT,
  DUMP_D,
  DUMP_TMP_D,
  NAMED_RUN_ROOT_D,
  HTTPD_BIN,
  HTTPD_SERVICE,
  HTTPD_LOG_D,
  HTTPD_INCLUDE_D,
  HTTPD_CONF_D,
  HTTPD_VHOSTS_D,
  MYSQL_SOCKET,
  SA_MAX_MAIL_SIZE,
  SNI_SUPPORT,
  PRODUCT_ROOT_D,
  MAX_POSSIBLE_ORU_CONF_VAR,
};

/// How many keys there are, sentinels included.
inline constexpr int kRuntimeConfKeys = MAX_POSSIBLE_ORU_CONF_VAR + 1;

/// Loads the file. Returns 0 when it is loaded, now or earlier, and -1 with errno set when it could not be; a later
/// call then tries again.
int runtime_conf_load();

/// The value of a key: the file's when the file defines it, else the compile-time default. Never null.
/// `index` is not range-checked.
const char* runtime_conf_get(int index);

/// The file's value of a key, or null when the file does not define it or cannot be loaded.
const char* runtime_conf_file_value(int index);

/// runtime_conf_get() of the key of that name; null, after a report, for a name outside the key set.
const char* runtime_conf_get_by_name(const char* name);

/// The file's value for any name, known key or not; null when it is absent or the file cannot be loaded.
const char* runtime_conf_lookup(const char* name);

/// Forgets what was loaded and cached, as in a process that has just started. For tests.
void runtime_conf_reset();

/// Reads another file than /etc/oru/oru.conf from the next load on; null returns to that one. Borrowed. For tests.
void runtime_conf_use_file(const char* path);

} // namespace tavek
