#pragma once

// The runtime configuration of one test.

#include <string>

#include "runtime_conf/runtime_conf.h"

namespace tavek {

/// While this object exists, the runtime configuration is read from `path`, as in a process that has not loaded it yet.
class ConfiguredFile {
public:
  explicit ConfiguredFile(const std::string& path) : path_(path) {
    runtime_conf_reset();
    runtime_conf_use_file(path_.c_str());
  }
  ~ConfiguredFile() {
    runtime_conf_reset();
    runtime_conf_use_file(nullptr);
  }
  ConfiguredFile(const ConfiguredFile&) = delete;
  ConfiguredFile& operator=(const ConfiguredFile&) = delete;

private:
  const std::string path_;
};

} // namespace tavek
