// norvane helper start|stop|status: manage the helper service process.
#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "command.h"
#include "norvane/client/helper_task.h"
#include "norvane/wire/socket.h"

namespace norvane::cli {
namespace {

using client::HelperProxy;

// The running helper's proxy, if one answers.
std::optional<HelperProxy> runningHelper() {
  auto proxy = client::rootProxyForConnectionWithRegisteredName(wire::kServiceName, 2.0, client::Protocol::ImExportXPC);
  if (proxy && proxy->ping()) return proxy;
  return std::nullopt;
}

std::string report(const Invocation& in, bool running, pid_t pid, const std::string& text) {
  if (!in.json) return text + "\n";
  nlohmann::json json{{"running", running}, {"socket", wire::namedSocketPath(wire::kServiceName)}};
  json["pid"] = running ? nlohmann::json(pid) : nlohmann::json(nullptr);
  return json.dump(2) + "\n";
}

int start(const Invocation& in) {
  if (auto proxy = runningHelper()) {
    pid_t pid = proxy->connection()->peerProcessIdentifier();
    return writeOutput(in, report(in, true, pid, "norvane-helper is already running (pid " + std::to_string(pid) + ")"))
               ? kSuccess
               : kFailure;
  }
  auto task = client::createServiceHelperTask();
  if (!task) return fail("norvane-helper not found (build it, put it on PATH, or set NORVANE_HELPER)");
  auto proxy = task->launch();
  if (!proxy) return fail("norvane-helper did not start: " + task->path());
  pid_t pid = task->launchedProcessIdentifier();
  task->detach();
  return writeOutput(in, report(in, true, pid, "norvane-helper started (pid " + std::to_string(pid) + ")")) ? kSuccess
                                                                                                            : kFailure;
}

int stop(const Invocation& in) {
  auto proxy = runningHelper();
  if (!proxy) return writeOutput(in, report(in, false, 0, "norvane-helper is not running")) ? kSuccess : kFailure;
  pid_t pid = proxy->connection()->peerProcessIdentifier();
  proxy->terminate();
  // The helper ends at once; wait until its socket no longer answers.
  for (int i = 0; i < 500; ++i) {
    int fd = wire::connectNamedSocket(wire::kServiceName);
    if (fd < 0) {
      return writeOutput(in, report(in, false, 0, "norvane-helper stopped (pid " + std::to_string(pid) + ")"))
                 ? kSuccess
                 : kFailure;
    }
    ::close(fd);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return fail("norvane-helper (pid " + std::to_string(pid) + ") did not stop");
}

int status(const Invocation& in) {
  auto proxy = runningHelper();
  std::string socket = wire::namedSocketPath(wire::kServiceName);
  if (!proxy) {
    writeOutput(in, report(in, false, 0, "norvane-helper is not running (" + socket + ")"));
    return kFailure;
  }
  pid_t pid = proxy->connection()->peerProcessIdentifier();
  return writeOutput(
             in, report(in, true, pid, "norvane-helper is running (pid " + std::to_string(pid) + ", " + socket + ")"))
             ? kSuccess
             : kFailure;
}

int runHelper(const Invocation& in) {
  const std::string& action = in.positionals[0];
  if (action == "start") return start(in);
  if (action == "stop") return stop(in);
  if (action == "status") return status(in);
  return usageError(in, "unknown action '" + action + "' (start, stop or status)");
}

const Registration kHelper{{
    .name = "helper",
    .summary = "start, stop or query the norvane-helper service",
    .usage = "norvane helper [--json] start|stop|status",
    .options = {{"output", 'o', true, "write to FILE instead of stdout"}},
    .minPositionals = 1,
    .maxPositionals = 1,
    .run = runHelper,
    .details = "start launches norvane-helper and leaves it running; stop sends it \"terminate\";\n"
               "status exits with 0 when it runs and 1 when it does not. The helper listens on\n"
               "$XDG_RUNTIME_DIR/com.norvane.archive-helper (or /tmp/norvane-UID/...).",
}};

}  // namespace
}  // namespace norvane::cli
