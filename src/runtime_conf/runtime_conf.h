#pragma once

// The panel's runtime configuration: the paths of its installation by key, with compile-time defaults.
//
// The file /etc/oru/oru.conf is loaded once per process; while it cannot be loaded, every call tries again. Returned
// strings are borrowed: they point into the store or the table of defaults and are valid until the process ends.
// Problems are reported through `log_hook`. A missing or malformed file is never fatal because every key has a default.
// Not thread-safe.

namespace tavek {

/// The configuration file.
inline constexpr const char* kRuntimeConfPath = "/etc/oru/oru.conf";

/// The keys, in the order of their table. The first and the last are sentinels that mark the ends of the range.
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

/// The number of keys, including the sentinels.
inline constexpr int kRuntimeConfKeys = MAX_POSSIBLE_ORU_CONF_VAR + 1;

/// Loads the file. Returns 0 if it is loaded, now or by an earlier call, or -1 with errno set if it cannot be loaded;
/// the next call then tries again.
int runtime_conf_load();

/// Returns the value of a key: the file's value if the file defines it, otherwise the compile-time default. Never null.
/// `index` is not range-checked.
const char* runtime_conf_get(int index);

/// Returns the file's value of a key, or null if the file does not define it or cannot be loaded.
const char* runtime_conf_file_value(int index);

/// Returns runtime_conf_get() for the key with this name. If the name is unknown, reports this and returns null.
const char* runtime_conf_get_by_name(const char* name);

/// Returns the file's value of any name, even one that is not a key. Returns null if the file does not define the name
/// or cannot be loaded.
const char* runtime_conf_lookup(const char* name);

/// Discards everything loaded and cached, as in a new process. For tests.
void runtime_conf_reset();

/// Makes the next load read `path`, which is borrowed; null restores the default path. For tests.
void runtime_conf_use_file(const char* path);

} // namespace tavek
