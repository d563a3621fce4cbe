// The log sink: single formatted messages without levels, one line each on
// standard error (the journal collects them under systemd). A few messages
// carry the prefix "WARNING: " or "ERROR: " in their own text.
//
// Tests capture what is logged with LogCapture.
#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>
#include <vector>

namespace norvane {

void logMessage(std::string_view message);

template <typename... Args>
void logFormat(fmt::format_string<Args...> format, Args&&... args) {
  logMessage(fmt::format(format, std::forward<Args>(args)...));
}

// While alive, messages go to this capture instead of standard error.
// Captures nest; the innermost one receives. Thread-safe.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<std::string> messages() const;
  // True when some message contains `fragment`.
  bool contains(std::string_view fragment) const;

 private:
  friend void logMessage(std::string_view);
  LogCapture* outer_;
  std::vector<std::string> messages_;
};

// The formats for a caught exception, as the log shows them:
// "<selector> (<class>): <name>:\n<reason>\n<call stack>" and the shorter
// form without the call stack.
std::string formatException(std::string_view selector, std::string_view className, std::string_view name,
                            std::string_view reason, std::string_view callStack);
std::string formatException(std::string_view selector, std::string_view className, std::string_view name,
                            std::string_view reason);

}  // namespace norvane
