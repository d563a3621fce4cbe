#include "norvane/core/log.h"

#include <unistd.h>

#include <mutex>

namespace norvane {
namespace {

std::mutex& logMutex() {
  static std::mutex mutex;
  return mutex;
}

LogCapture* currentCapture = nullptr;

}  // namespace

void logMessage(std::string_view message) {
  std::lock_guard lock(logMutex());
  if (currentCapture) {
    currentCapture->messages_.emplace_back(message);
    return;
  }
  // One write per message keeps lines whole when several processes share
  // the stream.
  std::string line(message);
  line.push_back('\n');
  size_t written = 0;
  while (written < line.size()) {
    ssize_t n = ::write(STDERR_FILENO, line.data() + written, line.size() - written);
    if (n <= 0) break;
    written += static_cast<size_t>(n);
  }
}

LogCapture::LogCapture() {
  std::lock_guard lock(logMutex());
  outer_ = currentCapture;
  currentCapture = this;
}

LogCapture::~LogCapture() {
  std::lock_guard lock(logMutex());
  currentCapture = outer_;
}

std::vector<std::string> LogCapture::messages() const {
  std::lock_guard lock(logMutex());
  return messages_;
}

bool LogCapture::contains(std::string_view fragment) const {
  std::lock_guard lock(logMutex());
  for (const auto& m : messages_) {
    if (m.find(fragment) != std::string::npos) return true;
  }
  return false;
}

std::string formatException(std::string_view selector, std::string_view className, std::string_view name,
                            std::string_view reason, std::string_view callStack) {
  return fmt::format("{} ({}): {}:\n{}\n{}", selector, className, name, reason, callStack);
}

std::string formatException(std::string_view selector, std::string_view className, std::string_view name,
                            std::string_view reason) {
  return fmt::format("{} ({}): {}:\n{}", selector, className, name, reason);
}

}  // namespace norvane
