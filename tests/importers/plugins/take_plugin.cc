// Importers that take every file they are offered. Each factory tags its
// attributes so that a test can tell which one ran and how it was called.
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "plugin_base.h"

namespace {

int32_t importFile(void* self, NorvaneAttributes* a, const char* contentType, const char* pathOrUrl) {
  testplugin::setString(a, "Importer", std::to_string(testplugin::tagOf(self)).c_str());
  testplugin::setString(a, "ContentType", contentType);
  testplugin::setString(a, "ReceivedPath", pathOrUrl);
  if (FILE* f = std::fopen(pathOrUrl, "rb")) {
    char buffer[256];
    size_t n = std::fread(buffer, 1, sizeof buffer, f);
    std::fclose(f);
    norvane_set_string(a, "kMDItemTextContent", buffer, n);
  }
  return 0;  // failure here must not matter: offering the interface counts
}

// Attributes of every kind, for the checks made before they leave.
int32_t importRichFile(void*, NorvaneAttributes* a, const char*, const char*) {
  const NorvaneImporterHost* h = a->host;
  norvane_set(a, "Url", h->makeUrl("https://example.org/a%20b"));
  norvane_set(a, "Nothing", h->makeNull());
  NorvaneValue* withUrl = h->makeArray();
  h->arrayAppend(withUrl, h->makeString("x", 1));
  h->arrayAppend(withUrl, h->makeUrl("https://example.org/"));
  norvane_set(a, "ArrayWithUrl", withUrl);
  NorvaneValue* withNull = h->makeArray();
  h->arrayAppend(withNull, h->makeNull());
  h->arrayAppend(withNull, h->makeInteger(7));
  norvane_set(a, "ArrayWithNull", withNull);
  NorvaneValue* nested = h->makeDictionary();
  h->dictionarySet(nested, "inner", h->makeUrl("https://example.org/inner"));
  norvane_set(a, "Nested", nested);
  norvane_set(a, "Date", h->makeDate(1700000000.5));
  norvane_set(a, "Bytes", h->makeData("\x00\x01\x02", 3));
  norvane_set(a, "Flag", h->makeBoolean(1));
  norvane_set(a, "Ratio", h->makeReal(0.25));
  norvane_set_integer(a, "Count", 42);
  NorvaneValue* unused = h->makeString("dropped", 7);
  h->freeValue(unused);
  return 1;
}

// Takes its time, for requests that are still running when others come.
int32_t importSlowly(void* self, NorvaneAttributes* a, const char* contentType, const char* path) {
  std::this_thread::sleep_for(std::chrono::seconds(30));
  return importFile(self, a, contentType, path);
}

constexpr NorvaneImporterInterface kTable = {nullptr, testplugin::queryInterface, testplugin::addRef,
                                             testplugin::release, importFile};
constexpr NorvaneImporterInterface kRichTable = {nullptr, testplugin::queryInterface, testplugin::addRef,
                                                 testplugin::release, importRichFile};
constexpr NorvaneImporterInterface kSlowTable = {nullptr, testplugin::queryInterface, testplugin::addRef,
                                                 testplugin::release, importSlowly};

}  // namespace

TEST_PLUGIN_EXPORT void* TakeFactory1(const char* type) {
  return testplugin::make<&kTable>(type, NORVANE_IMPORTER_INTERFACE_ID, 1);
}
TEST_PLUGIN_EXPORT void* TakeFactory2(const char* type) {
  return testplugin::make<&kTable>(type, NORVANE_IMPORTER_INTERFACE_ID, 2);
}
TEST_PLUGIN_EXPORT void* TakeFactory3(const char* type) {
  return testplugin::make<&kTable>(type, NORVANE_IMPORTER_INTERFACE_ID, 3);
}
TEST_PLUGIN_EXPORT void* TakeByUrlFactory(const char* type) {
  return testplugin::make<&kTable>(type, NORVANE_IMPORTER_URL_INTERFACE_ID, 4);
}
TEST_PLUGIN_EXPORT void* RichFactory(const char* type) {
  return testplugin::make<&kRichTable>(type, NORVANE_IMPORTER_INTERFACE_ID, 5);
}
TEST_PLUGIN_EXPORT void* NullFactory(const char*) {
  return nullptr;
}
TEST_PLUGIN_EXPORT void* SlowFactory(const char* type) {
  return testplugin::make<&kSlowTable>(type, NORVANE_IMPORTER_INTERFACE_ID, 6);
}
