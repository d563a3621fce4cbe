#include "norvane/files/temporary.h"

#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <mutex>

#include "norvane/core/log.h"
#include "norvane/core/unicode.h"
#include "norvane/files/folders.h"
#include "norvane/text/strings.h"

namespace norvane::files {
namespace fs = std::filesystem;

namespace {

constexpr char kOwnerLock[] = ".owner";

// Holds the lock on `directory`/.owner for the life of the process. Answers
// false when another live process holds it.
bool lockOwnership(const std::string& directory, int* fd) {
  *fd = ::open((directory + "/" + kOwnerLock).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (*fd < 0) return false;
  if (::flock(*fd, LOCK_EX | LOCK_NB) != 0) {
    ::close(*fd);
    *fd = -1;
    return false;
  }
  return true;
}

// Removes the sibling directories whose owner is gone. A directory without
// an owner lock file is left alone: it may be one being set up right now.
void removeAbandonedDirectories(const std::string& root, const std::string& own) {
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(root, ignored)) {
    std::string path = entry.path().string();
    if (path == own || !entry.is_directory(ignored)) continue;
    int fd = ::open((path + "/" + kOwnerLock).c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0) continue;
    if (::flock(fd, LOCK_EX | LOCK_NB) == 0) removePath(path);
    ::close(fd);
  }
}

struct TemporaryState {
  std::mutex mutex;
  std::string path;  // empty until the first call
  int lockFd = -1;
};

// A forked child is a process of its own: it forgets the parent's
// directory (and lock) and makes its own at its first use.
void forgetAfterFork();

TemporaryState& state() {
  static TemporaryState* s = [] {
    pthread_atfork(nullptr, nullptr, forgetAfterFork);
    return new TemporaryState();
  }();
  return *s;
}

void forgetAfterFork() {
  TemporaryState& s = state();
  new (&s.mutex) std::mutex();  // the parent may have held it while forking
  s.path.clear();
  if (s.lockFd >= 0) ::close(s.lockFd);
  s.lockFd = -1;
}

std::string programName() {
  std::error_code error;
  fs::path executable = fs::read_symlink("/proc/self/exe", error);
  std::string name = error ? std::string(program_invocation_short_name) : executable.filename().string();
  return name.empty() ? "norvane" : name;
}

}  // namespace

const std::string& bundleName() {
  static const std::string name = programName();
  return name;
}

std::string temporaryDirectory() {
  TemporaryState& s = state();
  std::lock_guard lock(s.mutex);
  if (s.path.empty()) {
    std::string root = pathInCachesDirectory("norvane/TemporaryItems/" + bundleName());
    std::string own = root + "/" + std::to_string(::getpid());
    // What a dead process with our pid left behind goes at the first use.
    removePath(own);
    if (!createPath(own)) return {};
    lockOwnership(own, &s.lockFd);
    removeAbandonedDirectories(root, own);
    s.path = own;
    return s.path;
  }
  struct stat info;
  if (::stat(s.path.c_str(), &info) != 0) {
    if (!createPath(s.path)) return {};
    if (s.lockFd >= 0) ::close(s.lockFd);
    lockOwnership(s.path, &s.lockFd);
  }
  return s.path;
}

std::string temporaryDirectoryNamed(const std::string& name) {
  std::string directory = temporaryDirectory();
  if (directory.empty() || name.empty()) return directory;
  std::string path = directory + "/" + name;
  return createPath(path) ? path : std::string();
}

bool removeTemporaryDirectoryNamed(const std::string& name) {
  std::string directory = temporaryDirectory();
  if (directory.empty()) return false;
  return removePath(name.empty() ? directory : directory + "/" + name);
}

std::string temporaryFileNamed(const std::string& name) {
  std::string directory = temporaryDirectory();
  return directory.empty() ? directory : directory + "/" + name;
}

std::string nonExistingTemporaryFileNamed(const std::string& name) {
  std::string path = temporaryFileNamed(name);
  return path.empty() ? path : nonExistingFilenameAtPath(path);
}

std::string uniqueTemporaryDirectory() {
  return temporaryDirectoryNamed(text::uniqueString().toUtf8());
}

std::string logFile() {
  const char* state = std::getenv("XDG_STATE_HOME");
  std::string folder = (state && state[0] == '/') ? state : pathInHomeDirectory(".local/state");
  return folder + "/norvane/logs/com.norvane." + bundleName() + ".log";
}

bool createPath(const std::string& path) {
  if (path.empty()) return false;
  std::error_code error;
  auto status = fs::status(path, error);
  if (fs::exists(status)) return fs::is_directory(status);
  fs::create_directories(path, error);
  return !error || fs::is_directory(path, error);
}

bool removePath(const std::string& path, std::error_code* errorPlace) {
  if (errorPlace) errorPlace->clear();
  if (path.empty()) return false;
  std::error_code error;
  fs::remove_all(path, error);
  if (!error) return true;
  std::error_code exists;
  if (!fs::exists(fs::symlink_status(path, exists)) && !exists) return true;
  if (::unlink(path.c_str()) == 0) return true;
  if (errorPlace) *errorPlace = error;
  logFormat("Couldn't remove path {}: {}", path, error.message());
  return false;
}

std::string nonExistingFilenameAtPath(const std::string& path) {
  struct stat info;
  if (path.empty() || ::lstat(path.c_str(), &info) != 0) return path;
  fs::path original(path);
  std::string folder = original.parent_path().string();
  std::u16string name = utf8ToUtf16(original.filename().string());
  std::u16string base = name, extension;
  if (size_t dot = name.rfind(u'.'); dot != std::u16string::npos && dot > 0) {
    base = name.substr(0, dot);
    extension = name.substr(dot);  // with the dot
  }
  for (unsigned n = 1;; ++n) {
    std::u16string suffix = u"-" + utf8ToUtf16(std::to_string(n)) + extension;
    std::u16string cutBase = base.substr(0, suffix.size() < 250 ? 250 - suffix.size() : 0);
    std::string candidate = (folder.empty() ? "" : folder + "/") + utf16ToUtf8(cutBase + suffix);
    if (::lstat(candidate.c_str(), &info) != 0) return candidate;
  }
}

TemporaryFile::~TemporaryFile() {
  if (!path_.empty()) removePath(path_);
}

}  // namespace norvane::files
