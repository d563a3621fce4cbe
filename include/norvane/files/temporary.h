// Scratch space: one private temporary directory per process under the
// user's cache folder, unique names in it, and TemporaryFile, which removes
// its file or folder when it goes.
//
// Layout: <cache>/norvane/TemporaryItems/<program name>/<pid>. A process
// holds a lock on its own directory for its whole life. On its first use of
// `temporaryDirectory` a process removes what stands at its own path and the
// directories whose owners are gone, and never touches a directory whose
// owner still runs: concurrent helpers keep their files.
#pragma once

#include <string>
#include <system_error>

namespace norvane::files {

// The process's temporary directory, created if missing (also when somebody
// deleted it meanwhile). Empty if it cannot be created.
std::string temporaryDirectory();
// The temporary directory with `name` as a further component (created if
// missing); the directory itself for an empty name.
std::string temporaryDirectoryNamed(const std::string& name);
bool removeTemporaryDirectoryNamed(const std::string& name);
// Paths in the temporary directory; nothing is created or tested.
std::string temporaryFileNamed(const std::string& name);
std::string nonExistingTemporaryFileNamed(const std::string& name);
// A new folder named by a UUID; the caller removes it.
std::string uniqueTemporaryDirectory();
// The program's name as used for its folders ("norvane-helper", ...).
const std::string& bundleName();
// <state>/norvane/logs/<bundle identifier>.log, with $XDG_STATE_HOME
// (~/.local/state) as state folder.
std::string logFile();

// File operations the scratch space stands on.
// True if a folder stands at `path`, making it and its parents if nothing
// does; false if something else stands there or it cannot be made.
bool createPath(const std::string& path);
// Removes the file or folder (recursively). True when nothing stands there
// afterwards; logs "Couldn't remove path %@: %@" and answers false
// otherwise, with the first error in `error` when given.
bool removePath(const std::string& path, std::error_code* error = nullptr);
// `path` if nothing stands there, else the first free "<base>-<n>.<ext>" in
// the same folder, the base cut so that the name stays within 250 units.
std::string nonExistingFilenameAtPath(const std::string& path);

// Removes the item at its path when destroyed; nothing there is no failure.
class TemporaryFile {
 public:
  explicit TemporaryFile(std::string path) : path_(std::move(path)) {}
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace norvane::files
