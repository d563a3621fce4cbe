// Real URLs for property tests and benchmarks, gathered at run time from the
// text of Debian's documentation: /usr/share/doc/*/copyright and the pages of
// the Python manual. A URL is an "http://" or "https://" run up to white
// space, a quote, a bracket or "<>", without trailing punctuation.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace norvane::urls::corpus {

inline bool endsURL(char c) {
  return static_cast<unsigned char>(c) <= ' ' || c == '"' || c == '\'' || c == '<' || c == '>' || c == '(' ||
         c == ')' || c == '[' || c == ']' || c == '{' || c == '}' || c == '`' || c == '\\';
}

inline void scanText(const std::string& text, std::set<std::string>& found) {
  for (size_t at = text.find("http"); at != std::string::npos; at = text.find("http", at + 4)) {
    size_t start = at;
    if (text.compare(at, 7, "http://") != 0 && text.compare(at, 8, "https://") != 0) continue;
    size_t end = start;
    while (end < text.size() && !endsURL(text[end])) ++end;
    while (end > start && std::string_view(".,;:!?*").find(text[end - 1]) != std::string_view::npos) --end;
    if (end - start > 10) found.insert(text.substr(start, end - start));
  }
}

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Unique URLs in sorted order, as UTF-8.
inline std::vector<std::string> gatherURLs() {
  namespace fs = std::filesystem;
  std::set<std::string> found;
  std::error_code error;
  for (fs::directory_iterator it("/usr/share/doc", error), end; !error && it != end; it.increment(error)) {
    fs::path copyright = it->path() / "copyright";
    if (fs::is_regular_file(copyright, error)) scanText(readFile(copyright), found);
  }
  error.clear();
  for (fs::recursive_directory_iterator it("/usr/share/doc/python3.11/html", error), end; !error && it != end;
       it.increment(error)) {
    if (it->path().extension() == ".html") scanText(readFile(it->path()), found);
  }
  return std::vector<std::string>(found.begin(), found.end());
}

}  // namespace norvane::urls::corpus
