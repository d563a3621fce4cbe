// Importers that fail inside the import: one throws a C++ exception, one
// signals failure through the host. Both leave an attribute behind first.
#include <stdexcept>

#include "plugin_base.h"

namespace {

int32_t throwingImport(void*, NorvaneAttributes* a, const char*, const char*) {
  testplugin::setString(a, "Partial", "before throwing");
  throw std::runtime_error("importer failed");
}

int32_t raisingImport(void*, NorvaneAttributes* a, const char*, const char*) {
  testplugin::setString(a, "Partial", "before raising");
  norvane_raise(a, "ImportError", "importer failed");
  return 0;
}

constexpr NorvaneImporterInterface kThrowing = {nullptr, testplugin::queryInterface, testplugin::addRef,
                                                testplugin::release, throwingImport};
constexpr NorvaneImporterInterface kRaising = {nullptr, testplugin::queryInterface, testplugin::addRef,
                                               testplugin::release, raisingImport};

}  // namespace

TEST_PLUGIN_EXPORT void* ThrowFactory(const char* type) {
  return testplugin::make<&kThrowing>(type, NORVANE_IMPORTER_INTERFACE_ID);
}
TEST_PLUGIN_EXPORT void* RaiseFactory(const char* type) {
  return testplugin::make<&kRaising>(type, NORVANE_IMPORTER_INTERFACE_ID);
}
