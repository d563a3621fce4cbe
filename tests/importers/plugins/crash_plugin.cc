// An importer that crashes the process it runs in.
#include <csignal>

#include "plugin_base.h"

namespace {

int32_t crashingImport(void*, NorvaneAttributes*, const char*, const char*) {
  std::raise(SIGSEGV);
  return 0;
}

constexpr NorvaneImporterInterface kTable = {nullptr, testplugin::queryInterface, testplugin::addRef,
                                             testplugin::release, crashingImport};

}  // namespace

TEST_PLUGIN_EXPORT void* CrashFactory(const char* type) {
  return testplugin::make<&kTable>(type, NORVANE_IMPORTER_INTERFACE_ID);
}
