#include "importers/metadata_importer.h"

#include <fcntl.h>
#include <glib.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstring>

#include "importers/attribute_repairs.h"
#include "importers/content_types.h"
#include "norvane/core/log.h"
#include "norvane/core/unicode.h"
#include "norvane/importer.h"
#include "norvane/text/chars.h"

extern char** environ;

namespace norvane::importers {
namespace {

// Bundles that are never entered: mail tag importers that misbehave, and
// EPUB importers, since EPUB books have a reader of their own.
bool isExcludedBundle(const std::string& lastComponent, const std::string& identifier) {
  return identifier == "ca.indev.mailtags.mdimporter" || lastComponent == "TagsMail.mdimporter" ||
         lastComponent == "_TagsMail.mdimporter" || identifier == "org.idpf.epub.mdimporter" ||
         lastComponent == "epub.mdimporter";
}

std::string lowerCased(const std::string& utf8) {
  gchar* lower = g_utf8_strdown(utf8.c_str(), static_cast<gssize>(utf8.size()));
  std::string result = lower ? lower : "";
  g_free(lower);
  return result;
}

std::string lastPathComponent(const std::string& path) {
  size_t end = path.find_last_not_of('/');
  if (end == std::string::npos) return path.empty() ? "" : "/";
  size_t slash = path.rfind('/', end);
  return path.substr(slash == std::string::npos ? 0 : slash + 1,
                     end - (slash == std::string::npos ? 0 : slash + 1) + 1);
}

std::string pathExtension(const std::string& path) {
  std::string last = lastPathComponent(path);
  size_t dot = last.rfind('.');
  if (dot == std::string::npos || dot == 0) return {};
  return last.substr(dot + 1);
}

bool hasPathPrefix(const std::string& path, const std::string& folder) {
  return !folder.empty() && path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 &&
         path[folder.size()] == '/';
}

std::vector<std::string>& entryFor(ImporterTable& table, const std::string& key) {
  for (auto& [k, v] : table)
    if (k == key) return v;
  table.emplace_back(key, std::vector<std::string>());
  return table.back().second;
}

void eraseEntry(ImporterTable& table, const std::string& key) {
  table.erase(std::remove_if(table.begin(), table.end(), [&](const auto& e) { return e.first == key; }), table.end());
}

bool contains(const std::vector<std::string>* list, const std::string& item) {
  return list && std::find(list->begin(), list->end(), item) != list->end();
}

// A UUID string in the canonical upper-case form, or empty when `s` is none.
std::string canonicalUuid(const std::string& s) {
  static constexpr size_t kDashes[] = {8, 13, 18, 23};
  if (s.size() != 36) return {};
  std::string out = s;
  for (size_t i = 0; i < out.size(); ++i) {
    bool dash = std::find(std::begin(kDashes), std::end(kDashes), i) != std::end(kDashes);
    if (dash ? out[i] != '-' : !std::isxdigit(static_cast<unsigned char>(out[i]))) return {};
    out[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(out[i])));
  }
  return out;
}

bool isDynamicallyRegistered(const std::string& path) {
  std::optional<Bundle> bundle = Bundle::bundleWithPath(path);
  if (!bundle) return false;
  const Value* v = bundle->objectForInfoDictionaryKey(u"CFPlugInDynamicRegistration");
  return v && v->isBoolean() && v->asBool();
}

// The factories a bundle registers for the importer type ("CFPlugInTypes").
void appendRegisteredFactories(const Bundle& bundle, std::vector<std::string>& factories) {
  const Value* types = bundle.objectForInfoDictionaryKey(u"CFPlugInTypes");
  const Dictionary* byType = types ? types->dictionary() : nullptr;
  if (!byType) return;
  for (const auto& [type, list] : *byType) {
    if (canonicalUuid(type.toUtf8()) != NORVANE_IMPORTER_TYPE_ID || !list.array()) continue;
    for (const Value& factory : *list.array()) {
      std::string id = canonicalUuid(factory.asString().toUtf8());
      if (id.empty()) id = factory.asString().toUtf8();  // kept; passed over when walked
      if (std::find(factories.begin(), factories.end(), id) == factories.end()) factories.push_back(id);
    }
  }
}

// Runs `tool -L` and answers what it wrote to standard error.
std::optional<std::string> standardErrorOfTool(const std::string& tool) {
  int pipeFds[2];
  if (::pipe2(pipeFds, O_CLOEXEC) != 0) return std::nullopt;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDERR_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  char* argv[] = {const_cast<char*>(tool.c_str()), const_cast<char*>("-L"), nullptr};
  pid_t pid = 0;
  int spawned = ::posix_spawn(&pid, tool.c_str(), &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  ::close(pipeFds[1]);
  std::string output;
  if (spawned == 0) {
    char buffer[4096];
    for (;;) {
      ssize_t n = ::read(pipeFds[0], buffer, sizeof buffer);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) break;
      output.append(buffer, static_cast<size_t>(n));
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
  }
  ::close(pipeFds[0]);
  if (spawned != 0) return std::nullopt;
  return output;
}

}  // namespace

const std::vector<std::string>* findEntry(const ImporterTable& table, const std::string& key) {
  for (const auto& [k, v] : table)
    if (k == key) return &v;
  return nullptr;
}

MetaDataImporter::MetaDataImporter() : MetaDataImporter(defaultImporterRoots(), importerListTool()) {}

MetaDataImporter::MetaDataImporter(ImporterRoots roots, std::string listTool)
    : roots_(std::move(roots)), listTool_(std::move(listTool)), tables_(std::make_shared<ImporterTables>()) {}

MetaDataImporter& MetaDataImporter::sharedImporter() {
  static MetaDataImporter* shared = new MetaDataImporter();
  return *shared;
}

std::shared_ptr<const ImporterTables> MetaDataImporter::tables() const {
  std::lock_guard<std::mutex> lock(tablesMutex_);
  return tables_;
}

void MetaDataImporter::publish(std::shared_ptr<const ImporterTables> tables) {
  std::lock_guard<std::mutex> lock(tablesMutex_);
  tables_ = std::move(tables);
}

void MetaDataImporter::addBundleToMDImporters(const Bundle& bundle, const std::string& path) {
  std::lock_guard<std::mutex> lock(tablesMutex_);
  auto copy = std::make_shared<ImporterTables>(*tables_);
  addBundle(*copy, bundle, path);
  tables_ = std::move(copy);
}

void MetaDataImporter::sortMDImporters() {
  std::lock_guard<std::mutex> lock(tablesMutex_);
  auto copy = std::make_shared<ImporterTables>(*tables_);
  sortImporters(*copy);
  tables_ = std::move(copy);
}

void MetaDataImporter::addBundle(ImporterTables& tables, const Bundle& bundle, const std::string& path) const {
  std::string lastComponent = lastPathComponent(path);
  String identifier = bundle.bundleIdentifier();
  if (isExcludedBundle(lastComponent, identifier.toUtf8())) {
    logFormat("Skipped: {} ({})", lastComponent, identifier.isNull() ? "(null)" : identifier.toUtf8());
    return;
  }

  const Value* documentTypes = bundle.objectForInfoDictionaryKey(u"CFBundleDocumentTypes");
  if (const Array* entries = documentTypes ? documentTypes->array() : nullptr) {
    for (const Value& entry : *entries) {
      const Dictionary* d = entry.dictionary();
      if (!d) continue;
      const Value* role = d->find(u"CFBundleTypeRole");
      const Value* types = d->find(u"LSItemContentTypes");
      if (!role || !(role->asString() == u"MDImporter") || !types || !types->isArray()) continue;
      std::vector<std::string>& list = entryFor(tables.contentTypesForMDImporter, path);
      for (const Value& type : *types->array()) {
        if (!type.isString()) continue;
        std::string lower = lowerCased(type.asString().toUtf8());
        list.push_back(lower == "dyn.ah62d4rv4ge80g4dr" ? "com.microsoft.chm-archive" : lower);
      }
    }
  }

  const Value* declarations = bundle.objectForInfoDictionaryKey(u"UTExportedTypeDeclarations");
  if (const Array* entries = declarations ? declarations->array() : nullptr) {
    std::vector<std::string>& list = entryFor(tables.extensionsForMDImporter, path);
    for (const Value& entry : *entries) {
      const Dictionary* d = entry.dictionary();
      const Value* tags = d ? d->find(u"UTTypeTagSpecification") : nullptr;
      const Value* extensions =
          tags && tags->dictionary() ? tags->dictionary()->find(u"public.filename-extension") : nullptr;
      if (!extensions || !extensions->isArray()) continue;
      for (const Value& extension : *extensions->array())
        if (extension.isString() && !text::isWhiteString(extension.asString()))
          list.push_back(lowerCased(extension.asString().toUtf8()));
    }
  }

  const Value* factories = bundle.objectForInfoDictionaryKey(u"CFPlugInFactories");
  if (tables.factoriesForMDImporter && factories && factories->isDictionary()) {
    std::vector<std::string>& list = entryFor(*tables.factoriesForMDImporter, path);
    for (const auto& [factory, function] : *factories->dictionary()) {
      list.push_back(factory.toUtf8());
      std::string id = canonicalUuid(factory.toUtf8());
      if (!id.empty() && function.isString())
        tables.factoryLocations.push_back({{path, id}, {bundle.executablePath(), function.asString().toUtf8()}});
    }
  }
}

void MetaDataImporter::sortImporters(ImporterTables& tables) const {
  std::vector<std::string>& array = tables.MDImporterArray;
  auto it = std::find(array.begin(), array.end(), archivesImporterPath());
  if (it == array.end()) return;
  std::string archives = std::move(*it);
  array.erase(it);
  array.push_back(std::move(archives));
}

void MetaDataImporter::loadExtractorPlugins() {
  std::call_once(extractorOnce_, [this] {
    auto tables = std::make_shared<ImporterTables>(*this->tables());
    tables->contentTypesForMDImporter.clear();
    tables->extensionsForMDImporter.clear();
    tables->factoriesForMDImporter.emplace();
    tables->factoryLocations.clear();
    std::vector<std::string> factories;
    for (const std::string& root : roots_.inOrder()) {
      for (const std::string& path : importerBundlesInFolder(root)) {
        std::optional<Bundle> bundle = Bundle::bundleWithPath(path);
        if (!bundle || !bundle->preflight()) continue;
        addBundle(*tables, *bundle, path);
        appendRegisteredFactories(*bundle, factories);
      }
    }
    tables->allFactories = std::move(factories);
    tables->MDImporterArray.clear();
    for (const auto& entry : *tables->factoriesForMDImporter) tables->MDImporterArray.push_back(entry.first);
    sortImporters(*tables);
    publish(std::move(tables));
  });
}

void MetaDataImporter::loadMDImporters() {
  std::call_once(mdimportersOnce_, [this] {
    auto tables = std::make_shared<ImporterTables>(*this->tables());
    tables->contentTypesForMDImporter.clear();
    tables->extensionsForMDImporter.clear();
    tables->MDImporterArray.clear();
    std::vector<std::string>& array = tables->MDImporterArray;

    std::optional<std::string> output;
    if (!listTool_.empty()) output = standardErrorOfTool(listTool_);
    if (output && !utf8ToUtf16Strict(*output)) {
      publish(std::move(tables));
      return;
    }
    std::vector<std::string> list;
    if (output) {
      size_t start = output->find("(\n");
      std::string_view text = start == std::string::npos ? std::string_view() : std::string_view(*output).substr(start);
      if (auto parsed = parseOldStyleStringArray(text)) list = std::move(*parsed);
    }

    if (!list.empty()) {
      for (const std::string* prefix : {&roots_.user, &roots_.local, &roots_.system}) {
        for (size_t i = list.size(); i-- > 0;) {
          if (isDynamicallyRegistered(list[i])) {
            list.erase(list.begin() + static_cast<ptrdiff_t>(i));
          } else if (hasPathPrefix(list[i], *prefix)) {
            array.push_back(list[i]);
            list.erase(list.begin() + static_cast<ptrdiff_t>(i));
          }
        }
      }
      array.insert(array.end(), list.begin(), list.end());
      std::string mail = roots_.system + "/Mail.mdimporter";
      struct stat st;
      if (!roots_.system.empty() && std::find(array.begin(), array.end(), mail) == array.end() &&
          ::stat(mail.c_str(), &st) == 0) {
        array.insert(array.begin(), mail);
        logFormat("Added: {}", mail);
      }
    } else {
      for (const std::string& root : roots_.inOrder())
        for (const std::string& path : importerBundlesInFolder(root))
          if (!isDynamicallyRegistered(path)) array.push_back(path);
    }

    for (size_t i = array.size(); i-- > 0;) {
      std::optional<Bundle> bundle = Bundle::bundleWithPath(array[i]);
      if (bundle && bundle->preflight()) {
        addBundle(*tables, *bundle, array[i]);
      } else {
        array.erase(array.begin() + static_cast<ptrdiff_t>(i));
      }
    }
    sortImporters(*tables);
    publish(std::move(tables));
  });
}

bool MetaDataImporter::MDImporterSupportsUTI(const std::string& importer, const std::string& uti, bool useConform,
                                             const std::string& extension) const {
  return supports(*tables(), importer, uti, useConform, extension);
}

bool MetaDataImporter::supports(const ImporterTables& tables, const std::string& importer, const std::string& uti,
                                bool useConform, const std::string& extension) const {
  const std::vector<std::string>* types = findEntry(tables.contentTypesForMDImporter, importer);
  if (!useConform) {
    return contains(findEntry(tables.extensionsForMDImporter, importer), extension) || contains(types, uti);
  }
  if (importer == archivesImporterPath() || !types) return false;
  return std::any_of(types->begin(), types->end(),
                     [&](const std::string& declared) { return typeConformsTo(uti, declared); });
}

void MetaDataImporter::retireImporter(const std::string& importer) {
  std::lock_guard<std::mutex> lock(tablesMutex_);
  auto copy = std::make_shared<ImporterTables>(*tables_);
  eraseEntry(copy->contentTypesForMDImporter, importer);
  eraseEntry(copy->extensionsForMDImporter, importer);
  auto& array = copy->MDImporterArray;
  array.erase(std::remove(array.begin(), array.end(), importer), array.end());
  tables_ = std::move(copy);
}

bool MetaDataImporter::getMetaData(std::optional<Dictionary>* place, const String& path) {
  std::string filePath = path.toUtf8();
  std::string uti = typeIdentifierOfFileAtPath(filePath);
  if (uti.empty()) return false;
  std::string extension = lowerCased(pathExtension(filePath));

  loadExtractorPlugins();
  std::shared_ptr<const ImporterTables> tables = this->tables();
  if (!tables->allFactories || !tables->factoriesForMDImporter) return false;

  for (bool useConform : {false, true}) {
    for (const std::string& factory : *tables->allFactories) {
      if (canonicalUuid(factory).empty()) continue;
      bool taken = false;
      for (const std::string& importer : tables->MDImporterArray) {
        if (!contains(findEntry(*tables->factoriesForMDImporter, importer), factory) ||
            !supports(*tables, importer, uti, useConform, extension))
          continue;
        const FactoryLocation* location = nullptr;
        for (const auto& [key, where] : tables->factoryLocations)
          if (key.first == importer && key.second == factory) location = &where;
        ImportOutcome outcome = location ? runImporter(*location, uti, filePath, place) : ImportOutcome::NoInterface;
        if (outcome != ImportOutcome::Taken) {
          logFormat("{}: No kMDImporter(URL)Interface {}", importer, factory);
          retireImporter(importer);
          return taken;
        }
        taken = true;
      }
      if (taken) return true;
    }
  }
  return false;
}

bool MetaDataImporter::supportsFileAtPath(const String& path) {
  return getMetaData(nullptr, path);
}

bool MetaDataImporter::isValidObject(const Value& value) {
  return !value.isUrl();
}

void MetaDataImporter::makeSafeForBoundary(Dictionary& attributes) {
  auto& entries = attributes.mutableEntries();
  entries.erase(std::remove_if(entries.begin(), entries.end(),
                               [](Dictionary::Entry& entry) {
                                 Value& value = entry.second;
                                 if (value.isNull()) return true;
                                 if (const Array* array = value.array())
                                   return !std::all_of(array->begin(), array->end(), isValidObject);
                                 if (const Url* url = value.url()) {
                                   value = Value(url->string);
                                   return false;
                                 }
                                 return !isValidObject(value);
                               }),
                entries.end());
}

std::optional<Dictionary> MetaDataImporter::metaDataOfFileAtPath(const String& path) {
  std::optional<Dictionary> attributes;
  getMetaData(&attributes, path);
  std::string filePath = path.toUtf8();
  if (attributes && !attributes->empty()) {
    repairAttributes(filePath, *attributes);
  } else if (stages_.readFileItself) {
    stages_.readFileItself(filePath, attributes);
  }
  if (attributes) makeSafeForBoundary(*attributes);
  return attributes;
}

String MetaDataImporter::textContentOfFileAtPath(const String& path) {
  std::optional<Dictionary> attributes = metaDataOfFileAtPath(path);
  const Value* text = attributes ? attributes->find(u"kMDItemTextContent") : nullptr;
  return text && text->isString() ? text->asString() : String();
}

std::optional<std::vector<std::string>> parseOldStyleStringArray(std::string_view text) {
  size_t i = 0;
  auto skipSpace = [&] {
    while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
  };
  skipSpace();
  if (i >= text.size() || text[i] != '(') return std::nullopt;
  ++i;
  std::vector<std::string> items;
  for (;;) {
    skipSpace();
    if (i >= text.size()) return std::nullopt;
    if (text[i] == ')') return items;
    std::string item;
    if (text[i] == '"') {
      for (++i;; ++i) {
        if (i >= text.size()) return std::nullopt;
        if (text[i] == '"') break;
        if (text[i] == '\\' && i + 1 < text.size()) ++i;
        item += text[i];
      }
      ++i;
    } else {
      while (i < text.size() && (std::isalnum(static_cast<unsigned char>(text[i])) || std::strchr("_$+/:.-", text[i])))
        item += text[i++];
      if (item.empty()) return std::nullopt;
    }
    items.push_back(std::move(item));
    skipSpace();
    if (i < text.size() && text[i] == ',')
      ++i;
    else if (i >= text.size() || text[i] != ')')
      return std::nullopt;
  }
}

}  // namespace norvane::importers
