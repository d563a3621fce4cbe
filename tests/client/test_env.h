// A private runtime directory per test, so that named sockets of different
// tests (and of a helper the user runs) never meet.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

namespace norvane::client::testing {

class PrivateRuntimeDir : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "client-test-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    dir_ = pattern;
    if (const char* old = ::getenv("XDG_RUNTIME_DIR")) old_ = old;
    ::setenv("XDG_RUNTIME_DIR", dir_.c_str(), 1);
  }
  void TearDown() override {
    if (old_.empty()) {
      ::unsetenv("XDG_RUNTIME_DIR");
    } else {
      ::setenv("XDG_RUNTIME_DIR", old_.c_str(), 1);
    }
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }
  const std::filesystem::path& dir() const { return dir_; }

 private:
  std::filesystem::path dir_;
  std::string old_;
};

}  // namespace norvane::client::testing
