// The importer tables: what a bundle contributes, which bundles are left
// out, and the order of the two discovery roads.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "bundle_fixture.h"
#include "importers/metadata_importer.h"
#include "norvane/core/log.h"

namespace norvane::importers {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::BundleSpec;
using testing_support::pluginLibrary;
using testing_support::TemporaryFolder;
using testing_support::writeBundle;
using testing_support::writeFile;

constexpr const char* kFactoryA = "11111111-2222-3333-4444-555555555555";
constexpr const char* kFactoryB = "AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE";

Bundle openBundle(const std::string& path) {
  std::optional<Bundle> bundle = Bundle::bundleWithPath(path);
  EXPECT_TRUE(bundle.has_value()) << path;
  return *bundle;
}

std::vector<std::string> entry(const ImporterTable& table, const std::string& key) {
  const std::vector<std::string>* list = findEntry(table, key);
  return list ? *list : std::vector<std::string>{"<no entry>"};
}

class RegistryTest : public testing::Test {
 protected:
  TemporaryFolder folder_;
  std::string user_ = folder_ / "user";
  std::string local_ = folder_ / "local";
  std::string system_ = folder_ / "system";
  ImporterRoots roots() const { return {user_, local_, system_}; }

  std::string takeBundle(const std::string& root, const std::string& name, const char* factory = kFactoryA,
                         const char* function = "TakeFactory1") {
    BundleSpec spec{"org.example." + name, pluginLibrary("take"), {{factory, function}}, {"text/plain"}, {"txt"}};
    return writeBundle(root, name, spec);
  }
};

struct ExclusionCase {
  const char* name;
  const char* identifier;
  bool skipped;
};

class ExclusionTest : public RegistryTest, public testing::WithParamInterface<ExclusionCase> {};

TEST_P(ExclusionTest, ExcludedBundlesGetNoEntries) {
  const ExclusionCase& c = GetParam();
  std::string path =
      writeBundle(folder_.path(), c.name,
                  {c.identifier, pluginLibrary("take"), {{kFactoryA, "TakeFactory1"}}, {"text/plain"}, {"txt"}});
  MetaDataImporter importer(ImporterRoots{}, "");
  LogCapture log;
  importer.addBundleToMDImporters(openBundle(path), path);
  auto tables = importer.tables();
  std::string expected = std::string("Skipped: ") + c.name + " (" + c.identifier + ")";
  EXPECT_EQ(log.contains(expected), c.skipped);
  EXPECT_EQ(findEntry(tables->contentTypesForMDImporter, path) == nullptr, c.skipped);
  EXPECT_EQ(findEntry(tables->extensionsForMDImporter, path) == nullptr, c.skipped);
}

INSTANTIATE_TEST_SUITE_P(Rules, ExclusionTest,
                         testing::Values(ExclusionCase{"tags.mdimporter", "ca.indev.mailtags.mdimporter", true},
                                         ExclusionCase{"TagsMail.mdimporter", "org.example.a", true},
                                         ExclusionCase{"_TagsMail.mdimporter", "org.example.b", true},
                                         ExclusionCase{"books.mdimporter", "org.idpf.epub.mdimporter", true},
                                         ExclusionCase{"epub.mdimporter", "org.example.c", true},
                                         // Exact comparisons: case counts.
                                         ExclusionCase{"EPUB.mdimporter", "org.example.d", false},
                                         ExclusionCase{"tagsmail.mdimporter", "org.example.e", false},
                                         ExclusionCase{"other.mdimporter", "ORG.IDPF.EPUB.MDIMPORTER", false}));

TEST_F(RegistryTest, ContentTypesComeOnlyFromImporterRolesAndAreLowerCased) {
  std::string extra =
      "<key>CFBundleDocumentTypes</key><array>"
      "<dict><key>CFBundleTypeRole</key><string>Viewer</string>"
      "<key>LSItemContentTypes</key><array><string>image/png</string></array></dict>"
      "<dict><key>CFBundleTypeRole</key><string>MDImporter</string>"
      "<key>LSItemContentTypes</key><array><string>Text/HTML</string><string>DYN.AH62D4RV4GE80G4DR</string>"
      "<integer>3</integer><string>text/html</string></array></dict>"
      "<dict><key>CFBundleTypeRole</key><string>MDImporter</string>"
      "<key>LSItemContentTypes</key><string>text/csv</string></dict>"
      "<string>not a dictionary</string>"
      "</array>";
  // The fixture writer adds its own CFBundleDocumentTypes; write a plist
  // whose only document types are the ones above.
  std::string path = folder_ / "roles.mdimporter";
  writeFile(path + "/Info.plist",
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
            "<key>CFBundleIdentifier</key><string>org.example.roles</string>" +
                extra + "</dict></plist>");
  MetaDataImporter importer(ImporterRoots{}, "");
  importer.addBundleToMDImporters(openBundle(path), path);
  EXPECT_THAT(entry(importer.tables()->contentTypesForMDImporter, path),
              ElementsAre("text/html", "com.microsoft.chm-archive", "text/html"));
  // No declarations at all: no extension entry.
  EXPECT_EQ(findEntry(importer.tables()->extensionsForMDImporter, path), nullptr);
}

TEST_F(RegistryTest, ExtensionsNeedAnArrayAndSkipWhiteOnes) {
  std::string path = folder_ / "ext.mdimporter";
  writeFile(path + "/Info.plist",
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
            "<key>UTExportedTypeDeclarations</key><array>"
            "<dict><key>UTTypeTagSpecification</key><dict><key>public.filename-extension</key>"
            "<string>single</string></dict></dict>"
            "<dict><key>UTTypeTagSpecification</key><dict><key>public.filename-extension</key>"
            "<array><string>MD</string><string>  </string><string></string><string>Markdown</string></array>"
            "</dict></dict>"
            "<dict><key>UTTypeTagSpecification</key><string>wrong type</string></dict>"
            "</array></dict></plist>");
  MetaDataImporter importer(ImporterRoots{}, "");
  importer.addBundleToMDImporters(openBundle(path), path);
  EXPECT_THAT(entry(importer.tables()->extensionsForMDImporter, path), ElementsAre("md", "markdown"));
}

TEST_F(RegistryTest, DeclarationsWithoutExtensionsStillCreateTheEntry) {
  std::string path = folder_ / "none.mdimporter";
  writeFile(path + "/Info.plist",
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
            "<key>UTExportedTypeDeclarations</key><array>"
            "<dict><key>UTTypeTagSpecification</key><dict><key>public.filename-extension</key>"
            "<string>only</string></dict></dict></array></dict></plist>");
  MetaDataImporter importer(ImporterRoots{}, "");
  importer.addBundleToMDImporters(openBundle(path), path);
  EXPECT_THAT(entry(importer.tables()->extensionsForMDImporter, path), IsEmpty());
}

TEST_F(RegistryTest, FactoriesAreEnteredOnlyOnceThePluginRoadMadeTheTable) {
  std::string path = takeBundle(folder_.path(), "late.mdimporter");
  MetaDataImporter importer(ImporterRoots{}, "");
  importer.addBundleToMDImporters(openBundle(path), path);
  EXPECT_FALSE(importer.tables()->factoriesForMDImporter.has_value());

  importer.loadExtractorPlugins();  // no roots: empty tables, factory table made
  importer.addBundleToMDImporters(openBundle(path), path);
  ASSERT_TRUE(importer.tables()->factoriesForMDImporter.has_value());
  EXPECT_THAT(entry(*importer.tables()->factoriesForMDImporter, path), ElementsAre(kFactoryA));
}

TEST_F(RegistryTest, PluginRoadTakesBundlesWithFactoriesInRootOrderAndArchivesLast) {
  std::string archives = takeBundle(system_, "Archives.mdimporter");
  std::string systemB = takeBundle(system_, "b.mdimporter", kFactoryB, "TakeFactory2");
  std::string userZ = takeBundle(user_, "z.mdimporter");
  std::string localA = takeBundle(local_, "a.MDIMPORTER");
  // No factories: tables get types, but the bundle is never tried.
  std::string plain =
      writeBundle(user_, "plain.mdimporter", {"org.example.plain", pluginLibrary("take"), {}, {"text/plain"}, {}});
  // Preflight fails: the executable is missing, or is no shared object.
  writeBundle(user_, "missing.mdimporter",
              {"org.example.missing", "", {{kFactoryA, "TakeFactory1"}}, {"text/plain"}, {}});
  std::string notElf =
      writeBundle(local_, "notelf.mdimporter", {"org.example.notelf", "", {{kFactoryA, "TakeFactory1"}}, {}, {}});
  writeFile(notElf + "/Info.plist.extra", "");
  writeFile(notElf + "/plugin.so", "#!/bin/sh\n");
  writeFile(user_ + "/ignored.bundle/Info.plist", "<plist><dict/></plist>");

  MetaDataImporter importer(roots(), "");
  EXPECT_TRUE(importer.tables()->MDImporterArray.empty());  // nothing loads at creation
  importer.loadExtractorPlugins();
  auto tables = importer.tables();
  EXPECT_THAT(tables->MDImporterArray, ElementsAre(userZ, localA, systemB, archives));
  EXPECT_THAT(entry(tables->contentTypesForMDImporter, plain), ElementsAre("text/plain"));
  ASSERT_TRUE(tables->allFactories.has_value());
  EXPECT_THAT(*tables->allFactories, ElementsAre(kFactoryA, kFactoryB));

  // A second run of the road changes nothing.
  takeBundle(user_, "added-later.mdimporter");
  importer.loadExtractorPlugins();
  EXPECT_EQ(importer.tables()->MDImporterArray.size(), 4u);
}

TEST_F(RegistryTest, FactoriesNotRegisteredForTheImporterTypeAreNotListed) {
  BundleSpec spec{"org.example.unregistered", pluginLibrary("take"), {{kFactoryB, "TakeFactory2"}}, {"text/plain"}, {}};
  spec.registerForImporterType = false;
  writeBundle(user_, "unregistered.mdimporter", spec);
  takeBundle(user_, "registered.mdimporter", "11111111-2222-3333-4444-55555555555f");
  MetaDataImporter importer(roots(), "");
  importer.loadExtractorPlugins();
  EXPECT_THAT(*importer.tables()->allFactories, ElementsAre("11111111-2222-3333-4444-55555555555F"));
  EXPECT_EQ(importer.tables()->MDImporterArray.size(), 2u);
}

TEST_F(RegistryTest, SortingWithoutArchivesChangesNothing) {
  MetaDataImporter importer(roots(), "");
  std::string a = takeBundle(system_, "a.mdimporter"), c = takeBundle(system_, "c.mdimporter");
  importer.loadExtractorPlugins();
  importer.sortMDImporters();
  EXPECT_THAT(importer.tables()->MDImporterArray, ElementsAre(a, c));
}

// The list tool writes an old-style plist array on its standard error.
std::string writeListTool(const TemporaryFolder& folder, const std::string& stderrText) {
  std::string payload = folder / "tool-output";
  writeFile(payload, stderrText);
  std::string tool = folder / "list-tool";
  writeFile(tool, "#!/bin/sh\n[ \"$1\" = -L ] || exit 3\necho 'noise on stdout'\ncat '" + payload + "' >&2\n");
  ::chmod(tool.c_str(), 0755);
  return tool;
}

TEST_F(RegistryTest, ToolRoadOrdersByFolderGroupsBackToFront) {
  std::string u1 = takeBundle(user_, "u1.mdimporter"), u2 = takeBundle(user_, "u2.mdimporter");
  std::string l1 = takeBundle(local_, "l1.mdimporter"), l2 = takeBundle(local_, "l2.mdimporter");
  std::string s1 = takeBundle(system_, "s1.mdimporter");
  std::string archives = takeBundle(system_, "Archives.mdimporter");
  std::string o1 = takeBundle(folder_ / "other", "o1.mdimporter");
  std::string o2 = takeBundle(folder_ / "other", "o2.mdimporter");
  BundleSpec dynamicSpec{"org.example.dyn", pluginLibrary("take"), {{kFactoryA, "TakeFactory1"}}, {"text/plain"}, {}};
  dynamicSpec.extraKeys = "<key>CFPlugInDynamicRegistration</key><true/>";
  std::string dynamic = writeBundle(user_, "dyn.mdimporter", dynamicSpec);
  std::string gone = folder_ / "gone.mdimporter";  // listed, but cannot be opened

  std::string list = "Importers:\n(\n";
  for (const std::string& p : {o1, u1, archives, l1, dynamic, s1, u2, gone, l2, o2}) list += "    \"" + p + "\",\n";
  list += ")\n";
  MetaDataImporter importer(roots(), writeListTool(folder_, list));
  importer.loadMDImporters();
  auto tables = importer.tables();
  EXPECT_THAT(tables->MDImporterArray, ElementsAre(u2, u1, l2, l1, s1, o1, o2, archives));
  EXPECT_EQ(findEntry(tables->contentTypesForMDImporter, dynamic), nullptr);
  EXPECT_THAT(entry(tables->extensionsForMDImporter, u1), ElementsAre("txt"));
  // This road makes no factory tables.
  EXPECT_FALSE(tables->allFactories.has_value());
  EXPECT_FALSE(tables->factoriesForMDImporter.has_value());
}

TEST_F(RegistryTest, ToolRoadAddsTheInstallationsMailImporterFirst) {
  std::string mail = takeBundle(system_, "Mail.mdimporter");
  std::string u1 = takeBundle(user_, "u1.mdimporter");
  MetaDataImporter importer(roots(), writeListTool(folder_, "(\n\"" + u1 + "\"\n)\n"));
  LogCapture log;
  importer.loadMDImporters();
  EXPECT_THAT(importer.tables()->MDImporterArray, ElementsAre(mail, u1));
  EXPECT_TRUE(log.contains("Added: " + mail));
}

TEST_F(RegistryTest, ToolOutputThatIsNotUtf8LeavesTheRegistryEmpty) {
  takeBundle(user_, "u1.mdimporter");
  MetaDataImporter importer(roots(), writeListTool(folder_, "(\n\"/x\xff\"\n)\n"));
  importer.loadMDImporters();
  EXPECT_TRUE(importer.tables()->MDImporterArray.empty());
  EXPECT_TRUE(importer.tables()->contentTypesForMDImporter.empty());
}

TEST_F(RegistryTest, ToolWithoutAListFallsBackToTheFolders) {
  std::string u1 = takeBundle(user_, "u1.mdimporter");
  std::string s1 = takeBundle(system_, "s1.mdimporter");
  std::string archives = takeBundle(system_, "Archives.mdimporter");
  BundleSpec dynamicSpec{"org.example.dyn", pluginLibrary("take"), {{kFactoryA, "TakeFactory1"}}, {}, {}};
  dynamicSpec.extraKeys = "<key>CFPlugInDynamicRegistration</key><true/>";
  writeBundle(local_, "dyn.mdimporter", dynamicSpec);
  for (const std::string& output : {std::string("nothing useful"), std::string("(\n)\n")}) {
    MetaDataImporter importer(roots(), writeListTool(folder_, output));
    importer.loadMDImporters();
    EXPECT_THAT(importer.tables()->MDImporterArray, ElementsAre(u1, s1, archives)) << output;
  }
  MetaDataImporter withoutTool(roots(), "");
  withoutTool.loadMDImporters();
  EXPECT_THAT(withoutTool.tables()->MDImporterArray, ElementsAre(u1, s1, archives));
}

struct OldStyleCase {
  const char* text;
  std::optional<std::vector<std::string>> items;
};

TEST(OldStyleArray, Parses) {
  const OldStyleCase cases[] = {
      {"(\n)", std::vector<std::string>{}},
      {"(\n  \"/a b/c.mdimporter\",\n  /plain/path.mdimporter\n)",
       std::vector<std::string>{"/a b/c.mdimporter", "/plain/path.mdimporter"}},
      {"( \"q\\\"uote\", x, )", std::vector<std::string>{"q\"uote", "x"}},
      {"", std::nullopt},
      {"(\n\"unterminated", std::nullopt},
      {"(\n a b )", std::nullopt},
      {"{ a = b; }", std::nullopt},
  };
  for (const OldStyleCase& c : cases) EXPECT_EQ(parseOldStyleStringArray(c.text), c.items) << c.text;
}

}  // namespace
}  // namespace norvane::importers
