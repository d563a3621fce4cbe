#include "norvane/files/folders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sstream>

#include "norvane/core/log.h"

namespace norvane::files {
namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

std::string joined(const std::string& folder, const std::string& component) {
  if (component.empty()) return folder;
  if (folder.empty()) return component;
  return folder.back() == '/' ? folder + component : folder + "/" + component;
}

std::string passwordHome() {
  if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir) return entry->pw_dir;
  return "/";
}

// An XDG base directory: the variable if it holds an absolute path, else the
// default below the home.
std::string baseDirectory(const char* variable, const std::string& home, const char* fallback) {
  std::string value = environment(variable);
  return (!value.empty() && value[0] == '/') ? value : joined(home, fallback);
}

// The XDG user directory `key` (e.g. "XDG_DESKTOP_DIR") from
// <config>/user-dirs.dirs, with $HOME expanded; `fallback` below the home
// when the file or the line is missing.
std::string userDirectory(const std::string& configHome, const std::string& home, const std::string& key,
                          const char* fallback) {
  std::ifstream file(joined(configHome, "user-dirs.dirs"));
  std::string line;
  while (std::getline(file, line)) {
    if (line.rfind(key + "=", 0) != 0) continue;
    std::string value = line.substr(key.size() + 1);
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
    if (value.rfind("$HOME", 0) == 0) value = home + value.substr(5);
    if (!value.empty() && value[0] == '/') return value;
  }
  return joined(home, fallback);
}

std::vector<std::string> dropboxFoldersOf(const std::string& home) {
  std::vector<std::string> folders;
  std::ifstream file(joined(home, ".dropbox/info.json"));
  if (file) {
    auto info = nlohmann::json::parse(file, nullptr, false);
    if (info.is_object()) {
      for (const char* account : {"personal", "business"}) {
        auto it = info.find(account);
        if (it != info.end() && it->is_object()) {
          auto path = it->find("path");
          if (path != it->end() && path->is_string()) folders.push_back(path->get<std::string>());
        }
      }
    }
  }
  if (folders.empty()) folders.push_back(joined(home, "Dropbox"));
  return folders;
}

// Nextcloud and ownCloud clients keep "<n>\Folders\<m>\localPath=<path>"
// lines in their configuration file.
std::vector<std::string> nextcloudFoldersOf(const std::string& configHome) {
  std::vector<std::string> folders;
  for (const char* file : {"Nextcloud/nextcloud.cfg", "ownCloud/owncloud.cfg"}) {
    std::ifstream config(joined(configHome, file));
    std::string line;
    while (std::getline(config, line)) {
      auto key = line.find("localPath=");
      if (key == std::string::npos) continue;
      std::string path = line.substr(key + 10);
      while (!path.empty() && path.back() == '/') path.pop_back();
      if (!path.empty() && path[0] == '/') folders.push_back(path);
    }
  }
  return folders;
}

struct Folders {
  std::string home, library, caches, applicationSupport, preferences, desktop, downloads;
  std::string userHome, userLibrary, userDocuments, userDesktop;
  std::vector<std::string> dropbox, nextcloud;
  std::string temporary;
};

std::unique_ptr<Folders> computeFolders() {
  auto f = std::make_unique<Folders>();
  std::string homeVariable = environment("HOME");
  f->home = (!homeVariable.empty() && homeVariable[0] == '/') ? homeVariable : passwordHome();
  f->library = baseDirectory("XDG_DATA_HOME", f->home, ".local/share");
  f->caches = baseDirectory("XDG_CACHE_HOME", f->home, ".cache");
  f->applicationSupport = f->library;
  f->preferences = baseDirectory("XDG_CONFIG_HOME", f->home, ".config");
  f->desktop = userDirectory(f->preferences, f->home, "XDG_DESKTOP_DIR", "Desktop");
  f->downloads = userDirectory(f->preferences, f->home, "XDG_DOWNLOAD_DIR", "Downloads");

  f->userHome = isSandboxed() ? passwordHome() : f->home;
  if (f->userHome == f->home) {
    f->userLibrary = f->library;
    std::string userConfig = f->preferences;
    f->userDocuments = userDirectory(userConfig, f->userHome, "XDG_DOCUMENTS_DIR", "Documents");
    f->userDesktop = f->desktop;
    f->nextcloud = nextcloudFoldersOf(userConfig);
  } else {
    // Inside a sandbox the environment describes the container; the real
    // home keeps the default layout.
    f->userLibrary = joined(f->userHome, ".local/share");
    std::string userConfig = joined(f->userHome, ".config");
    f->userDocuments = userDirectory(userConfig, f->userHome, "XDG_DOCUMENTS_DIR", "Documents");
    f->userDesktop = userDirectory(userConfig, f->userHome, "XDG_DESKTOP_DIR", "Desktop");
    f->nextcloud = nextcloudFoldersOf(userConfig);
  }
  f->dropbox = dropboxFoldersOf(f->userHome);
  f->temporary = environment("TMPDIR");
  if (f->temporary.empty() || f->temporary[0] != '/') f->temporary = "/tmp";
  if (f->temporary.back() != '/') f->temporary.push_back('/');
  return f;
}

std::mutex foldersMutex;
std::unique_ptr<Folders> keptFolders;

const Folders& folders() {
  std::lock_guard lock(foldersMutex);
  if (!keptFolders) keptFolders = computeFolders();
  return *keptFolders;
}

}  // namespace

const std::string& homeDirectory() {
  return folders().home;
}
const std::string& libraryDirectory() {
  return folders().library;
}
const std::string& cachesDirectory() {
  return folders().caches;
}
const std::string& applicationSupportDirectory() {
  return folders().applicationSupport;
}
const std::string& preferencesDirectory() {
  return folders().preferences;
}
const std::string& desktopDirectory() {
  return folders().desktop;
}
const std::string& downloadsDirectory() {
  return folders().downloads;
}
std::string pathInHomeDirectory(const std::string& component) {
  return joined(homeDirectory(), component);
}
std::string pathInLibraryDirectory(const std::string& component) {
  return joined(libraryDirectory(), component);
}
std::string pathInPreferencesDirectory(const std::string& component) {
  return joined(preferencesDirectory(), component);
}
std::string pathInCachesDirectory(const std::string& component) {
  return joined(cachesDirectory(), component);
}
std::string pathInApplicationSupportDirectory(const std::string& component) {
  return joined(applicationSupportDirectory(), component);
}

bool isSandboxed() {
  if (!environment("APP_SANDBOX_CONTAINER_ID").empty() || !environment("FLATPAK_ID").empty()) return true;
  struct stat info;
  return ::stat("/.flatpak-info", &info) == 0;
}

const std::string& userHomeDirectory() {
  return folders().userHome;
}
const std::string& userLibraryDirectory() {
  return folders().userLibrary;
}
const std::string& userDocumentsFolder() {
  return folders().userDocuments;
}
const std::string& userDesktopFolder() {
  return folders().userDesktop;
}
const std::vector<std::string>& DropboxFolders() {
  return folders().dropbox;
}
const std::vector<std::string>& NextcloudFolders() {
  return folders().nextcloud;
}
const std::string& temporarySystemDirectory() {
  return folders().temporary;
}

void testSystemPaths() {
  logFormat("homeDirectory: {}", homeDirectory());
  logFormat("userHomeDirectory: {}", userHomeDirectory());
  logFormat("cachesDirectory: {}", cachesDirectory());
  // The tools and folders the library calls on.
  static const char* const kPaths[] = {
      "/usr/share/mime", "/usr/share/thumbnailers", "/usr/bin/zip",      "/usr/bin/unzip", "/usr/bin/gzip",
      "/usr/bin/tar",    "/usr/bin/file",           "/usr/bin/xdg-open", "/usr/bin/gio",
  };
  for (const char* path : kPaths) {
    struct stat info;
    if (::lstat(path, &info) != 0) {
      logFormat("ERROR: {} does not exist.", path);
    } else if (S_ISLNK(info.st_mode)) {
      logFormat("ERROR: {} is symbolic link.", path);
    }
  }
}

namespace testing {
void forgetKeptFolders() {
  std::lock_guard lock(foldersMutex);
  keptFolders.reset();
}
}  // namespace testing

}  // namespace norvane::files
