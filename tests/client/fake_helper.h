// A stand-in helper for the client tests. The test executable runs it when
// started with NORVANE_FAKE_HELPER set to a registered name: it serves that
// name and never returns. NORVANE_FAKE_HELPER_MODE changes what it does:
//   "serve"  (default) answers requests, see fake_helper.cc
//   "exit"   exits after 0.2 seconds without registering
// NORVANE_FAKE_HELPER_LOG, when set, is a file that gets one line per start.
//
// FakeServer serves the same answers on a thread of the test process.
#pragma once

#include <atomic>
#include <string>
#include <thread>

namespace norvane::client::testing {

// The running test executable, to be launched as a helper.
std::string selfExecutable();

class FakeServer {
 public:
  // Listens on the socket registered under `name`.
  explicit FakeServer(const std::string& name);
  ~FakeServer();
  // Connections accepted so far.
  int connections() const { return connections_.load(); }
  // Closes every open connection (the listener stays).
  void dropConnections();

 private:
  int listenFd_ = -1;
  std::string path_;
  std::atomic<int> connections_{0};
  std::atomic<bool> stopping_{false};
  std::atomic<int> dropGeneration_{0};
  std::thread thread_;
};

}  // namespace norvane::client::testing
