// Bundle: an importer bundle folder as found on disk, with its Info.plist
// read into a Dictionary. Reading never loads the shared object.
#pragma once

#include <optional>
#include <string>

#include "norvane/core/value.h"

namespace norvane::importers {

class Bundle {
 public:
  // The bundle at `path` (a folder holding Info.plist), or nullopt when the
  // folder or its Info.plist cannot be read or is no dictionary.
  static std::optional<Bundle> bundleWithPath(const std::string& path);

  const std::string& path() const { return path_; }
  // "CFBundleIdentifier", or the null String.
  String bundleIdentifier() const;
  // The value of an Info.plist key; null when absent.
  const Value* objectForInfoDictionaryKey(std::u16string_view key) const { return info_.find(key); }
  // The shared object named by "CFBundleExecutable"; empty when unnamed.
  std::string executablePath() const;
  // True when the shared object exists and is an ELF shared object for this
  // process's machine and word size, so that loading it can work.
  bool preflight() const;

 private:
  Bundle(std::string path, Dictionary info) : path_(std::move(path)), info_(std::move(info)) {}
  std::string path_;
  Dictionary info_;
};

// Reads a property list (XML or binary) into a Value; nullopt when it does
// not parse. Keys of unknown node types are left out.
std::optional<Value> readPropertyList(const std::string& bytes);

}  // namespace norvane::importers
