// The helper commands of the norvane executable, run as a user runs them:
// a run that launched a helper ends it, unless told to keep it.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <thread>

#include "norvane/wire/socket.h"
#include "test_env.h"

namespace norvane::client {
namespace {

const std::string kCli = NORVANE_BINARY_DIR "/src/cli/norvane";
const std::string kHelper = NORVANE_BINARY_DIR "/bin/norvane-helper";

struct CliRun {
  int status = -1;
  std::string out;
};

CliRun run(const std::string& arguments) {
  CliRun result;
  std::string command = kCli + " " + arguments + " 2>/dev/null";
  FILE* pipe = ::popen(command.c_str(), "r");
  if (!pipe) return result;
  std::array<char, 4096> buffer;
  size_t n;
  while ((n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) result.out.append(buffer.data(), n);
  int status = ::pclose(pipe);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

bool helperAnswers() {
  int fd = wire::connectNamedSocket(wire::kServiceName);
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

class CliTest : public testing::PrivateRuntimeDir {
 protected:
  void SetUp() override {
    if (::access(kCli.c_str(), X_OK) != 0 || ::access(kHelper.c_str(), X_OK) != 0)
      GTEST_SKIP() << "norvane or norvane-helper is not built in " << NORVANE_BINARY_DIR;
    PrivateRuntimeDir::SetUp();
    ::setenv("NORVANE_HELPER", kHelper.c_str(), 1);
    file_ = (dir() / "note.txt").string();
    std::ofstream(file_) << "Minutes of the harbour board\n";
  }
  void TearDown() override {
    if (IsSkipped()) return;
    run("helper stop");
    ::unsetenv("NORVANE_HELPER");
    PrivateRuntimeDir::TearDown();
  }
  std::string file_;
};

TEST_F(CliTest, ARunEndsTheHelperItLaunched) {
  CliRun text = run("text " + file_);
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.out, "Minutes of the harbour board\n");
  EXPECT_FALSE(helperAnswers());
  EXPECT_EQ(run("helper status").status, 1);
}

TEST_F(CliTest, KeepHelperLeavesItRunningAndTheNextRunUsesIt) {
  EXPECT_EQ(run("supports --keep-helper " + file_).out, file_ + ": yes\n");
  ASSERT_TRUE(helperAnswers());
  CliRun status = run("helper status");
  EXPECT_EQ(status.status, 0);
  EXPECT_NE(status.out.find("is running"), std::string::npos);
  // A run that found the helper running leaves it so.
  EXPECT_EQ(run("supports " + file_).status, 0);
  EXPECT_TRUE(helperAnswers());
  EXPECT_EQ(run("helper stop").status, 0);
  EXPECT_FALSE(helperAnswers());
}

TEST_F(CliTest, StartStopAndStatus) {
  EXPECT_EQ(run("helper status").status, 1);
  CliRun start = run("helper start");
  EXPECT_EQ(start.status, 0);
  EXPECT_NE(start.out.find("started"), std::string::npos);
  EXPECT_NE(run("helper start").out.find("already running"), std::string::npos);
  CliRun json = run("helper status --json");
  EXPECT_NE(json.out.find("\"running\": true"), std::string::npos);
  EXPECT_EQ(run("helper stop").status, 0);
  EXPECT_EQ(run("helper status").status, 1);
  EXPECT_EQ(run("helper stop").status, 0);  // not running is no error
  EXPECT_EQ(run("helper restart").status, 2);
}

TEST_F(CliTest, MetadataOutputs) {
  CliRun human = run("metadata " + file_);
  EXPECT_EQ(human.status, 0);
  EXPECT_NE(human.out.find("kMDItemTextContent: Minutes of the harbour board\n"), std::string::npos);
  CliRun json = run("metadata --json " + file_ + " " + (dir() / "missing.txt").string());
  EXPECT_NE(json.out.find("\"kMDItemTextContent\": \"Minutes of the harbour board\\n\""), std::string::npos);
  EXPECT_TRUE(json.out.find("missing.txt\": null") != std::string::npos ||
              json.out.find("missing.txt\": {}") != std::string::npos)
      << json.out;
  EXPECT_EQ(run("text " + (dir() / "missing.txt").string()).status, 1);
  EXPECT_FALSE(helperAnswers());
}

}  // namespace
}  // namespace norvane::client
