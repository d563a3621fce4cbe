#include "norvane/client/helper_task.h"

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "norvane/core/log.h"
#include "norvane/wire/socket.h"

namespace norvane::client {

namespace {

bool isLimited(uint64_t limit) {
  return limit != 0 && limit != kNoLimit;
}

std::string_view lastPathComponent(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

// How long an interrupted or terminated helper gets before it is killed.
constexpr double kExitGrace = 2.0;

}  // namespace

std::unique_ptr<HelperTask> HelperTask::create(std::string path, std::string proxyName, Protocol protocol,
                                               double timeout, int64_t qualityOfService) {
  if (path.empty() || proxyName.empty()) {
    logFormat("Helper missing: {}", proxyName);
    return nullptr;
  }
  return std::unique_ptr<HelperTask>(
      new HelperTask(std::move(path), std::move(proxyName), protocol, timeout, qualityOfService));
}

HelperTask::HelperTask(std::string path, std::string proxyName, Protocol protocol, double timeout,
                       int64_t qualityOfService)
    : proxyName_(std::move(proxyName)),
      path_(std::move(path)),
      protocol_(protocol),
      timeout_(timeout),
      qualityOfService_(qualityOfService) {}

HelperTask::~HelperTask() {
  terminate();
}

std::optional<HelperProxy> HelperTask::proxy() {
  return proxyUsingTimeout(timeout_);
}

std::optional<HelperProxy> HelperTask::proxyUsingTimeout(double timeout) {
  if (isLimited(connectionLimit_) && ++numConnections_ >= connectionLimit_) interrupt();
  if (auto running = launchedProxyUsingTimeout(timeout)) return running;
  return launchUsingTimeout(timeout);
}

std::optional<HelperProxy> HelperTask::launch() {
  return launchUsingTimeout(timeout_);
}

std::optional<HelperProxy> HelperTask::launchedProxyUsingTimeout(double timeout) {
  return rootProxyForConnectionWithRegisteredName(proxyName_, timeout, protocol_);
}

std::optional<HelperProxy> HelperTask::launchUsingTimeout(double timeout) {
  interrupt();
  if (failedAttempts_ > 1) return std::nullopt;

  task_ = std::make_unique<Task>(path_, std::vector<std::string>{});
  task_->setQualityOfService(qualityOfService_);
  task_->setNullStandardInputOutput(true);
  if (!task_->launch() || !task_->isRunning()) {
    ++failedAttempts_;
    logFormat("Couldn't launch {}.{}", path_, failedAttempts_ == 2 ? " Giving up." : "");
    task_.reset();
    return std::nullopt;
  }

  if (auto proxy = waitForRootProxyForConnectionWithRegisteredName(proxyName_, timeout, protocol_)) {
    failedAttempts_ = 0;
    ++numConnections_;
    return proxy;
  }
  ++failedAttempts_;
  logFormat("Connection to {} failed.{}", lastPathComponent(path_), failedAttempts_ == 2 ? " Giving up." : "");
  return std::nullopt;  // the task runs on until the next interrupt
}

bool HelperTask::stillBusy() {
  auto proxy = launchedProxyUsingTimeout(timeout_);
  return proxy && proxy->stillBusy();
}

void HelperTask::waitUntilDone(double seconds) {
  constexpr double kStep = 0.05;
  auto proxy = launchedProxyUsingTimeout(timeout_);
  if (!proxy || !proxy->stillBusy()) return;
  double waited = 0;
  for (;;) {
    std::this_thread::sleep_for(std::chrono::duration<double>(kStep));
    waited += kStep;
    if (waited >= seconds || !proxy->stillBusy()) return;
  }
}

void HelperTask::increaseCost(uint64_t amount) {
  if (amount == 0 || !isLimited(costLimit_)) return;
  totalCost_ += amount;
  if (totalCost_ >= costLimit_) interrupt();
}

void HelperTask::signalAndRelease(int signalNumber) {
  if (!task_) return;
  if (task_->isRunning()) {
    ::kill(task_->processIdentifier(), signalNumber);
    if (!task_->waitUntilExit(kExitGrace)) {
      task_->kill();
      task_->waitUntilExit();
    }
  }
  invalidate();
}

void HelperTask::interrupt() {
  signalAndRelease(SIGINT);
}

void HelperTask::terminate() {
  signalAndRelease(SIGTERM);
}

void HelperTask::invalidate() {
  removeConnectionRegisteredWithName(proxyName_);
  task_.reset();
  totalCost_ = 0;
  numConnections_ = 0;
}

void HelperTask::detach() {
  task_.reset();
}

std::string findHelperExecutable() {
  constexpr std::string_view kName = "norvane-helper";
  auto executable = [](const std::string& path) { return !path.empty() && ::access(path.c_str(), X_OK) == 0; };

  if (const char* overridden = std::getenv("NORVANE_HELPER"); overridden && *overridden) {
    return executable(overridden) ? overridden : std::string();
  }
  char self[4096];
  ssize_t n = ::readlink("/proc/self/exe", self, sizeof self - 1);
  if (n > 0) {
    std::string beside(self, static_cast<size_t>(n));
    beside.resize(beside.rfind('/') + 1);
    beside += kName;
    if (executable(beside)) return beside;
  }
#ifdef NORVANE_BUILD_HELPER
  if (executable(NORVANE_BUILD_HELPER)) return NORVANE_BUILD_HELPER;
#endif
  if (const char* path = std::getenv("PATH")) {
    std::string_view rest(path);
    while (!rest.empty()) {
      size_t colon = rest.find(':');
      std::string_view folder = rest.substr(0, colon);
      rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
      if (folder.empty()) continue;
      std::string candidate = std::string(folder) + "/" + std::string(kName);
      if (executable(candidate)) return candidate;
    }
  }
  return {};
}

std::unique_ptr<HelperTask> createServiceHelperTask(double timeout) {
  return HelperTask::create(findHelperExecutable(), std::string(wire::kServiceName), Protocol::ImExportXPC, timeout,
                            kQualityOfServiceUserInitiated);
}

}  // namespace norvane::client
