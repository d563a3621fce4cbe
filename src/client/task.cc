#include "norvane/client/task.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

extern char** environ;

namespace norvane::client {

namespace {

bool isActivationVariable(const char* entry) {
  return std::strncmp(entry, "LISTEN_FDS=", 11) == 0 || std::strncmp(entry, "LISTEN_PID=", 11) == 0 ||
         std::strncmp(entry, "LISTEN_FDNAMES=", 15) == 0;
}

int niceIncrementFor(int64_t qualityOfService) {
  if (qualityOfService == kQualityOfServiceDefault) return 0;
  if (qualityOfService <= kQualityOfServiceBackground) return 10;
  if (qualityOfService <= kQualityOfServiceUtility) return 5;
  return 0;
}

// Writes `value` and a terminating 0 without any library call (safe between
// fork and exec).
void writeDecimal(pid_t value, char* into) {
  char digits[16];
  int count = 0;
  do {
    digits[count++] = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value > 0);
  while (count > 0) *into++ = digits[--count];
  *into = 0;
}

}  // namespace

bool Task::launch() {
  if (pid_ != 0 || launchPath_.empty()) return false;

  // Everything the child needs is prepared before fork: after it, only
  // async-signal-safe calls are allowed.
  std::vector<char*> argv;
  argv.push_back(launchPath_.data());
  for (std::string& argument : arguments_) argv.push_back(argument.data());
  argv.push_back(nullptr);
  std::vector<char*> envp;
  for (char** entry = environ; *entry; ++entry)
    if (!isActivationVariable(*entry)) envp.push_back(*entry);
  for (std::string& entry : environment_) envp.push_back(entry.data());
  // Passed descriptors follow the socket-activation convention; the pid is
  // written in by the child, which alone knows it.
  std::string listenFds = "LISTEN_FDS=" + std::to_string(passedFds_.size());
  char listenPid[32] = "LISTEN_PID=";
  if (!passedFds_.empty()) {
    envp.push_back(listenFds.data());
    envp.push_back(listenPid);
  }
  envp.push_back(nullptr);
  const int increment = niceIncrementFor(qualityOfService_);

  const int devNull = nullStandardInputOutput_ ? ::open("/dev/null", O_RDWR | O_CLOEXEC) : -1;
  int errorPipe[2];
  if (::pipe2(errorPipe, O_CLOEXEC) != 0) {
    if (devNull >= 0) ::close(devNull);
    return false;
  }
  // Passed descriptors are first copied above any number they will be moved
  // to, so that moving one never overwrites another.
  const int passedCount = static_cast<int>(passedFds_.size());

  pid_t pid = ::fork();
  if (pid != 0 && devNull >= 0) ::close(devNull);
  if (pid < 0) {
    ::close(errorPipe[0]);
    ::close(errorPipe[1]);
    return false;
  }
  if (pid == 0) {
    writeDecimal(::getpid(), listenPid + 11);
    if (devNull >= 0) {
      ::dup2(devNull, 0);
      ::dup2(devNull, 1);
    }
    int high[kMaxPassedDescriptors];
    int n = passedCount < kMaxPassedDescriptors ? passedCount : kMaxPassedDescriptors;
    for (int i = 0; i < n; ++i) high[i] = ::fcntl(passedFds_[i], F_DUPFD, 3 + n + 1);
    for (int i = 0; i < n; ++i) {
      ::dup2(high[i], 3 + i);  // dup2 clears close-on-exec on the copy
      ::close(high[i]);
    }
    if (increment) ::setpriority(PRIO_PROCESS, 0, ::getpriority(PRIO_PROCESS, 0) + increment);
    ::execve(argv[0], argv.data(), envp.data());
    int error = errno;
    ssize_t ignored = ::write(errorPipe[1], &error, sizeof error);
    (void)ignored;
    ::_exit(127);
  }

  ::close(errorPipe[1]);
  int childError = 0;
  ssize_t n;
  do {
    n = ::read(errorPipe[0], &childError, sizeof childError);
  } while (n < 0 && errno == EINTR);
  ::close(errorPipe[0]);
  pid_ = pid;
  if (n > 0) {
    // exec failed: the child has exited or is about to.
    int waitStatus = 0;
    while (::waitpid(pid, &waitStatus, 0) < 0 && errno == EINTR) {
    }
    recordStatus(waitStatus);
    errno = childError;
    return false;
  }
  return true;
}

void Task::recordStatus(int waitStatus) {
  ended_ = true;
  if (WIFEXITED(waitStatus)) {
    status_ = WEXITSTATUS(waitStatus);
  } else if (WIFSIGNALED(waitStatus)) {
    status_ = 128 + WTERMSIG(waitStatus);
  }
}

bool Task::isRunning() {
  if (pid_ == 0 || ended_) return false;
  int waitStatus = 0;
  pid_t result = ::waitpid(pid_, &waitStatus, WNOHANG);
  if (result == pid_) {
    recordStatus(waitStatus);
    return false;
  }
  return result == 0;
}

void Task::signal(int number) {
  if (isRunning()) ::kill(pid_, number);
}

void Task::interrupt() {
  signal(SIGINT);
}
void Task::terminate() {
  signal(SIGTERM);
}
void Task::kill() {
  signal(SIGKILL);
}

void Task::waitUntilExit() {
  if (pid_ == 0 || ended_) return;
  int waitStatus = 0;
  pid_t result;
  do {
    result = ::waitpid(pid_, &waitStatus, 0);
  } while (result < 0 && errno == EINTR);
  if (result == pid_) {
    recordStatus(waitStatus);
  } else {
    ended_ = true;  // not our child any more; nothing left to wait for
  }
}

void Task::sleepUntilExit() {
  while (isRunning()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

bool Task::waitUntilExit(double seconds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (isRunning()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

bool Task::launchAndWaitUntilExit() {
  if (!launch()) return false;
  waitUntilExit();
  return status_ == 0;
}

bool Task::launchAndSleepUntilExit() {
  if (!launch()) return false;
  sleepUntilExit();
  return status_ == 0;
}

bool Task::launchTaskAndWaitUntilExit(const std::string& launchPath, const std::vector<std::string>& arguments) {
  Task task(launchPath, arguments);
  return task.launchAndWaitUntilExit();
}

bool Task::launchTaskAndSleepUntilExit(const std::string& launchPath, const std::vector<std::string>& arguments) {
  Task task(launchPath, arguments);
  return task.launchAndSleepUntilExit();
}

}  // namespace norvane::client
