// MetaDataImporter: the registry of importer plug-ins and the metadata
// road built on it.
//
// Discovery runs at most once per road and instance, never at creation:
//  - loadExtractorPlugins() scans the importer roots (importer_folders.h)
//    and is the road a metadata request takes; it alone fills the factory
//    tables.
//  - loadMDImporters() asks the list tool (NORVANE_IMPORTER_LIST_TOOL) for
//    importer paths, or else walks the roots; it fills the type and
//    extension tables only.
//
// After loading, requests read the tables without a lock through an
// immutable snapshot; retiring a failed importer publishes a new snapshot,
// so a walk in progress on any thread keeps the tables it started with.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "importers/bundle.h"
#include "importers/importer_folders.h"
#include "importers/plugin_host.h"
#include "norvane/core/value.h"

namespace norvane::importers {

// Importer path to a list of strings, in insertion order.
using ImporterTable = std::vector<std::pair<std::string, std::vector<std::string>>>;

// The entry of `key`, or null.
const std::vector<std::string>* findEntry(const ImporterTable& table, const std::string& key);

struct ImporterTables {
  // The importer bundles in the order they are tried.
  std::vector<std::string> MDImporterArray;
  // Lower-case MIME types an importer claims.
  ImporterTable contentTypesForMDImporter;
  // Lower-case filename extensions an importer exports.
  ImporterTable extensionsForMDImporter;
  // Factory UUID strings of a bundle; only the plug-in road makes it.
  std::optional<ImporterTable> factoriesForMDImporter;
  // Every factory registered for the importer type, in discovery order.
  std::optional<std::vector<std::string>> allFactories;
  // Where each (bundle path, factory UUID) is found; plug-in road only.
  std::vector<std::pair<std::pair<std::string, std::string>, FactoryLocation>> factoryLocations;
};

// The stage of metaDataOfFileAtPath() that the format readers attach. It
// receives the working path and the attributes so far.
struct MetadataStages {
  // Runs when there are no attributes or they are empty; may create them.
  std::function<void(const std::string& path, std::optional<Dictionary>& attributes)> readFileItself;
};

class MetaDataImporter {
 public:
  // Roots and list tool as the environment sets them.
  MetaDataImporter();
  MetaDataImporter(ImporterRoots roots, std::string listTool);
  MetaDataImporter(const MetaDataImporter&) = delete;
  MetaDataImporter& operator=(const MetaDataImporter&) = delete;

  // The process-wide instance, made on first call.
  static MetaDataImporter& sharedImporter();

  void loadExtractorPlugins();
  void loadMDImporters();

  // The tables as they stand; later changes do not touch the snapshot.
  std::shared_ptr<const ImporterTables> tables() const;

  // Enters one bundle and its path into the tables.
  void addBundleToMDImporters(const Bundle& bundle, const std::string& path);
  // Moves the installation's Archives.mdimporter to the end.
  void sortMDImporters();

  // Does `importer` take a file of this type and extension (both lower
  // case)? Without conformance: by extension, then by exact type. With it:
  // by subclass of a claimed type, never for the Archives importer.
  bool MDImporterSupportsUTI(const std::string& importer, const std::string& uti, bool useConform,
                             const std::string& extension) const;

  // Runs the importers that take the file at `path`. With a place, the
  // attributes of the last importer that ran stand there. True when an
  // importer took the file.
  bool getMetaData(std::optional<Dictionary>* place, const String& path);
  bool supportsFileAtPath(const String& path);
  // The file's attributes, made safe to send; nullopt when nothing was
  // learnt.
  std::optional<Dictionary> metaDataOfFileAtPath(const String& path);
  // "kMDItemTextContent" of the attributes when it is a string, else null.
  String textContentOfFileAtPath(const String& path);

  // True for values that may cross the process boundary (one level only):
  // everything but URLs.
  static bool isValidObject(const Value& value);
  // Stage 4: drops nulls, arrays holding an invalid value and other
  // invalid values; URLs become their strings.
  static void makeSafeForBoundary(Dictionary& attributes);

  // Attaches the later stages of metaDataOfFileAtPath(); call before use.
  void setMetadataStages(MetadataStages stages) { stages_ = std::move(stages); }

  // The installation's importer that serves only by exact type/extension.
  std::string archivesImporterPath() const { return roots_.system + "/Archives.mdimporter"; }

 private:
  void publish(std::shared_ptr<const ImporterTables> tables);
  void addBundle(ImporterTables& tables, const Bundle& bundle, const std::string& path) const;
  void sortImporters(ImporterTables& tables) const;
  bool supports(const ImporterTables& tables, const std::string& importer, const std::string& uti, bool useConform,
                const std::string& extension) const;
  void retireImporter(const std::string& importer);

  ImporterRoots roots_;
  std::string listTool_;
  MetadataStages stages_;
  std::once_flag extractorOnce_;
  std::once_flag mdimportersOnce_;
  mutable std::mutex tablesMutex_;
  std::shared_ptr<const ImporterTables> tables_;
};

// Parses the old-style property-list array "( "a", b, ... )" of strings;
// nullopt when it is not one.
std::optional<std::vector<std::string>> parseOldStyleStringArray(std::string_view text);

}  // namespace norvane::importers
