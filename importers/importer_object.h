// The reference-counted object behind a shipped importer plug-in: one
// interface (import by path) around one import function.
//
//   int32_t importFile(void*, NorvaneAttributes*, const char* type, const char* path);
//   extern "C" __attribute__((visibility("default"))) void* MyFactory(const char* typeID) {
//     return norvane::importers::PathImporter<importFile>::create(typeID);
//   }
#pragma once

#include <atomic>
#include <cstring>
#include <new>

#include "norvane/importer.h"

namespace norvane::importers {

using ImportFunction = int32_t (*)(void* self, NorvaneAttributes* attributes, const char* contentType,
                                   const char* path);

template <ImportFunction Import>
class PathImporter {
 public:
  // A new object for the importer type, or null for any other type.
  static void* create(const char* typeID) {
    if (!typeID || std::strcmp(typeID, NORVANE_IMPORTER_TYPE_ID) != 0) return nullptr;
    return new (std::nothrow) PathImporter();
  }

 private:
  PathImporter() = default;

  static int32_t queryInterface(void* self, const char* interfaceID, void** out) {
    if (std::strcmp(interfaceID, NORVANE_IMPORTER_INTERFACE_ID) == 0) {
      addRef(self);
      *out = self;
      return 0;
    }
    *out = nullptr;
    return -1;
  }
  static uint32_t addRef(void* self) { return ++static_cast<PathImporter*>(self)->references_; }
  static uint32_t release(void* self) {
    auto* importer = static_cast<PathImporter*>(self);
    uint32_t left = --importer->references_;
    if (left == 0) delete importer;
    return left;
  }

  static inline NorvaneImporterInterface interface_ = {nullptr, queryInterface, addRef, release, Import};

  NorvaneImporterInterface* vtable_ = &interface_;  // first, as the interface requires
  std::atomic<uint32_t> references_{1};
};

}  // namespace norvane::importers
