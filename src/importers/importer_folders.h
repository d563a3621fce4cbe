// The folders searched for importer bundles.
//
// Three roots, tried in this order: the user's
// ($XDG_DATA_HOME/norvane/importers), the machine's
// (/usr/local/lib/norvane/importers) and the installation's own
// (<directory of the executable>/../lib/norvane/importers, which is the
// build tree's lib folder for a build and PREFIX/lib/norvane/importers for
// an installation). NORVANE_IMPORTER_PATH, when set, replaces them: up to
// three colon-separated folders taken as user, machine and installation
// root; an empty entry leaves that root out.
#pragma once

#include <string>
#include <vector>

namespace norvane::importers {

struct ImporterRoots {
  std::string user;
  std::string local;
  std::string system;

  // The non-empty roots in search order.
  std::vector<std::string> inOrder() const;
};

// The roots as the environment sets them.
ImporterRoots defaultImporterRoots();

// The program that lists importer paths with "-L" on its standard error;
// NORVANE_IMPORTER_LIST_TOOL, empty when unset.
std::string importerListTool();

// The entries of `folder` whose extension is "mdimporter" (any case), as
// full paths sorted by name; empty when the folder cannot be read.
std::vector<std::string> importerBundlesInFolder(const std::string& folder);

}  // namespace norvane::importers
