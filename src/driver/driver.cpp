#include "driver/driver.h"

#include <cerrno>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "cleanup/rotated_log_cleanup.h"
#include "driver/option_values.h"
#include "driver/options.h"
#include "driver/process_state.h"
#include "driver/system_log_category.h"
#include "driver/system_logs_fanout.h"
#include "file/directory_sync.h"
#include "file/file_replacement.h"
#include "file/target_file.h"
#include "log/base_name.h"
#include "rotation/rewriter.h"
#include "rotation/rotation_settings.h"
#include "runtime_conf/product_root.h"
#include "runtime_conf/runtime_conf.h"

namespace tavek {

namespace {

constexpr const char* kVhostConfigDirectory = TAVEK_PRODUCT_ROOT "/etc/logrotate.d";
constexpr mode_t kFileCreationMask = 022;

// The name of the rotation file as typed, or the default.
std::string configuration_name(const Options& options, const char* by_default) {
  return options.has("vhost-name") ? options.text("vhost-name") : by_default;
}

void resolve_target(const std::string& name, RewriteJob& job) {
  // at() throws if the name is empty, and the user sees the text of that exception.
  if (name.at(0) == '/') {
    job.config_path = name;
    job.settings.vhost_name = base_name(name.c_str());
  } else {
    job.config_path = std::string(kVhostConfigDirectory).append("/").append(name);
    job.settings.vhost_name = name;
  }
}

void run_rewrite(const RewriteJob& job) {
  create_if_missing(job.config_path);
  const TerminationHold hold;
  FileReplacement replacement(job.config_path);
  rewrite(job, replacement);
  replacement.complete();
  if (hold.termination_pending()) {
    // When `hold` is destroyed, the pending signal is delivered and ends the process. So this message is printed only
    // by process 1 of a container, which these signals do not kill.
    throw std::runtime_error("Terminated by a signal");
  }
  replacement.rename_over_target();
}

// A missing file is never an error, even if its directory cannot be opened or synced.
void remove_target(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) == -1 && errno == ENOENT) {
    return;
  }
  const DirectorySync directory(path);
  if (std::filesystem::remove(path)) {
    directory.sync("is removed");
  }
}

void run_virtual_host(const Options& options) {
  RewriteJob job;
  const std::string name = configuration_name(options, "");
  resolve_target(name, job);
  job.settings.anonymize = options.switch_value("anonymize-ip");
  umask(kFileCreationMask);
  const Switch status = options.switch_value("on-off");
  if (status == Switch::off) {
    remove_target(job.config_path);
    return;
  }
  // Only "on" reads and checks settings and cleans up. "keep" deliberately rewrites with the initial settings: periods
  // and rotation counts are kept, but compression is turned off and mail lines are removed.
  if (status == Switch::on) {
    fill_settings(options, job.settings);
  }
  refuse_irreplaceable(job.config_path);
  if (status == Switch::on && !options.flag("keep-old-logs")) {
    clean_vhost_logs(name, job.settings.rot_count);
  }
  run_rewrite(job);
}

void run_category(const SystemLogCategory& category, const Options& options) {
  RewriteJob job;
  const std::string name = configuration_name(options, category.rotation_file);
  // The rotation file of a category has an absolute name. A relative name can only come from the command line: it is
  // looked up in the current directory but edited below the hosts' directory. Both are intended.
  if (!std::filesystem::exists(name)) {
    return; // The service is not installed.
  }
  resolve_target(name, job);
  const std::vector<std::string> cleanup_paths(category.log_paths.begin(), category.log_paths.end());
  job.settings.system_mode = true;
  job.settings.anonymize = options.switch_value("anonymize-ip");
  if (category.select_stanzas) {
    job.target_logs = cleanup_paths;
    job.select_targets = true;
  }
  umask(kFileCreationMask);
  fill_given_settings(options, job.settings);
  refuse_irreplaceable(job.config_path);
  if (!options.flag("keep-old-logs")) {
    clean_target_logs(cleanup_paths, job.settings.rot_count);
  }
  run_rewrite(job);
}

} // namespace

void run(int argc, const char* const* argv) {
  runtime_conf_load(); // A missing file is not an error: every key has a default.
  const std::optional<Options> options = parse_options(argc, argv);
  if (!options) {
    return; // Help has been printed.
  }
  if (options->flag("system-logs")) {
    SystemLogsFanout(argv[0], *options).run();
  } else if (const SystemLogCategory* category = selected_category(*options)) {
    run_category(*category, *options);
  } else {
    run_virtual_host(*options);
  }
}

} // namespace tavek
