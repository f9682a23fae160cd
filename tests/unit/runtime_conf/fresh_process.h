#pragma once

#include <string>

#include "runtime_conf/runtime_conf.h"
#include "support/temporary_directory.h"
#include "unit/runtime_conf/recorded_reports.h"

namespace tavek::test {

/// Begins as a process does that has loaded nothing yet; the file is one of the test's own and absent at first.
class FreshProcess : public RecordedReports {
protected:
  FreshProcess() { start_from_scratch(path.c_str()); }
  ~FreshProcess() override { start_from_scratch(nullptr); }

  static void start_from_scratch(const char* file) {
    runtime_conf_reset();
    runtime_conf_use_file(file);
  }
  void write(const std::string& content) { folder.write("oru.conf", content); }
  Reports cannot_open() const {
    return {{12, "unable to open configuration file " + path + ": No such file or directory\n"}};
  }
  Reports unknown(const std::string& name) const {
    return {{3, "variable '" + name + "' was found neither in " + path + ", nor in compile-time defaults"}};
  }

  TemporaryDirectory folder;
  std::string path = folder / "oru.conf";
};

} // namespace tavek::test
