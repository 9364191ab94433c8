/** A folder of its own for each test, and the failure a call ends with. */
#ifndef ZAREL_TESTS_APPS_APP_SUPPORT_H
#define ZAREL_TESTS_APPS_APP_SUPPORT_H

#include "failure.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace apptest {

/** A fixture with a fresh folder that goes away behind the test. */
class InFolder : public ::testing::Test {
protected:
  InFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "zarel-app-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    folder_ = name;
  }
  ~InFolder() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  std::string path(const std::string& name) const { return (folder_ / name).string(); }

  std::string write(const std::string& name, const std::string& text) const {
    std::ofstream(path(name), std::ios::binary) << text;
    return path(name);
  }

  std::string read(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  bool exists(const std::string& name) const { return std::filesystem::exists(path(name)); }

  /** Files in the folder. */
  int count() const {
    const std::filesystem::directory_iterator files(folder_);
    return static_cast<int>(std::distance(begin(files), end(files)));
  }

  std::filesystem::path folder_;
};

/** The failure that `call` ends with; fails the test if there is none. */
template <class Call>
app::Failure failureOf(Call call) {
  try {
    call();
  } catch (const app::Failure& failure) {
    return failure;
  }
  ADD_FAILURE() << "nothing was thrown";
  return {app::ExitCode::done, ""};
}

} // namespace apptest

#endif
