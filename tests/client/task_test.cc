#include "norvane/client/task.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>

#include "test_env.h"

namespace norvane::client {
namespace {

class TaskTest : public testing::PrivateRuntimeDir {
 protected:
  std::string read(const std::string& name) {
    std::ifstream in(dir() / name);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }
};

TEST_F(TaskTest, ExitStatusDecidesSuccess) {
  EXPECT_TRUE(Task::launchTaskAndWaitUntilExit("/bin/true", {}));
  EXPECT_FALSE(Task::launchTaskAndWaitUntilExit("/bin/false", {}));
  EXPECT_TRUE(Task::launchTaskAndSleepUntilExit("/bin/sh", {"-c", "exit 0"}));
  EXPECT_FALSE(Task::launchTaskAndSleepUntilExit("/bin/sh", {"-c", "exit 3"}));
}

TEST_F(TaskTest, MissingProgramDoesNotLaunch) {
  Task task("/nonexistent/program", {});
  EXPECT_FALSE(task.launch());
  EXPECT_FALSE(task.isRunning());
  EXPECT_FALSE(Task::launchTaskAndWaitUntilExit("/nonexistent/program", {}));
  Task noPath;
  EXPECT_FALSE(noPath.launch());
  // A file that is not executable.
  std::ofstream(dir() / "plain") << "text";
  EXPECT_FALSE(Task::launchTaskAndWaitUntilExit((dir() / "plain").string(), {}));
}

TEST_F(TaskTest, LaunchesOnlyOnce) {
  Task task("/bin/true", {});
  EXPECT_TRUE(task.launch());
  EXPECT_FALSE(task.launch());
  task.waitUntilExit();
  EXPECT_EQ(task.terminationStatus(), 0);
}

TEST_F(TaskTest, ArgumentsReachTheChild) {
  const std::string out = (dir() / "args").string();
  ASSERT_TRUE(
      Task::launchTaskAndWaitUntilExit("/bin/sh", {"-c", "printf '%s|' \"$@\" > " + out, "sh", "a b", "", "c"}));
  EXPECT_EQ(read("args"), "a b||c|");
}

TEST_F(TaskTest, InterruptAndTerminateEndARunningChild) {
  struct Case {
    void (Task::*stop)();
    int status;
  };
  for (const Case& c : {Case{&Task::interrupt, 128 + SIGINT}, Case{&Task::terminate, 128 + SIGTERM},
                        Case{&Task::kill, 128 + SIGKILL}}) {
    Task task("/bin/sleep", {"30"});
    ASSERT_TRUE(task.launch());
    EXPECT_TRUE(task.isRunning());
    EXPECT_EQ(task.terminationStatus(), -1);
    (task.*c.stop)();
    EXPECT_TRUE(task.waitUntilExit(5.0));
    EXPECT_FALSE(task.isRunning());
    EXPECT_EQ(task.terminationStatus(), c.status);
  }
}

TEST_F(TaskTest, SignalsToAnEndedTaskDoNothing) {
  Task task("/bin/true", {});
  ASSERT_TRUE(task.launch());
  task.sleepUntilExit();
  task.interrupt();
  task.terminate();
  EXPECT_EQ(task.terminationStatus(), 0);
  Task never;
  never.interrupt();  // not launched
  EXPECT_FALSE(never.isRunning());
}

TEST_F(TaskTest, TimedWaitAnswersFalseWhileRunning) {
  Task task("/bin/sleep", {"30"});
  ASSERT_TRUE(task.launch());
  EXPECT_FALSE(task.waitUntilExit(0.05));
  task.kill();
  task.waitUntilExit();
  EXPECT_FALSE(task.isRunning());
}

TEST_F(TaskTest, LowerQualityOfServiceRaisesTheNiceValue) {
  const int base = ::getpriority(PRIO_PROCESS, 0);
  struct Case {
    int64_t qualityOfService;
    int increment;
  };
  const Case cases[] = {{kQualityOfServiceDefault, 0},
                        {kQualityOfServiceUserInteractive, 0},
                        {kQualityOfServiceUserInitiated, 0},
                        {kQualityOfServiceUtility, 5},
                        {kQualityOfServiceBackground, 10}};
  for (const Case& c : cases) {
    const std::string out = (dir() / "nice").string();
    Task task("/bin/sh", {"-c", "nice > " + out});
    task.setQualityOfService(c.qualityOfService);
    ASSERT_TRUE(task.launchAndWaitUntilExit());
    EXPECT_EQ(std::stoi(read("nice")), std::min(base + c.increment, 19)) << c.qualityOfService;
  }
}

TEST_F(TaskTest, ActivationVariablesAreNotInherited) {
  ::setenv("LISTEN_FDS", "1", 1);
  ::setenv("LISTEN_PID", "1", 1);
  const std::string out = (dir() / "env").string();
  Task task("/bin/sh", {"-c", "echo \"${LISTEN_FDS-unset} ${LISTEN_PID-unset}\" > " + out});
  EXPECT_TRUE(task.launchAndWaitUntilExit());
  ::unsetenv("LISTEN_FDS");
  ::unsetenv("LISTEN_PID");
  EXPECT_EQ(read("env"), "unset unset\n");
}

TEST_F(TaskTest, PassedDescriptorsFollowTheActivationConvention) {
  int pair[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair), 0);
  const std::string out = (dir() / "activation").string();
  // The child writes into descriptor 3 and reports what it was told.
  Task task("/bin/sh", {"-c", "echo hello >&3; echo \"$LISTEN_FDS $LISTEN_PID $$\" > " + out});
  task.setPassedDescriptors({pair[1]});
  ASSERT_TRUE(task.launchAndWaitUntilExit());
  ::close(pair[1]);
  char buffer[16] = {};
  ASSERT_EQ(::read(pair[0], buffer, sizeof buffer), 6);
  EXPECT_STREQ(buffer, "hello\n");
  ::close(pair[0]);
  std::istringstream fields(read("activation"));
  std::string count, listenPid, shellPid;
  fields >> count >> listenPid >> shellPid;
  EXPECT_EQ(count, "1");
  EXPECT_EQ(listenPid, shellPid);
  EXPECT_EQ(listenPid, std::to_string(task.processIdentifier()));
}

}  // namespace
}  // namespace norvane::client
