#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "support/temporary_directory.h"

namespace tavek::test {

/// What an action says on standard error.
std::string complaints_of(const std::function<void()>& action);

/// A folder with logs; it is the configured root of the virtual hosts.
class CleanupFixture : public testing::Test {
protected:
  CleanupFixture();
  ~CleanupFixture() override;

  /// Makes empty files, with their folders.
  void given(const std::set<std::string>& names) const;
  /// The files and links below the folder.
  std::set<std::string> remaining() const;
  std::string path_of(const std::string& name) const { return root / name; }
  std::string not_a_number(const std::string& suffix, const std::string& name) const;
  std::string not_only_a_number(const std::string& suffix, const std::string& name) const;

  TemporaryDirectory root;

private:
  TemporaryDirectory conf_folder_;
  std::string conf_ = conf_folder_.write("oru.conf", "HTTPD_VHOSTS_D " + root.path() + "\n");
};

} // namespace tavek::test
