// Builds importer bundle folders at run time around the test plug-ins, and
// private temporary folders that are removed afterwards.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace testing_support {

namespace fs = std::filesystem;

// A fresh folder under $TMPDIR, removed with the object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "norvane-test-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data()) ? pattern : std::string();
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline void writeFile(const std::string& path, const std::string& bytes) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string plistString(const std::string& s) {
  std::string out;
  for (char c : s) {
    if (c == '<')
      out += "&lt;";
    else if (c == '&')
      out += "&amp;";
    else
      out += c;
  }
  return "<string>" + out + "</string>";
}

struct BundleSpec {
  BundleSpec(std::string bundleIdentifier, std::string pluginLibrary,
             std::vector<std::pair<std::string, std::string>> factoryFunctions, std::vector<std::string> claimedTypes,
             std::vector<std::string> exportedExtensions)
      : identifier(std::move(bundleIdentifier)),
        library(std::move(pluginLibrary)),
        factories(std::move(factoryFunctions)),
        types(std::move(claimedTypes)),
        extensions(std::move(exportedExtensions)) {}

  std::string identifier;
  std::string library;                                         // the built plug-in; empty: no executable
  std::vector<std::pair<std::string, std::string>> factories;  // UUID, function
  std::vector<std::string> types;
  std::vector<std::string> extensions;
  bool registerForImporterType = true;
  std::string extraKeys;  // raw plist XML added to the top dictionary
};

inline constexpr const char* kImporterType = "8B08C4BF-415B-11D8-B3F9-0003936726FC";

// Writes folder/name with Info.plist and a link to the plug-in; answers
// the bundle path.
inline std::string writeBundle(const std::string& folder, const std::string& name, const BundleSpec& spec) {
  std::string path = folder + "/" + name;
  fs::create_directories(path);
  std::string plist =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
      "<key>CFBundleIdentifier</key>" +
      plistString(spec.identifier) + "\n";
  if (!spec.library.empty()) {
    plist += "<key>CFBundleExecutable</key><string>plugin.so</string>\n";
    fs::create_symlink(spec.library, path + "/plugin.so");
  }
  plist +=
      "<key>CFBundleDocumentTypes</key><array><dict><key>CFBundleTypeRole</key><string>MDImporter</string>"
      "<key>LSItemContentTypes</key><array>";
  for (const auto& type : spec.types) plist += plistString(type);
  plist +=
      "</array></dict></array>\n<key>UTExportedTypeDeclarations</key><array><dict>"
      "<key>UTTypeTagSpecification</key><dict><key>public.filename-extension</key><array>";
  for (const auto& extension : spec.extensions) plist += plistString(extension);
  plist += "</array></dict></dict></array>\n";
  if (!spec.factories.empty()) {
    plist += "<key>CFPlugInFactories</key><dict>";
    for (const auto& [uuid, function] : spec.factories) plist += "<key>" + uuid + "</key>" + plistString(function);
    plist += "</dict>\n";
    if (spec.registerForImporterType) {
      plist += "<key>CFPlugInTypes</key><dict><key>" + std::string(kImporterType) + "</key><array>";
      for (const auto& factory : spec.factories) plist += plistString(factory.first);
      plist += "</array></dict>\n";
    }
  }
  plist += spec.extraKeys + "</dict>\n</plist>\n";
  writeFile(path + "/Info.plist", plist);
  return path;
}

// The built test plug-ins.
inline std::string pluginLibrary(const char* name) {
  return std::string(NORVANE_BINARY_DIR) + "/tests/importers/plugins/" + name + ".so";
}

}  // namespace testing_support
