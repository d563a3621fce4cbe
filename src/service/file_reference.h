// File references: the file argument of a request is bookmark data, a file
// URL or a path string, and becomes a working path for the request.
//
// There is no sandbox here, so a bookmark is the file URL it was made for,
// in a small envelope: the bytes "NVBM", a version byte (1), the creation
// options as 4 bytes little-endian, then the URL's UTF-8. Resolving checks
// the envelope and that the file still exists. Security-scoped access to a
// file URL always succeeds; a URL of another scheme cannot be accessed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "norvane/core/value.h"

namespace norvane::service {

// Creation options.
inline constexpr uint32_t kBookmarkWithSecurityScope = 2048;
inline constexpr uint32_t kBookmarkSecurityScopeReadOnly = 6144;
// Resolution option.
inline constexpr uint32_t kBookmarkResolveWithSecurityScope = 1024;

// Bookmark data for an absolute path; nullopt for a null, empty or relative
// path.
std::optional<Data> bookmarkDataForPath(const String& path, uint32_t options);
// The file URL of bookmark data, or nullopt with `error` set to a one-line
// description.
std::optional<Url> URLByResolvingBookmarkData(const Data& bookmark, std::string* error);

// The file URL of an absolute path, and the path of a file URL (null for
// other URLs). Unreserved characters and "/" stay, the rest is
// percent-encoded.
Url fileURLWithPath(const String& path);
String pathOfFileURL(const Url& url);

bool startAccessingSecurityScopedResource(const Url& url);
void stopAccessingSecurityScopedResource(const Url& url);

// Calls made in this process so far, for checks of their pairing.
struct SecurityScopeCalls {
  uint64_t starts;
  uint64_t stops;
};
SecurityScopeCalls securityScopeCalls();

// A request's view of its file reference: the working path while the
// object lives, with access started on construction and stopped exactly
// once, by stopAccess() or on destruction.
class WorkingPath {
 public:
  explicit WorkingPath(const Value& fileReference);
  ~WorkingPath() { stopAccess(); }
  WorkingPath(const WorkingPath&) = delete;
  WorkingPath& operator=(const WorkingPath&) = delete;

  // Null when the reference gave no path.
  const String& path() const { return path_; }
  void stopAccess();

 private:
  std::optional<Url> url_;
  String path_;
};

}  // namespace norvane::service
