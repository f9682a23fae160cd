#include "unit/cleanup/cleanup_fixture.h"

#include "runtime_conf/runtime_conf.h"

namespace tavek::test {

std::string complaints_of(const std::function<void()>& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

CleanupFixture::CleanupFixture() {
  runtime_conf_reset();
  runtime_conf_use_file(conf_.c_str());
}

CleanupFixture::~CleanupFixture() {
  runtime_conf_reset();
  runtime_conf_use_file(nullptr);
}

void CleanupFixture::given(const std::set<std::string>& names) const {
  for (const std::string& name : names) {
    std::filesystem::create_directories(std::filesystem::path(path_of(name)).parent_path());
    root.write(name, "");
  }
}

std::set<std::string> CleanupFixture::remaining() const {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root.path())) {
    if (entry.is_symlink() || !entry.is_directory()) {
      names.insert(entry.path().lexically_relative(root.path()).string());
    }
  }
  return names;
}

std::string CleanupFixture::not_a_number(const std::string& suffix, const std::string& name) const {
  return "Failed to parse suffix '" + suffix + "' (" + path_of(name) + ")\n";
}

std::string CleanupFixture::not_only_a_number(const std::string& suffix, const std::string& name) const {
  return "Failed to parse suffix '" + suffix + "' completely (" + path_of(name) + ")\n";
}

} // namespace tavek::test
