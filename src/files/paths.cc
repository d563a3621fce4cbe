#include "norvane/files/paths.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <unordered_map>

#include "norvane/core/unicode.h"
#include "norvane/files/folders.h"
#include "norvane/text/chars.h"
#include "norvane/text/encodings.h"

namespace norvane::files {
namespace {

using std::u16string;
using std::u16string_view;

String fromUtf8(const std::string& s) {
  return String::fromUtf8(s);
}

bool startsWith(u16string_view s, u16string_view prefix) {
  return s.substr(0, prefix.size()) == prefix;
}
bool endsWith(u16string_view s, u16string_view suffix) {
  return s.size() >= suffix.size() && s.substr(s.size() - suffix.size()) == suffix;
}

// Whether `path` lies in `directory` (both as text); see pathIsInDirectory.
bool isInDirectory(u16string_view path, u16string_view directory) {
  while (!directory.empty() && directory.back() == u'/') directory.remove_suffix(1);
  if (directory.empty()) return false;
  return startsWith(path, directory) && (path.size() == directory.size() || path[directory.size()] == u'/');
}

bool isInDirectory(u16string_view path, const std::string& directory) {
  return isInDirectory(path, utf8ToUtf16(directory));
}

// Bytes of the name in the file system's encoding, without the terminator.
size_t representationLength(u16string_view name) {
  return utf16ToUtf8(name).size();
}

// Deletes units from the end until the name's representation, with its
// terminating NUL, fits into `limit` bytes; never leaves half a surrogate pair.
void cutToRepresentation(u16string& name, size_t limit) {
  if (name.size() > kMaximumFilenameLength) name.resize(kMaximumFilenameLength);
  while (!name.empty() && representationLength(name) + 1 > limit) name.pop_back();
  if (!name.empty() && name.back() >= 0xD800 && name.back() <= 0xDBFF) name.pop_back();
}

bool isExtensionSeparator(unichar u) {
  return u == u'?' || u == u'&' || u == u';' || u == u'=' || u == u'#';
}

}  // namespace

bool isCloudFolder(const String& path) {
  if (path.isEmpty()) return false;
  u16string_view p = path.view();
  const std::string& home = userHomeDirectory();
  if (isInDirectory(p, home + "/Documents/CloudMe") || isInDirectory(p, home + "/Box Sync")) return true;
  for (u16string_view marker : {u"/OneDrive", u"/Google Drive", u"/GoogleDrive"}) {
    if (p.find(marker) != u16string_view::npos) return true;
  }
  for (const auto& folder : DropboxFolders()) {
    if (isInDirectory(p, folder)) return true;
  }
  for (const auto& folder : NextcloudFolders()) {
    if (isInDirectory(p, folder)) return true;
  }
  return false;
}

bool isVolatileFolder(const String& path) {
  return isCloudFolder(path);
}

namespace {
// Number of leading components ("/" counted) that make a volume's mount
// folder, or 0 when the path is on no volume.
size_t volumeDepth(u16string_view p) {
  if (startsWith(p, u"/media/")) return 4;      // /media/<user>/<volume>
  if (startsWith(p, u"/run/media/")) return 5;  // /run/media/<user>/<volume>
  if (startsWith(p, u"/mnt/")) return 3;        // /mnt/<volume>
  return 0;
}
}  // namespace

bool isVolumePath(const String& path) {
  return volumeDepth(path.view()) != 0;
}

String volumePath(const String& path) {
  size_t depth = volumeDepth(path.view());
  if (depth == 0) return String();
  std::vector<String> components = standardizedPathComponents(path);
  if (components.size() < depth) return String();
  u16string result;
  for (size_t i = 1; i < depth; ++i) result += u"/" + components[i].toU16();
  return String(result);
}

bool isPath(const String& path) {
  return !path.isEmpty() && (path[0] == u'/' || path[0] == u'~');
}

bool isTemporaryPath(const String& path) {
  if (path.isNull()) return false;
  u16string_view p = path.view();
  if (startsWith(p, u"/tmp") || startsWith(p, u"/var/tmp/")) return true;
  if (startsWith(p, utf8ToUtf16(temporarySystemDirectory()))) return true;
  return p.find(u"/TemporaryItems") != u16string_view::npos &&
         startsWith(p, utf8ToUtf16(pathInCachesDirectory("norvane/TemporaryItems")));
}

bool isValidPathExtension(const String& extension) {
  return extension.length() >= 1 && extension.length() <= kMaximumPathExtensionLength &&
         text::isAlphaNumString(extension);
}

void createFileSystemRepresentation(u16string& name) {
  cutToRepresentation(name, kMaximumFilenameLength);
}

void createFileSystemRepresentationAndAppendExtension(u16string& name, const String& extension) {
  size_t extensionLength = extension.length();
  if (extensionLength < 1 || extensionLength > kMaximumPathExtensionLength) {
    createFileSystemRepresentation(name);
    return;
  }
  u16string suffix = u"." + extension.toU16();
  if (name.size() > kMaximumFilenameLength) name.resize(kMaximumFilenameLength);
  if (endsWith(name, suffix)) {
    cutToRepresentation(name, kMaximumFilenameLength);
    return;
  }
  cutToRepresentation(name, kMaximumFilenameLength - 1 - extensionLength);
  name += suffix;
}

void createFilename(u16string& name) {
  text::normalizeString(name);
  auto trimmed = [](unichar u) { return u == u'.' || u == u'/' || u == u':' || u == u'_'; };
  size_t start = 0, end = name.size();
  while (start < end && trimmed(name[start])) ++start;
  while (end > start && trimmed(name[end - 1])) --end;
  name = name.substr(start, std::min(end - start, kMaximumFilenameLength));
  for (auto& u : name) {
    switch (u) {
      case u'%':
      case u'&':
      case u'*':
      case u'/':
      case u':':
      case u'<':
      case u'>':
      case u'?':
      case u'\\':
      case u'|':
        u = u'-';
        break;
      default:
        break;
    }
  }
}

namespace {
template <typename Rewrite>
String rewritten(const String& s, Rewrite rewrite) {
  if (s.isNull()) return s;
  u16string text = s.toU16();
  rewrite(text);
  return text == s.view() ? s : String(text);
}
}  // namespace

String stringByCreatingFileSystemRepresentation(const String& name) {
  return rewritten(name, [](u16string& s) { createFileSystemRepresentation(s); });
}
String stringByCreatingFileSystemRepresentationByAppendingExtension(const String& name, const String& extension) {
  return rewritten(name, [&](u16string& s) { createFileSystemRepresentationAndAppendExtension(s, extension); });
}
String stringByCreatingFilename(const String& name) {
  return rewritten(name, [](u16string& s) { createFilename(s); });
}

String relativePathToDirectory(const String& path, const String& directory) {
  std::vector<String> from = standardizedPathComponents(expandTildeInPath(path));
  std::vector<String> to = standardizedPathComponents(expandTildeInPath(directory));
  size_t common = 0;
  while (common < from.size() && common < to.size() && from[common] == to[common]) ++common;
  u16string result;
  if (common == to.size()) {
    result = u"./";
  } else {
    for (size_t i = common; i < to.size(); ++i) result += u"../";
  }
  for (size_t i = common; i < from.size(); ++i) {
    if (i > common) result += u'/';
    result += from[i].view();
  }
  return String(result);
}

bool pathIsInDirectory(const String& path, const String& directory) {
  if (directory.isNull() || path.isNull() || path.isSameObject(directory)) return false;
  return isInDirectory(path.view(), directory.view());
}

bool pathIsInDirectories(const String& path, const std::vector<String>& directories) {
  for (const auto& directory : directories) {
    if (pathIsInDirectory(path, directory)) return true;
  }
  return false;
}

void minimumCoverOfPaths(std::vector<String>& paths) {
  if (paths.size() < 2) return;
  std::sort(paths.begin(), paths.end());
  std::vector<String> kept;
  for (auto& path : paths) {
    if (!kept.empty() && pathIsInDirectory(path, kept.back())) continue;
    kept.push_back(std::move(path));
  }
  paths = std::move(kept);
}

std::vector<String> pathComponents(const String& path) {
  std::vector<String> components;
  u16string_view p = path.view();
  if (p.empty()) return components;
  size_t i = 0;
  if (p[0] == u'/') {
    components.emplace_back(u"/");
    i = 1;
  }
  while (i < p.size()) {
    size_t slash = p.find(u'/', i);
    if (slash == u16string_view::npos) slash = p.size();
    components.emplace_back(p.substr(i, slash - i));
    i = slash + 1;
  }
  if (p.size() > 1 && p.back() == u'/') components.emplace_back(u"/");
  return components;
}

std::vector<String> standardizedPathComponents(const String& path) {
  std::vector<String> result;
  std::vector<String> components = pathComponents(path);
  for (size_t i = 0; i < components.size(); ++i) {
    const String& c = components[i];
    if (c.isEmpty() || c == u"." || (c == u"/" && i > 0)) continue;
    if (c == u"..") {
      if (!result.empty() && !(result.size() == 1 && result[0] == u"/")) result.pop_back();
      continue;
    }
    result.push_back(c);
  }
  return result;
}

String standardizedPath(const String& path) {
  if (path.isNull()) return path;
  // The components joined by "/", the leading "/" taking the place of an
  // empty first component.
  u16string result;
  std::vector<String> components = standardizedPathComponents(path);
  for (size_t i = 0; i < components.size(); ++i) {
    if (i > 0) result += u'/';
    if (!(i == 0 && components[0] == u"/")) result += components[i].view();
  }
  return result == path.view() ? path : String(result);
}

String lastPathComponent(const String& path) {
  u16string_view p = path.view();
  while (p.size() > 1 && p.back() == u'/') p.remove_suffix(1);
  size_t slash = p.rfind(u'/');
  if (slash == u16string_view::npos || p.size() == 1) return String(p);
  return String(p.substr(slash + 1));
}

String stringByAppendingPathComponent(const String& path, const String& component) {
  if (path.isEmpty()) return component;
  u16string result = path.toU16();
  if (result.back() != u'/') result += u'/';
  result += component.view();
  return String(result);
}

namespace {
// Position of the extension's dot in the last component, or npos.
size_t extensionDot(u16string_view p) {
  size_t slash = p.rfind(u'/');
  size_t dot = p.rfind(u'.');
  if (dot == u16string_view::npos || (slash != u16string_view::npos && dot < slash)) return u16string_view::npos;
  size_t nameStart = slash == u16string_view::npos ? 0 : slash + 1;
  if (dot == nameStart || dot + 1 == p.size()) return u16string_view::npos;  // ".profile", "name."
  return dot;
}
}  // namespace

String pathExtension(const String& path) {
  size_t dot = extensionDot(path.view());
  return dot == u16string_view::npos ? String::empty() : String(path.view().substr(dot + 1));
}

String stringByDeletingPathExtension(const String& path) {
  size_t dot = extensionDot(path.view());
  return dot == u16string_view::npos ? path : String(path.view().substr(0, dot));
}

String stringByDeletingFileComponent(const String& path) {
  if (path.isEmpty()) return path;
  u16string_view p = path.view();
  if (p.back() == u'/') return String(p.substr(0, p.size() - 1));
  size_t slash = p.rfind(u'/');
  if (slash == u16string_view::npos) return String::empty();
  if (slash == 0) return String(u"/");
  return String(p.substr(0, slash));
}

String stringByAppendingPathExtensionIfNecessary(const String& path, const String& extension) {
  if (extension.isNull() || text::isEqualToStringNoCase(pathExtension(path), extension)) return path;
  return String(path.toU16() + u"." + extension.toU16());
}

String stringByReplacingPathExtensionWith(const String& path, const String& extension) {
  if (extension.isNull() || pathExtension(path) == extension) return path;
  String base = stringByDeletingPathExtension(path);
  if (extension.isEmpty()) return base;
  return String(base.toU16() + u"." + extension.toU16());
}

String validPathExtension(const String& path) {
  String extension = pathExtension(path);
  u16string_view e = extension.view();
  auto cut = std::find_if(e.begin(), e.end(), isExtensionSeparator);
  String candidate(e.substr(0, static_cast<size_t>(cut - e.begin())));
  return isValidPathExtension(candidate) ? candidate : String::empty();
}

String lowercasePathExtension(const String& path) {
  size_t n = path.length();
  if (n < 2) return String();
  const unichar* p = path.data();
  for (size_t i = n; i-- > 0;) {
    if (p[i] == u'/') return String();
    if (p[i] == u'.') {
      text::ConversionTable lower = text::lowerCharsTable();
      u16string extension(p + i + 1, n - i - 1);
      for (auto& u : extension) u = lower[u];
      return String(extension);
    }
  }
  return String();
}

String stringByResolvingLinkOfPath(const String& path) {
  if (path.isEmpty()) return path;
  char resolved[PATH_MAX];
  if (!::realpath(path.toUtf8().c_str(), resolved)) return path;
  String result = fromUtf8(resolved);
  return result == path ? path : result;
}

String stringByResolvingLinksInPath(const String& path) {
  if (path.isEmpty()) return path;
  static std::mutex cacheMutex;
  static std::unordered_map<std::u16string, String> cache;
  static std::deque<std::u16string> order;  // oldest first
  constexpr size_t kCacheLimit = 1024;

  std::lock_guard lock(cacheMutex);
  if (auto hit = cache.find(path.toU16()); hit != cache.end()) return hit->second;

  // Resolve the longest prefix that exists; what follows it is kept in
  // standard form.
  std::vector<String> components = standardizedPathComponents(expandTildeInPath(path));
  std::string base;
  size_t i = 0;
  if (!components.empty() && components[0] == u"/") {
    base = "/";
    i = 1;
  }
  for (; i < components.size(); ++i) {
    std::string next =
        base.empty() || base == "/" ? base + components[i].toUtf8() : base + "/" + components[i].toUtf8();
    char resolved[PATH_MAX];
    if (!::realpath(next.c_str(), resolved)) break;
    base = resolved;
  }
  for (; i < components.size(); ++i) base += (base.empty() || base == "/" ? "" : "/") + components[i].toUtf8();
  String result = fromUtf8(base);
  if (result == path) result = path;

  if (order.size() >= kCacheLimit) {
    cache.erase(order.front());
    order.pop_front();
  }
  order.push_back(path.toU16());
  cache.emplace(path.toU16(), result);
  return result;
}

String expandTildeInPath(const String& path) {
  if (path.isEmpty() || path[0] != u'~') return path;
  u16string_view p = path.view();
  if (isSandboxed()) {
    if (p == u"~") return fromUtf8(userHomeDirectory());
    if (startsWith(p, u"~/")) return String(utf8ToUtf16(userHomeDirectory()) + u16string(p.substr(1)));
    return path;
  }
  size_t slash = p.find(u'/');
  u16string_view user = p.substr(1, slash == u16string_view::npos ? u16string_view::npos : slash - 1);
  std::string home;
  if (user.empty()) {
    home = homeDirectory();
  } else {
    const passwd* entry = getpwnam(utf16ToUtf8(user).c_str());
    if (!entry || !entry->pw_dir) return path;
    home = entry->pw_dir;
  }
  u16string rest = slash == u16string_view::npos ? u16string() : u16string(p.substr(slash));
  return String(utf8ToUtf16(home) + rest);
}

String abbreviateWithTildeInPath(const String& path) {
  if (path.isEmpty()) return path;
  u16string home = utf8ToUtf16(isSandboxed() ? userHomeDirectory() : homeDirectory());
  while (home.size() > 1 && home.back() == u'/') home.pop_back();
  u16string_view p = path.view();
  if (home.empty() || home == u"/" || !startsWith(p, home)) return path;
  if (p.size() == home.size() || (p.size() == home.size() + 1 && p.back() == u'/')) return String(u"~");
  if (p[home.size()] != u'/') return path;
  return String(u"~" + u16string(p.substr(home.size())));
}

namespace {

constexpr char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int base64Value(unichar u) {
  if (u >= u'A' && u <= u'Z') return u - u'A';
  if (u >= u'a' && u <= u'z') return u - u'a' + 26;
  if (u >= u'0' && u <= u'9') return u - u'0' + 52;
  if (u == u'+') return 62;
  if (u == u'/') return 63;
  return 0;  // anything else counts as 0
}

std::string base64Encode(const uint8_t* bytes, size_t length, bool pad) {
  std::string out;
  out.reserve((length + 2) / 3 * 4);
  for (size_t i = 0; i < length; i += 3) {
    uint32_t group = uint32_t{bytes[i]} << 16;
    if (i + 1 < length) group |= uint32_t{bytes[i + 1]} << 8;
    if (i + 2 < length) group |= bytes[i + 2];
    size_t remaining = length - i;
    size_t characters = remaining >= 3 ? 4 : remaining + 1;
    for (size_t c = 0; c < characters; ++c) out.push_back(kBase64Alphabet[(group >> (18 - 6 * c)) & 63]);
    if (pad) out.append(4 - characters, '=');
  }
  return out;
}

// Decodes groups of four characters; a partial last group gives the bytes
// its characters fill completely.
Data base64Decode(u16string_view text) {
  Data out;
  out.reserve(text.size() / 4 * 3 + 3);
  for (size_t i = 0; i < text.size(); i += 4) {
    size_t characters = std::min<size_t>(4, text.size() - i);
    uint32_t group = 0;
    for (size_t c = 0; c < 4; ++c) group = (group << 6) | (c < characters ? base64Value(text[i + c]) : 0);
    size_t bytes = characters * 6 / 8;
    for (size_t b = 0; b < bytes; ++b) out.push_back(static_cast<uint8_t>(group >> (16 - 8 * b)));
  }
  return out;
}

}  // namespace

String encodedBase64Data(const Data& data) {
  return String::fromLatin1(base64Encode(data.data(), data.size(), true));
}

String encodebase64(const String& s) {
  std::string utf8 = s.toUtf8();
  return String::fromLatin1(base64Encode(reinterpret_cast<const uint8_t*>(utf8.data()), utf8.size(), false));
}

String decodebase64(const String& s) {
  return decodebase64UsingEncoding(s, text::NSUTF8StringEncoding);
}

String decodebase64UsingEncoding(const String& s, uint32_t nsStringEncoding) {
  if (s.isNull() || s.isEmpty()) return s;
  Data bytes = base64Decode(s.view());
  auto zero = std::find(bytes.begin(), bytes.end(), 0);
  bytes.erase(zero, bytes.end());
  if (bytes.empty()) return String();
  return text::stringWithBytes(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
                               nsStringEncoding);
}

std::optional<Data> decodedBase64Data(const String& s) {
  Data bytes = base64Decode(s.view());
  for (size_t i = s.length(); i > 0 && s[i - 1] == u'=' && !bytes.empty(); --i) bytes.pop_back();
  if (bytes.empty()) return std::nullopt;
  return bytes;
}

bool isBase64String(const String& s) {
  text::CharacterSetRep white = text::whiteCharacterSetRep();
  size_t end = s.length();
  while (end > 0 && text::isInRep(white, s[end - 1])) --end;
  if (end == 0) return false;
  for (size_t i = 0; i < end; ++i) {
    unsigned char byte = static_cast<unsigned char>(s[i] & 0xFF);
    bool ok = (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
              byte == '+' || byte == '/';
    if (!ok) return false;
  }
  return true;
}

String hexStringValue(const Data& data) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string hex;
  hex.reserve(data.size() * 2);
  for (uint8_t byte : data) {
    hex.push_back(kDigits[byte >> 4]);
    hex.push_back(kDigits[byte & 15]);
  }
  return String::fromLatin1(hex);
}

}  // namespace norvane::files
