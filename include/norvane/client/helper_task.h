// HelperTask: launches a helper program, connects to the name it registers,
// hands out proxies, and restarts the helper after a number of connections
// or a total cost. After two failures in a row (launches or connections) it
// launches no more.
//
// A helper is launched plainly from its path, without arguments and without
// a listening socket: it registers its named socket itself, and proxies come
// from that (see proxy.h). Its standard input and output are /dev/null; its
// standard error, where it logs, is ours. A helper that somebody else started is found the
// same way and used, but never signalled.
//
// Not thread-safe: use one HelperTask from one thread at a time. Connections
// are cached per thread, so a proxy is not handed to another thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "norvane/client/proxy.h"
#include "norvane/client/task.h"

namespace norvane::client {

// 0 and this value both mean "no limit".
inline constexpr uint64_t kNoLimit = 0x7FFFFFFFFFFFFFFFULL;

class HelperTask {
 public:
  // Null (and "Helper missing: <name>" logged) when `path` or `proxyName` is
  // empty. `timeout` is the connections' request and reply timeout and the
  // default of the operations without one.
  static std::unique_ptr<HelperTask> create(std::string path, std::string proxyName, Protocol protocol, double timeout,
                                            int64_t qualityOfService);
  // Terminates a helper this object launched.
  ~HelperTask();
  HelperTask(const HelperTask&) = delete;
  HelperTask& operator=(const HelperTask&) = delete;

  // A proxy for the next piece of work: counts the connection against the
  // limit (restarting the helper when it is reached), then takes a running
  // helper's proxy or launches one.
  std::optional<HelperProxy> proxy();
  std::optional<HelperProxy> proxyUsingTimeout(double timeout);
  // Ends a helper that may run and launches a new one.
  std::optional<HelperProxy> launch();
  std::optional<HelperProxy> launchUsingTimeout(double timeout);
  // The proxy of a helper that runs already; never launches.
  std::optional<HelperProxy> launchedProxyUsingTimeout(double timeout);

  // Asks the helper's optional "stillBusy"; false without a helper.
  bool stillBusy();
  // Polls stillBusy every 0.05 seconds for at most `seconds`.
  void waitUntilDone(double seconds);

  // Adds to the cost; at or above the cost limit the helper is interrupted.
  // Nothing happens for 0 or without a limit.
  void increaseCost(uint64_t amount = 1);

  // SIGINT or SIGTERM to a helper this object launched, then invalidate().
  // A helper that has not ended 2 seconds after the signal is killed, so
  // that no process outlives its HelperTask unnoticed.
  void interrupt();
  void terminate();
  // Forgets this thread's connection and the task; clears cost and count.
  void invalidate();
  // Lets a launched helper outlive this object (it keeps running).
  void detach();

  double timeout() const { return timeout_; }
  void setTimeout(double timeout) { timeout_ = timeout; }
  uint64_t connectionLimit() const { return connectionLimit_; }
  void setConnectionLimit(uint64_t limit) { connectionLimit_ = limit; }
  uint64_t costLimit() const { return costLimit_; }
  void setCostLimit(uint64_t limit) { costLimit_ = limit; }

  uint64_t failedAttempts() const { return failedAttempts_; }
  uint64_t numberOfConnections() const { return numConnections_; }
  uint64_t totalCost() const { return totalCost_; }
  // The process this object launched and that has not been let go; 0 if none.
  pid_t launchedProcessIdentifier() const { return task_ ? task_->processIdentifier() : 0; }
  const std::string& path() const { return path_; }
  const std::string& proxyName() const { return proxyName_; }

 private:
  HelperTask(std::string path, std::string proxyName, Protocol protocol, double timeout, int64_t qualityOfService);
  void signalAndRelease(int signalNumber);

  std::unique_ptr<Task> task_;
  std::string proxyName_;
  std::string path_;
  Protocol protocol_;
  double timeout_;
  uint64_t failedAttempts_ = 0;
  uint64_t numConnections_ = 0;
  uint64_t connectionLimit_ = kNoLimit;
  uint64_t totalCost_ = 0;
  uint64_t costLimit_ = kNoLimit;
  int64_t qualityOfService_;
};

// Where the helper program is: $NORVANE_HELPER when set; else
// "norvane-helper" beside the running executable; else the one in this
// build tree; else the first on PATH. Empty when none is found.
std::string findHelperExecutable();

// The request and reply timeout of the service's named connection.
inline constexpr double kServiceTimeout = 15.0;
// A HelperTask for norvane-helper as found by findHelperExecutable(), under
// the service name, speaking the reply-carrying protocol. Null (and "Helper
// missing: ..." logged) when no helper program is found.
std::unique_ptr<HelperTask> createServiceHelperTask(double timeout = kServiceTimeout);

}  // namespace norvane::client
