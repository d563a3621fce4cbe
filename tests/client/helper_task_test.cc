#include "norvane/client/helper_task.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <fstream>

#include "fake_helper.h"
#include "norvane/core/log.h"
#include "test_env.h"

namespace norvane::client {
namespace {

using testing::FakeServer;
using testing::selfExecutable;

constexpr const char* kName = "test.helper";

// Launches of the fake helper are this test executable started with
// NORVANE_FAKE_HELPER set; each start appends a line to a log file.
class HelperTaskTest : public testing::PrivateRuntimeDir {
 protected:
  void SetUp() override {
    PrivateRuntimeDir::SetUp();
    startLog_ = (dir() / "starts").string();
    ::setenv("NORVANE_FAKE_HELPER", kName, 1);
    ::setenv("NORVANE_FAKE_HELPER_LOG", startLog_.c_str(), 1);
    ::unsetenv("NORVANE_FAKE_HELPER_MODE");
  }
  void TearDown() override {
    ::unsetenv("NORVANE_FAKE_HELPER");
    ::unsetenv("NORVANE_FAKE_HELPER_LOG");
    ::unsetenv("NORVANE_FAKE_HELPER_MODE");
    PrivateRuntimeDir::TearDown();
  }
  void setMode(const char* mode) { ::setenv("NORVANE_FAKE_HELPER_MODE", mode, 1); }
  int starts() const {
    std::ifstream in(startLog_);
    int lines = 0;
    for (std::string line; std::getline(in, line);) ++lines;
    return lines;
  }
  std::unique_ptr<HelperTask> makeTask(const std::string& path = selfExecutable()) {
    return HelperTask::create(path, kName, Protocol::ImExportXPC, 5.0, kQualityOfServiceDefault);
  }

 private:
  std::string startLog_;
};

bool processExists(pid_t pid) {
  return ::kill(pid, 0) == 0;
}

TEST_F(HelperTaskTest, NeedsAPathAndAName) {
  LogCapture log;
  EXPECT_EQ(HelperTask::create("", "some.name", Protocol::ImExportXPC, 1, -1), nullptr);
  EXPECT_EQ(HelperTask::create("/bin/true", "", Protocol::ImExportXPC, 1, -1), nullptr);
  EXPECT_EQ(log.messages(), (std::vector<std::string>{"Helper missing: some.name", "Helper missing: "}));
}

TEST_F(HelperTaskTest, LaunchesConnectsAndReusesTheHelper) {
  auto task = makeTask();
  ASSERT_NE(task, nullptr);
  auto proxy = task->proxy();
  ASSERT_TRUE(proxy.has_value());
  EXPECT_TRUE(proxy->ping());
  const pid_t pid = task->launchedProcessIdentifier();
  EXPECT_GT(pid, 0);
  EXPECT_EQ(proxy->connection()->peerProcessIdentifier(), pid);
  EXPECT_EQ(proxy->connection()->replyTimeout(), 5.0);
  EXPECT_EQ(task->failedAttempts(), 0u);
  EXPECT_EQ(task->numberOfConnections(), 1u);

  auto again = task->proxy();
  ASSERT_TRUE(again.has_value());
  EXPECT_EQ(again->connection(), proxy->connection());
  EXPECT_TRUE(again->supportsFile(Value(String::fromUtf8("/a.txt"))));
  EXPECT_EQ(starts(), 1);
  EXPECT_FALSE(task->stillBusy());  // the helper does not offer it
}

TEST_F(HelperTaskTest, TwoFailedConnectionsGiveUp) {
  setMode("exit");
  auto task = makeTask();
  LogCapture log;
  EXPECT_FALSE(task->proxy().has_value());
  EXPECT_EQ(task->failedAttempts(), 1u);
  EXPECT_FALSE(task->proxy().has_value());
  EXPECT_EQ(task->failedAttempts(), 2u);
  const std::string program = selfExecutable().substr(selfExecutable().rfind('/') + 1);
  EXPECT_EQ(log.messages(), (std::vector<std::string>{"Connection to " + program + " failed.",
                                                      "Connection to " + program + " failed. Giving up."}));
  // Given up: no process is started any more, however often asked.
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(task->proxy().has_value());
  EXPECT_EQ(starts(), 2);
  EXPECT_EQ(log.messages().size(), 2u);
}

TEST_F(HelperTaskTest, TwoFailedLaunchesGiveUp) {
  const std::string missing = (dir() / "no-such-helper").string();
  auto task = makeTask(missing);
  LogCapture log;
  EXPECT_FALSE(task->proxy().has_value());
  EXPECT_FALSE(task->launch().has_value());
  EXPECT_FALSE(task->proxy().has_value());
  EXPECT_EQ(log.messages(), (std::vector<std::string>{"Couldn't launch " + missing + ".",
                                                      "Couldn't launch " + missing + ". Giving up."}));
}

TEST_F(HelperTaskTest, ALaunchAndAConnectionFailureShareOneCount) {
  const std::string script = (dir() / "helper.sh").string();
  // Runs long enough to be seen running, but never registers.
  std::ofstream(script) << "#!/bin/sh\nsleep 0.5\nexit 0\n";
  ::chmod(script.c_str(), 0644);  // not executable yet
  auto task = makeTask(script);
  LogCapture log;
  EXPECT_FALSE(task->proxy().has_value());
  ::chmod(script.c_str(), 0755);
  EXPECT_FALSE(task->proxy().has_value());
  EXPECT_EQ(log.messages(), (std::vector<std::string>{"Couldn't launch " + script + ".",
                                                      "Connection to helper.sh failed. Giving up."}));
}

TEST_F(HelperTaskTest, ASuccessResetsTheFailureCount) {
  auto task = makeTask();
  LogCapture log;
  setMode("exit");
  EXPECT_FALSE(task->proxy().has_value());
  EXPECT_EQ(task->failedAttempts(), 1u);
  setMode("serve");
  EXPECT_TRUE(task->proxy().has_value());
  EXPECT_EQ(task->failedAttempts(), 0u);
  task->interrupt();
  setMode("exit");
  EXPECT_FALSE(task->proxy().has_value());
  EXPECT_EQ(task->failedAttempts(), 1u);
  EXPECT_FALSE(log.contains("Giving up."));
}

TEST_F(HelperTaskTest, ConnectionLimitRestartsTheHelper) {
  auto task = makeTask();
  task->setConnectionLimit(3);
  ASSERT_TRUE(task->proxy().has_value());
  const pid_t first = task->launchedProcessIdentifier();
  EXPECT_EQ(task->numberOfConnections(), 2u);  // the count, then the launch
  ASSERT_TRUE(task->proxy().has_value());      // reaches 3: restart
  const pid_t second = task->launchedProcessIdentifier();
  EXPECT_NE(second, first);
  EXPECT_FALSE(processExists(first));
  EXPECT_EQ(task->numberOfConnections(), 1u);  // counting starts again
  ASSERT_TRUE(task->proxy().has_value());
  EXPECT_EQ(task->launchedProcessIdentifier(), second);
  EXPECT_EQ(starts(), 2);
}

TEST_F(HelperTaskTest, ZeroAndMaximumMeanNoLimit) {
  for (uint64_t limit : {uint64_t{0}, kNoLimit}) {
    auto task = makeTask();
    task->setConnectionLimit(limit);
    task->setCostLimit(limit);
    ASSERT_TRUE(task->proxy().has_value());
    const pid_t pid = task->launchedProcessIdentifier();
    for (int i = 0; i < 5; ++i) {
      ASSERT_TRUE(task->proxy().has_value());
      task->increaseCost(1000);
    }
    EXPECT_EQ(task->launchedProcessIdentifier(), pid);
    EXPECT_EQ(task->numberOfConnections(), 1u);
    EXPECT_EQ(task->totalCost(), 0u);  // not even summed
  }
  EXPECT_EQ(starts(), 2);
}

TEST_F(HelperTaskTest, CostLimitInterruptsTheHelper) {
  auto task = makeTask();
  task->setCostLimit(5);
  ASSERT_TRUE(task->proxy().has_value());
  const pid_t pid = task->launchedProcessIdentifier();
  task->increaseCost(3);
  task->increaseCost(0);
  task->increaseCost();
  EXPECT_EQ(task->totalCost(), 4u);
  EXPECT_TRUE(processExists(pid));
  task->increaseCost();
  EXPECT_EQ(task->launchedProcessIdentifier(), 0);
  EXPECT_FALSE(processExists(pid));
  EXPECT_EQ(task->totalCost(), 0u);
  // The next proxy launches afresh.
  ASSERT_TRUE(task->proxy().has_value());
  EXPECT_NE(task->launchedProcessIdentifier(), pid);
}

TEST_F(HelperTaskTest, InterruptWithoutATaskLeavesTheCounters) {
  FakeServer somebodyElses(kName);
  auto task = makeTask();
  task->setConnectionLimit(100);
  task->setCostLimit(100);
  auto proxy = task->proxy();
  ASSERT_TRUE(proxy.has_value());
  EXPECT_EQ(task->launchedProcessIdentifier(), 0);  // found, not launched
  task->increaseCost(7);
  task->interrupt();
  task->terminate();
  EXPECT_EQ(task->numberOfConnections(), 1u);
  EXPECT_EQ(task->totalCost(), 7u);
  EXPECT_TRUE(proxy->ping());
  EXPECT_EQ(starts(), 0);
  removeConnectionRegisteredWithName(kName);
}

TEST_F(HelperTaskTest, InterruptEndsTheHelperAndForgetsTheConnection) {
  auto task = makeTask();
  auto proxy = task->proxy();
  ASSERT_TRUE(proxy.has_value());
  const pid_t pid = task->launchedProcessIdentifier();
  task->interrupt();
  EXPECT_FALSE(processExists(pid));
  EXPECT_EQ(connectionRegisteredWithName(kName), nullptr);
  EXPECT_FALSE(task->launchedProxyUsingTimeout(1.0).has_value());
  EXPECT_FALSE(task->stillBusy());
  task->waitUntilDone(10.0);  // returns at once without a helper
}

TEST_F(HelperTaskTest, DestructionTerminatesALaunchedHelper) {
  pid_t pid;
  {
    auto task = makeTask();
    ASSERT_TRUE(task->proxy().has_value());
    pid = task->launchedProcessIdentifier();
    EXPECT_TRUE(processExists(pid));
  }
  EXPECT_FALSE(processExists(pid));
}

TEST_F(HelperTaskTest, DetachedHelperOutlivesItsTask) {
  pid_t pid;
  {
    auto task = makeTask();
    ASSERT_TRUE(task->proxy().has_value());
    pid = task->launchedProcessIdentifier();
    task->detach();
    EXPECT_EQ(task->launchedProcessIdentifier(), 0);
  }
  removeConnectionRegisteredWithName(kName);
  auto proxy = rootProxyForConnectionWithRegisteredName(kName, 2.0, Protocol::ImExportXPC);
  ASSERT_TRUE(proxy.has_value());
  EXPECT_EQ(proxy->connection()->peerProcessIdentifier(), pid);
  proxy->terminate();
  int status = 0;
  EXPECT_EQ(::waitpid(pid, &status, 0), pid);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST(FindHelper, EnvironmentOverrides) {
  ::setenv("NORVANE_HELPER", "/bin/true", 1);
  EXPECT_EQ(findHelperExecutable(), "/bin/true");
  ::setenv("NORVANE_HELPER", "/nonexistent/helper", 1);
  EXPECT_EQ(findHelperExecutable(), "");
  ::unsetenv("NORVANE_HELPER");
}

}  // namespace
}  // namespace norvane::client
