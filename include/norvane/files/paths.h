// Operations on path strings: classification, safe file names, relations
// between paths, standard forms, extensions, links and tildes; and the
// base-64 and hexadecimal text forms of data.
//
// Paths are UTF-16 `String`s like all text of the library. Operations that
// rewrite a path return the receiver itself when nothing changed. None logs.
#pragma once

#include <optional>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/core/value.h"

namespace norvane::files {

inline constexpr size_t kMaximumFilenameLength = 250;
inline constexpr size_t kMaximumPathExtensionLength = 17;

// Classification.
bool isCloudFolder(const String& path);
bool isVolatileFolder(const String& path);
// Removable and mounted volumes: /media/<user>/<volume>, /run/media/<user>/<volume>, /mnt/<volume>.
bool isVolumePath(const String& path);
// The volume's mount folder for a path inside one; null otherwise.
String volumePath(const String& path);
bool isPath(const String& path);  // begins with "/" or "~"
bool isTemporaryPath(const String& path);
bool isValidPathExtension(const String& extension);  // 1 to 17 alphanumeric units

// File-system names. The representation fits the file system's limit for a
// name (250 bytes of UTF-8 here).
String stringByCreatingFileSystemRepresentation(const String& name);
String stringByCreatingFileSystemRepresentationByAppendingExtension(const String& name, const String& extension);
String stringByCreatingFilename(const String& name);
void createFileSystemRepresentation(std::u16string& name);
void createFileSystemRepresentationAndAppendExtension(std::u16string& name, const String& extension);
void createFilename(std::u16string& name);

// Relations.
String relativePathToDirectory(const String& path, const String& directory);
bool pathIsInDirectory(const String& path, const String& directory);
bool pathIsInDirectories(const String& path, const std::vector<String>& directories);
// Sorts and reduces the paths to the smallest set of folders covering all.
void minimumCoverOfPaths(std::vector<String>& paths);

// Standard forms and components.
String stringByDeletingFileComponent(const String& path);
std::vector<String> standardizedPathComponents(const String& path);
String standardizedPath(const String& path);
std::vector<String> pathComponents(const String& path);  // "/" first for absolute paths
String lastPathComponent(const String& path);
String stringByAppendingPathComponent(const String& path, const String& component);
String pathExtension(const String& path);  // of the last component; empty if none
String stringByDeletingPathExtension(const String& path);

// Extensions.
String stringByAppendingPathExtensionIfNecessary(const String& path, const String& extension);
String stringByReplacingPathExtensionWith(const String& path, const String& extension);
String validPathExtension(const String& path);
String lowercasePathExtension(const String& path);  // null: none

// Links and tildes. Linux has no alias files: a link is a symbolic link.
String stringByResolvingLinkOfPath(const String& path);
String stringByResolvingLinksInPath(const String& path);
String expandTildeInPath(const String& path);
String abbreviateWithTildeInPath(const String& path);

// Base 64 (RFC 4648 alphabet with "+" and "/") and hexadecimal.
String encodedBase64Data(const Data& data);  // with "=" padding
String encodebase64(const String& s);        // UTF-8 bytes, no padding
String decodebase64(const String& s);        // as UTF-8
String decodebase64UsingEncoding(const String& s, uint32_t nsStringEncoding);
std::optional<Data> decodedBase64Data(const String& s);
bool isBase64String(const String& s);
String hexStringValue(const Data& data);

}  // namespace norvane::files
