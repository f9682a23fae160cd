#pragma once

#include <exception>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "driver/driver.h"
#include "runtime_conf/runtime_conf.h"
#include "support/temporary_directory.h"
#include "unit/driver/command_line.h"

namespace tavek {

/// Whole runs of the tool in this process, on files that are named by absolute paths in a directory of the test's own.
/// That directory also holds the root of the virtual hosts and is the current one. A category run cleans the machine's
/// own logs unless it is told to keep them, so here it always is.
class DriverRun : public testing::Test {
protected:
  DriverRun() {
    runtime_conf_reset();
    runtime_conf_use_file(configuration.c_str());
    std::filesystem::current_path(directory.path());
  }
  ~DriverRun() override {
    std::filesystem::current_path(directory_before_);
    runtime_conf_use_file(nullptr);
    runtime_conf_reset();
    umask(mask_before_);
  }

  void run_tool(std::vector<std::string> words) const {
    words.insert(words.begin(), directory / "tool");
    const CommandLine line(std::move(words));
    run(line.argc(), line.argv());
  }

  /// What a run throws, or "done".
  std::string complaint(const std::vector<std::string>& words) const {
    try {
      run_tool(words);
    } catch (const std::exception& error) {
      return error.what();
    }
    return "done";
  }

  /// Makes a file whose directories may be missing.
  void write_below(const std::string& name, const std::string& content) const {
    std::filesystem::create_directories(std::filesystem::path(directory / name).parent_path());
    directory.write(name, content);
  }

  /// The files beside the target, by name.
  std::vector<std::string> others() const {
    std::vector<std::string> names = directory.names();
    std::erase(names, "target");
    std::erase(names, "oru.conf");
    return names;
  }

  const TemporaryDirectory directory;
  const std::string target = directory / "target";
  const std::string configuration = directory.write("oru.conf", "HTTPD_VHOSTS_D " + directory / "vhosts" + "\n");

private:
  const std::filesystem::path directory_before_ = std::filesystem::current_path();
  const mode_t mask_before_ = umask(022);
};

} // namespace tavek
