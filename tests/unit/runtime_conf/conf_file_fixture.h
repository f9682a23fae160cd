#pragma once

#include <string>

#include "runtime_conf/runtime_conf_file.h"
#include "support/temporary_directory.h"
#include "unit/runtime_conf/fresh_store.h"

namespace tavek::test {

/// Reads files with given content into a fresh store.
class ConfFileFixture : public FreshStore {
protected:
  int read(const std::string& content) {
    return runtime_conf_read_file(folder.write("oru.conf", content).c_str(), store);
  }
  /// The value that a file gives to KEY.
  std::string value_of(const std::string& content) {
    runtime_conf_set("KEY", "(unset)", store);
    EXPECT_EQ(read(content), 0);
    return found("KEY");
  }

  TemporaryDirectory folder;
};

} // namespace tavek::test
