#include "importers/importer_folders.h"

#include <dirent.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace norvane::importers {
namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

std::string executableDirectory() {
  char buffer[4096];
  ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
  if (n <= 0) return {};
  std::string path(buffer, static_cast<size_t>(n));
  return path.substr(0, path.rfind('/'));
}

}  // namespace

std::vector<std::string> ImporterRoots::inOrder() const {
  std::vector<std::string> roots;
  for (const std::string* root : {&user, &local, &system})
    if (!root->empty()) roots.push_back(*root);
  return roots;
}

ImporterRoots defaultImporterRoots() {
  ImporterRoots roots;
  if (const char* path = std::getenv("NORVANE_IMPORTER_PATH")) {
    std::string list = path;
    std::string* slots[] = {&roots.user, &roots.local, &roots.system};
    size_t start = 0;
    for (std::string* slot : slots) {
      size_t colon = list.find(':', start);
      *slot = list.substr(start, colon == std::string::npos ? std::string::npos : colon - start);
      if (colon == std::string::npos) break;
      start = colon + 1;
    }
    return roots;
  }
  std::string dataHome = environment("XDG_DATA_HOME");
  if (dataHome.empty() && !environment("HOME").empty()) dataHome = environment("HOME") + "/.local/share";
  if (!dataHome.empty()) roots.user = dataHome + "/norvane/importers";
  roots.local = "/usr/local/lib/norvane/importers";
  std::string exe = executableDirectory();
  if (!exe.empty()) roots.system = exe + "/../lib/norvane/importers";
  return roots;
}

std::string importerListTool() {
  return environment("NORVANE_IMPORTER_LIST_TOOL");
}

std::vector<std::string> importerBundlesInFolder(const std::string& folder) {
  std::vector<std::string> names;
  if (DIR* dir = ::opendir(folder.c_str())) {
    while (dirent* entry = ::readdir(dir)) {
      std::string name = entry->d_name;
      size_t dot = name.rfind('.');
      if (dot != std::string::npos && dot > 0 && ::strcasecmp(name.c_str() + dot + 1, "mdimporter") == 0)
        names.push_back(std::move(name));
    }
    ::closedir(dir);
  }
  std::sort(names.begin(), names.end());
  for (std::string& name : names) name = folder + "/" + name;
  return names;
}

}  // namespace norvane::importers
