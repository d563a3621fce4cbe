// Running importers: the two passes, failed importers, the URL interface,
// and the values that may leave the process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "bundle_fixture.h"
#include "importers/content_types.h"
#include "importers/metadata_importer.h"
#include "norvane/core/log.h"

namespace norvane::importers {
namespace {

using testing::ElementsAre;
using testing_support::BundleSpec;
using testing_support::pluginLibrary;
using testing_support::TemporaryFolder;
using testing_support::writeBundle;
using testing_support::writeFile;

constexpr const char* kFactory1 = "10000000-0000-0000-0000-000000000001";
constexpr const char* kFactory2 = "20000000-0000-0000-0000-000000000002";
constexpr const char* kFactory3 = "30000000-0000-0000-0000-000000000003";

String str(const std::string& s) {
  return String::fromUtf8(s);
}

std::string stringAttribute(const std::optional<Dictionary>& attributes, std::u16string_view key) {
  const Value* v = attributes ? attributes->find(key) : nullptr;
  return v && v->isString() ? v->asString().toUtf8() : "<absent>";
}

class MetadataTest : public testing::Test {
 protected:
  TemporaryFolder folder_;
  std::string user_ = folder_ / "user";
  std::string system_ = folder_ / "system";

  std::string bundle(const std::string& name, const char* library, const char* factory, const char* function,
                     std::vector<std::string> types, std::vector<std::string> extensions,
                     const std::string& root = "") {
    BundleSpec spec{
        "org.example." + name, pluginLibrary(library), {{factory, function}}, std::move(types), std::move(extensions)};
    return writeBundle(root.empty() ? user_ : root, name, spec);
  }
  std::string file(const std::string& name, const std::string& contents = "int main() { return 0; }\n") {
    std::string path = folder_ / ("files/" + name);
    writeFile(path, contents);
    return path;
  }
  std::unique_ptr<MetaDataImporter> importer() {
    return std::make_unique<MetaDataImporter>(ImporterRoots{user_, "", system_}, "");
  }
};

TEST(ContentTypes, MimeTypesAndSubclasses) {
  TemporaryFolder folder;
  writeFile(folder / "a.c", "int x;\n");
  writeFile(folder / "b.txt", "hello\n");
  EXPECT_EQ(typeIdentifierOfFileAtPath(folder / "a.c"), "text/x-csrc");
  EXPECT_EQ(typeIdentifierOfFileAtPath(folder / "b.txt"), "text/plain");
  EXPECT_EQ(typeIdentifierOfFileAtPath(folder.path()), "inode/directory");
  EXPECT_EQ(typeIdentifierOfFileAtPath(folder / "missing.txt"), "");
  EXPECT_TRUE(typeConformsTo("text/x-csrc", "text/plain"));
  EXPECT_TRUE(typeConformsTo("text/plain", "text/plain"));
  EXPECT_FALSE(typeConformsTo("text/plain", "text/x-csrc"));
  EXPECT_FALSE(typeConformsTo("", "text/plain"));
}

TEST_F(MetadataTest, ExactMatchInTheFirstPassBeatsAnEarlierConformingImporter) {
  bundle("a-conforms.mdimporter", "take", kFactory1, "TakeFactory1", {"text/plain"}, {});
  bundle("b-by-extension.mdimporter", "take", kFactory2, "TakeFactory2", {}, {"c"});
  auto md = importer();
  std::optional<Dictionary> attributes;
  EXPECT_TRUE(md->getMetaData(&attributes, str(file("x.c"))));
  EXPECT_EQ(stringAttribute(attributes, u"Importer"), "2");
  EXPECT_EQ(stringAttribute(attributes, u"ContentType"), "text/x-csrc");

  // A header is claimed by neither exactly: the second pass finds the
  // importer whose type it conforms to.
  attributes.reset();
  EXPECT_TRUE(md->getMetaData(&attributes, str(file("y.h"))));
  EXPECT_EQ(stringAttribute(attributes, u"Importer"), "1");
}

TEST_F(MetadataTest, ExactTypeMatchesAndExtensionsCompareLowerCased) {
  bundle("png.mdimporter", "take", kFactory1, "TakeFactory1", {"Image/PNG"}, {"ABC"});
  auto md = importer();
  EXPECT_TRUE(md->supportsFileAtPath(str(file("picture.png", "\x89PNG\r\n\x1a\n"))));
  EXPECT_TRUE(md->supportsFileAtPath(str(file("NOTES.Abc", "\x01\x02\x03"))));
  EXPECT_FALSE(md->supportsFileAtPath(str(file("other.xyz", "\x01\x02\x03"))));
}

TEST_F(MetadataTest, ArchivesImporterServesOnlyExactTypes) {
  bundle("Archives.mdimporter", "take", kFactory1, "TakeFactory1", {"text/plain"}, {}, system_);
  auto md = importer();
  EXPECT_FALSE(md->supportsFileAtPath(str(file("x.c"))));
  EXPECT_TRUE(md->supportsFileAtPath(str(file("x.txt", "plain words\n"))));
  EXPECT_FALSE(md->MDImporterSupportsUTI(system_ + "/Archives.mdimporter", "text/x-csrc", true, "c"));
  EXPECT_TRUE(md->MDImporterSupportsUTI(system_ + "/Archives.mdimporter", "text/plain", false, "c"));
}

TEST_F(MetadataTest, UrlInterfaceReceivesAFileUrl) {
  bundle("url.mdimporter", "take", kFactory1, "TakeByUrlFactory", {"text/plain"}, {});
  auto md = importer();
  std::string path = file("with space%.txt", "text\n");
  std::optional<Dictionary> attributes;
  EXPECT_TRUE(md->getMetaData(&attributes, str(path)));
  std::string expected = "file://" + folder_.path() + "/files/with%20space%25.txt";
  EXPECT_EQ(stringAttribute(attributes, u"ReceivedPath"), expected);
  EXPECT_EQ(stringAttribute(attributes, u"Importer"), "4");
}

TEST_F(MetadataTest, APluginWrittenInC) {
  bundle("c.mdimporter", "c", kFactory1, "CTakeFactory", {}, {"dat"});
  auto md = importer();
  std::optional<Dictionary> attributes = md->metaDataOfFileAtPath(str(file("five.dat", "12345")));
  ASSERT_TRUE(attributes.has_value());
  EXPECT_EQ(attributes->find(u"kMDItemFSSize")->asInteger(), 5);
  const Value* list = attributes->find(u"Written in C");
  ASSERT_TRUE(list && list->array());
  EXPECT_EQ(*list->array(), (Array{Value(u"text/plain"), Value(true)}));
}

TEST_F(MetadataTest, ImportersSharingAFactoryAllRunAndTheLastStands) {
  bundle("first.mdimporter", "take", kFactory1, "TakeFactory1", {"text/plain"}, {});
  bundle("second.mdimporter", "take", kFactory1, "TakeFactory3", {}, {"txt"});
  auto md = importer();
  std::optional<Dictionary> attributes;
  EXPECT_TRUE(md->getMetaData(&attributes, str(file("both.txt", "hello\n"))));
  EXPECT_EQ(stringAttribute(attributes, u"Importer"), "3");
  EXPECT_EQ(stringAttribute(attributes, u"kMDItemTextContent"), "hello\n");
}

TEST_F(MetadataTest, WithoutAPlaceNothingIsImported) {
  // The crashing importer is instantiated and asked, but never imports.
  bundle("crash.mdimporter", "crash", kFactory1, "CrashFactory", {"text/plain"}, {});
  auto md = importer();
  EXPECT_TRUE(md->supportsFileAtPath(str(file("a.txt", "x"))));
}

TEST_F(MetadataTest, MissingFilesAndEmptyRegistriesAnswerFalseQuietly) {
  bundle("a.mdimporter", "take", kFactory1, "TakeFactory1", {"text/plain"}, {});
  auto md = importer();
  LogCapture log;
  std::optional<Dictionary> attributes;
  EXPECT_FALSE(md->getMetaData(&attributes, str(folder_ / "nothing-here.txt")));
  EXPECT_FALSE(md->getMetaData(&attributes, String()));
  EXPECT_FALSE(attributes.has_value());
  EXPECT_TRUE(log.messages().empty());

  MetaDataImporter empty(ImporterRoots{}, "");
  EXPECT_FALSE(empty.supportsFileAtPath(str(file("a.txt", "x"))));
  EXPECT_FALSE(empty.metaDataOfFileAtPath(str(file("a.txt", "x"))).has_value());
}

struct FailingCase {
  const char* library;
  const char* function;
};

class FailingImporterTest : public MetadataTest, public testing::WithParamInterface<FailingCase> {};

TEST_P(FailingImporterTest, IsLoggedRetiredAndEndsTheSearch) {
  std::string failing =
      bundle("failing.mdimporter", GetParam().library, kFactory1, GetParam().function, {"text/plain"}, {"txt"});
  std::string fallback = bundle("fallback.mdimporter", "take", kFactory2, "TakeFactory2", {"text/plain"}, {"txt"});
  auto md = importer();
  std::string path = file("a.txt", "words\n");
  {
    LogCapture log;
    std::optional<Dictionary> attributes;
    EXPECT_FALSE(md->getMetaData(&attributes, str(path)));
    EXPECT_TRUE(log.contains(failing + ": No kMDImporter(URL)Interface " + kFactory1));
  }
  auto tables = md->tables();
  EXPECT_THAT(tables->MDImporterArray, ElementsAre(fallback));
  EXPECT_EQ(findEntry(tables->contentTypesForMDImporter, failing), nullptr);
  EXPECT_EQ(findEntry(tables->extensionsForMDImporter, failing), nullptr);
  EXPECT_NE(findEntry(*tables->factoriesForMDImporter, failing), nullptr);

  // Retired for good: the next request reaches the other importer.
  LogCapture log;
  std::optional<Dictionary> attributes;
  EXPECT_TRUE(md->getMetaData(&attributes, str(path)));
  EXPECT_EQ(stringAttribute(attributes, u"Importer"), "2");
  EXPECT_TRUE(log.messages().empty());
}

INSTANTIATE_TEST_SUITE_P(Kinds, FailingImporterTest,
                         testing::Values(FailingCase{"nointerface", "NoInterfaceFactory"},
                                         FailingCase{"take", "NullFactory"}, FailingCase{"take", "NoSuchFunction"},
                                         FailingCase{"raise", "ThrowFactory"}, FailingCase{"raise", "RaiseFactory"}));

TEST_F(MetadataTest, WhatARaisingImporterPutInTheDictionaryStays) {
  bundle("throws.mdimporter", "raise", kFactory1, "ThrowFactory", {"text/plain"}, {});
  auto md = importer();
  std::optional<Dictionary> attributes = md->metaDataOfFileAtPath(str(file("a.txt", "x")));
  EXPECT_EQ(stringAttribute(attributes, u"Partial"), "before throwing");
}

TEST_F(MetadataTest, AnEarlierImporterOfTheSameWalkKeepsTheFileTaken) {
  bundle("a-takes.mdimporter", "take", kFactory1, "TakeFactory1", {"text/plain"}, {});
  bundle("b-raises.mdimporter", "raise", kFactory1, "RaiseFactory", {"text/plain"}, {});
  auto md = importer();
  std::optional<Dictionary> attributes;
  EXPECT_TRUE(md->getMetaData(&attributes, str(file("a.txt", "x"))));
  EXPECT_EQ(stringAttribute(attributes, u"Partial"), "before raising");
  EXPECT_EQ(md->tables()->MDImporterArray.size(), 1u);
}

TEST_F(MetadataTest, ValuesAreMadeSafeBeforeLeaving) {
  bundle("rich.mdimporter", "take", kFactory1, "RichFactory", {"text/plain"}, {});
  auto md = importer();
  std::optional<Dictionary> attributes = md->metaDataOfFileAtPath(str(file("a.txt", "x")));
  ASSERT_TRUE(attributes.has_value());
  std::vector<std::string> keys;
  for (const auto& [key, value] : *attributes) keys.push_back(key.toUtf8());
  EXPECT_THAT(keys, ElementsAre("Url", "ArrayWithNull", "Nested", "Date", "Bytes", "Flag", "Ratio", "Count"));
  EXPECT_EQ(stringAttribute(attributes, u"Url"), "https://example.org/a%20b");
  const Value* withNull = attributes->find(u"ArrayWithNull");
  ASSERT_TRUE(withNull && withNull->array());
  EXPECT_TRUE((*withNull->array())[0].isNull());
  // One level only: a URL inside a dictionary is not looked at.
  const Value* nested = attributes->find(u"Nested");
  ASSERT_TRUE(nested && nested->dictionary());
  EXPECT_TRUE(nested->dictionary()->find(u"inner")->isUrl());
  EXPECT_EQ(attributes->find(u"Date")->date()->secondsSince1970, 1700000000.5);
  EXPECT_EQ(*attributes->find(u"Bytes")->data(), (Data{0, 1, 2}));
  EXPECT_EQ(attributes->find(u"Count")->asInteger(), 42);
}

TEST(ValidObjects, EverythingButUrls) {
  ValueSet set;
  set.insert(Value(1));
  const std::pair<Value, bool> cases[] = {
      {Value(), true},
      {Value(true), true},
      {Value(3), true},
      {Value(1.5f), true},
      {Value(2.5), true},
      {Value(u"s"), true},
      {Value(Data{1}), true},
      {Value(Date{0}), true},
      {Value(Array{Value(Url{u"x"})}), true},
      {Value(Dictionary()), true},
      {Value(std::move(set)), true},
      {Value(Url{u"https://a/"}), false},
  };
  for (const auto& [value, valid] : cases)
    EXPECT_EQ(MetaDataImporter::isValidObject(value), valid) << Value::typeName(value.type());
}

TEST_F(MetadataTest, TextContentIsTheStringAttribute) {
  bundle("a.mdimporter", "take", kFactory1, "TakeFactory1", {"text/plain"}, {});
  auto md = importer();
  EXPECT_EQ(md->textContentOfFileAtPath(str(file("a.txt", "the words"))).toUtf8(), "the words");
  EXPECT_TRUE(md->textContentOfFileAtPath(str(folder_ / "missing.txt")).isNull());
}

TEST_F(MetadataTest, ReadingStageRunsOnlyWithoutAttributes) {
  bundle("a.mdimporter", "take", kFactory1, "TakeFactory1", {"text/plain"}, {});
  auto md = importer();
  std::vector<std::string> calls;
  md->setMetadataStages({[&](const std::string& path, std::optional<Dictionary>& attributes) {
    calls.push_back("read " + path);
    attributes.emplace().set(str("Read"), Value(Url{u"https://r/"}));
  }});
  std::string taken = file("a.txt", "x"), other = file("b.bin", "\x01\x02");
  std::optional<Dictionary> first = md->metaDataOfFileAtPath(str(taken));
  std::optional<Dictionary> second = md->metaDataOfFileAtPath(str(other));
  EXPECT_THAT(calls, ElementsAre("read " + other));
  ASSERT_TRUE(first.has_value());
  EXPECT_FALSE(first->contains(u"Read"));
  EXPECT_EQ(stringAttribute(second, u"Read"), "https://r/");  // stage 4 runs after the reading stage
}

TEST_F(MetadataTest, RetiringDuringConcurrentWalksIsSafe) {
  for (int i = 0; i < 6; ++i)
    bundle("take" + std::to_string(i) + ".mdimporter", "take", kFactory1, "TakeFactory1", {"text/plain"}, {});
  bundle("zz-fails.mdimporter", "raise", kFactory1, "RaiseFactory", {"text/plain"}, {});
  auto md = importer();
  std::string path = file("a.txt", "x");
  std::atomic<int> taken{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 20; ++i) {
        std::optional<Dictionary> attributes;
        if (md->getMetaData(&attributes, str(path))) ++taken;
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(md->tables()->MDImporterArray.size(), 6u);
  EXPECT_EQ(taken.load(), 160);  // each walk reached a taking importer first
}

}  // namespace
}  // namespace norvane::importers
