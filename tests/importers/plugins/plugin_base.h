// A reference-counted importer instance for the test plug-ins: the v-table
// comes first, and the import function is chosen per factory.
#pragma once

#include <atomic>
#include <cstring>
#include <new>

#include "norvane/importer.h"

namespace testplugin {

struct Instance {
  const NorvaneImporterInterface* vtable;
  std::atomic<uint32_t> references{1};
  const char* offeredInterface;  // null: offers none
  int tag;
};

inline uint32_t addRef(void* self) {
  return ++static_cast<Instance*>(self)->references;
}
inline uint32_t release(void* self) {
  auto* instance = static_cast<Instance*>(self);
  uint32_t left = --instance->references;
  if (left == 0) delete instance;
  return left;
}
inline int32_t queryInterface(void* self, const char* interfaceID, void** out) {
  auto* instance = static_cast<Instance*>(self);
  if (instance->offeredInterface && std::strcmp(interfaceID, instance->offeredInterface) == 0) {
    addRef(self);
    *out = self;
    return 0;
  }
  *out = nullptr;
  return -1;
}

template <const NorvaneImporterInterface* Table>
void* make(const char* typeID, const char* offeredInterface, int tag = 0) {
  if (!typeID || std::strcmp(typeID, NORVANE_IMPORTER_TYPE_ID) != 0) return nullptr;
  return new (std::nothrow) Instance{Table, 1, offeredInterface, tag};
}

inline int tagOf(void* self) {
  return static_cast<Instance*>(self)->tag;
}

inline void setString(NorvaneAttributes* a, const char* key, const char* value) {
  norvane_set_string(a, key, value, std::strlen(value));
}

}  // namespace testplugin

#define TEST_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
