// Loading importer shared objects and calling their instances through the
// C interface of norvane/importer.h.
#pragma once

#include <optional>
#include <string>

#include "norvane/core/value.h"

namespace norvane::importers {

// Where one importer's factory lives.
struct FactoryLocation {
  std::string executable;  // the bundle's shared object
  std::string function;    // the exported factory function
};

enum class ImportOutcome {
  Taken,        // an interface was offered (and the import ran, if asked)
  NoInterface,  // no shared object, no factory, no instance or no interface
  Raised,       // the import raised (norvane_raise or a C++ exception)
};

// Instantiates the factory for the importer type, asks for the path
// interface and then the URL interface, and, when `attributes` is given,
// stores a new dictionary there and runs the import with the path or its
// file URL. What a raising import put into the dictionary stays.
// Shared objects stay loaded for the life of the process.
ImportOutcome runImporter(const FactoryLocation& factory, const std::string& contentType, const std::string& path,
                          std::optional<Dictionary>* attributes);

// "file://" and the path with everything but unreserved characters and "/"
// percent-encoded.
std::string fileUrlOfPath(const std::string& path);

}  // namespace norvane::importers
