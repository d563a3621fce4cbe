// Task: one child process started from a path, with plain run-and-wait
// operations.
//
// A task is launched with fork and exec; a failed exec is reported by
// launch() (the child's errno travels back through a close-on-exec pipe). The
// child inherits the environment, minus the socket-activation variables
// LISTEN_FDS, LISTEN_PID and LISTEN_FDNAMES, which belong to this process;
// they are set afresh for the child when descriptors are passed to it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace norvane::client {

// Quality-of-service classes as numbers. A task started with a lower class
// runs at a higher nice value: Utility at +5, Background at +10; the others
// leave it unchanged.
inline constexpr int64_t kQualityOfServiceUserInteractive = 0x21;
inline constexpr int64_t kQualityOfServiceUserInitiated = 0x19;
inline constexpr int64_t kQualityOfServiceUtility = 0x11;
inline constexpr int64_t kQualityOfServiceBackground = 0x09;
inline constexpr int64_t kQualityOfServiceDefault = -1;

class Task {
 public:
  Task() = default;
  Task(std::string launchPath, std::vector<std::string> arguments)
      : launchPath_(std::move(launchPath)), arguments_(std::move(arguments)) {}
  // A running child is left running (and reaped by nobody until this
  // process ends); call terminate() and waitUntilExit() first to end it.
  ~Task() = default;
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;

  void setLaunchPath(std::string path) { launchPath_ = std::move(path); }
  void setArguments(std::vector<std::string> arguments) { arguments_ = std::move(arguments); }
  void setQualityOfService(int64_t qualityOfService) { qualityOfService_ = qualityOfService; }
  // Extra environment entries "NAME=value" for the child, applied last.
  void setEnvironmentOverrides(std::vector<std::string> entries) { environment_ = std::move(entries); }
  // Gives the child /dev/null as standard input and output (standard error
  // stays shared), so that a child that outlives a pipeline does not hold it
  // open.
  void setNullStandardInputOutput(bool null) { nullStandardInputOutput_ = null; }
  // Descriptors the child receives as 3, 4, ..., at most
  // kMaxPassedDescriptors, announced by LISTEN_FDS and LISTEN_PID as socket
  // activation does.
  static constexpr int kMaxPassedDescriptors = 16;
  void setPassedDescriptors(std::vector<int> fds) { passedFds_ = std::move(fds); }

  // Starts the child once. False when it could not be started (no such
  // program, not executable, already launched).
  bool launch();
  // True while the child has been started and has not ended. Reaps it when
  // it has ended.
  bool isRunning();
  pid_t processIdentifier() const { return pid_; }
  // The exit status, or 128 + signal for a child ended by a signal; -1
  // while running or before launch.
  int terminationStatus() const { return status_; }

  // Send SIGINT and SIGTERM. Nothing happens for a task that is not running.
  void interrupt();
  void terminate();
  // SIGKILL.
  void kill();

  // Blocks until the child ends (waitpid).
  void waitUntilExit();
  // Polls every 0.01 seconds until the child ends, without blocking in
  // waitpid.
  void sleepUntilExit();
  // Waits at most `seconds` for the child to end; answers whether it did.
  bool waitUntilExit(double seconds);

  // launch, then waitUntilExit / sleepUntilExit; true for status 0.
  bool launchAndWaitUntilExit();
  bool launchAndSleepUntilExit();

  static bool launchTaskAndWaitUntilExit(const std::string& launchPath, const std::vector<std::string>& arguments);
  static bool launchTaskAndSleepUntilExit(const std::string& launchPath, const std::vector<std::string>& arguments);

 private:
  void signal(int number);
  void recordStatus(int waitStatus);

  std::string launchPath_;
  std::vector<std::string> arguments_;
  std::vector<std::string> environment_;
  std::vector<int> passedFds_;
  int64_t qualityOfService_ = kQualityOfServiceDefault;
  bool nullStandardInputOutput_ = false;
  pid_t pid_ = 0;
  bool ended_ = false;
  int status_ = -1;
};

}  // namespace norvane::client
