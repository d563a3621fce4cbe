// The benchmark corpus: every page of the Python documentation
// (package python3.11-doc), as raw bytes in path order. Empty when the
// package is not installed.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

inline std::vector<std::string> readPythonDocPages() {
  const std::filesystem::path root = "/usr/share/doc/python3.11/html";
  std::vector<std::filesystem::path> paths;
  std::error_code error;
  for (std::filesystem::recursive_directory_iterator it(root, error), end; !error && it != end; it.increment(error)) {
    if (it->is_regular_file() && it->path().extension() == ".html") paths.push_back(it->path());
  }
  std::sort(paths.begin(), paths.end());
  std::vector<std::string> pages;
  for (const auto& path : paths) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream content;
    content << in.rdbuf();
    pages.push_back(content.str());
  }
  return pages;
}
