// An importer whose instance offers neither import interface.
#include "plugin_base.h"

namespace {

int32_t neverCalled(void*, NorvaneAttributes* a, const char*, const char*) {
  testplugin::setString(a, "Unexpected", "import ran");
  return 0;
}

constexpr NorvaneImporterInterface kTable = {nullptr, testplugin::queryInterface, testplugin::addRef,
                                             testplugin::release, neverCalled};

}  // namespace

TEST_PLUGIN_EXPORT void* NoInterfaceFactory(const char* type) {
  return testplugin::make<&kTable>(type, nullptr);
}
