#include "service/file_reference.h"

#include <strings.h>
#include <sys/stat.h>

#include <atomic>
#include <cstring>

#include "importers/plugin_host.h"
#include "norvane/core/log.h"

namespace norvane::service {
namespace {

constexpr uint8_t kMagic[] = {'N', 'V', 'B', 'M'};
constexpr uint8_t kVersion = 1;
constexpr size_t kHeaderLength = sizeof kMagic + 1 + 4;

std::atomic<uint64_t> starts{0};
std::atomic<uint64_t> stops{0};

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::optional<Data> bookmarkDataForPath(const String& path, uint32_t options) {
  if (path.isEmpty() || path[0] != u'/') return std::nullopt;
  std::string url = fileURLWithPath(path).string.toUtf8();
  Data data(kMagic, kMagic + sizeof kMagic);
  data.push_back(kVersion);
  for (int i = 0; i < 4; ++i) data.push_back(static_cast<uint8_t>(options >> (8 * i)));
  data.insert(data.end(), url.begin(), url.end());
  return data;
}

std::optional<Url> URLByResolvingBookmarkData(const Data& bookmark, std::string* error) {
  auto fail = [&](const char* why) -> std::optional<Url> {
    if (error) *error = why;
    return std::nullopt;
  };
  if (bookmark.size() <= kHeaderLength || std::memcmp(bookmark.data(), kMagic, sizeof kMagic) != 0 ||
      bookmark[sizeof kMagic] != kVersion)
    return fail("The bookmark data isn't in the correct format.");
  Url url{String::fromUtf8(
      {reinterpret_cast<const char*>(bookmark.data()) + kHeaderLength, bookmark.size() - kHeaderLength})};
  String path = pathOfFileURL(url);
  struct stat st;
  if (path.isNull()) return fail("The bookmark does not refer to a file.");
  if (::stat(path.toUtf8().c_str(), &st) != 0) return fail("The file the bookmark refers to doesn't exist.");
  return url;
}

Url fileURLWithPath(const String& path) {
  return Url{String::fromLatin1(importers::fileUrlOfPath(path.toUtf8()))};
}

String pathOfFileURL(const Url& url) {
  std::string s = url.string.toUtf8();
  constexpr std::string_view kScheme = "file://";
  if (s.size() < kScheme.size() || strncasecmp(s.c_str(), kScheme.data(), kScheme.size()) != 0) return String();
  std::string_view rest = std::string_view(s).substr(kScheme.size());
  if (rest.substr(0, 9) == "localhost") rest.remove_prefix(9);
  if (rest.empty() || rest[0] != '/') return String();
  rest = rest.substr(0, rest.find_first_of("?#"));
  std::string path;
  for (size_t i = 0; i < rest.size(); ++i) {
    int high = 0, low = 0;
    if (rest[i] == '%' && i + 2 < rest.size() && (high = hexValue(rest[i + 1])) >= 0 &&
        (low = hexValue(rest[i + 2])) >= 0) {
      path += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      path += rest[i];
    }
  }
  if (path.size() > 1 && path.back() == '/') path.pop_back();
  return String::fromUtf8(path);
}

bool startAccessingSecurityScopedResource(const Url& url) {
  starts.fetch_add(1, std::memory_order_relaxed);
  return !pathOfFileURL(url).isNull();
}

void stopAccessingSecurityScopedResource(const Url&) {
  stops.fetch_add(1, std::memory_order_relaxed);
}

SecurityScopeCalls securityScopeCalls() {
  return {starts.load(), stops.load()};
}

WorkingPath::WorkingPath(const Value& fileReference) {
  if (const Data* bookmark = fileReference.data()) {
    std::string error;
    url_ = URLByResolvingBookmarkData(*bookmark, &error);
    if (!url_ && !error.empty()) logMessage(error);
  } else if (const Url* url = fileReference.url()) {
    url_ = *url;
  } else if (fileReference.isString()) {
    path_ = fileReference.asString();
  }
  if (url_ && startAccessingSecurityScopedResource(*url_)) path_ = pathOfFileURL(*url_);
}

void WorkingPath::stopAccess() {
  if (!url_) return;
  stopAccessingSecurityScopedResource(*url_);
  url_.reset();
}

}  // namespace norvane::service
