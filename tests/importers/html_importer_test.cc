// The shipped HTML importer, loaded from the build tree like the helper
// loads it.
#include <gtest/gtest.h>

#include "bundle_fixture.h"
#include "importers/metadata_importer.h"

namespace norvane::importers {
namespace {

using testing_support::TemporaryFolder;
using testing_support::writeFile;

MetaDataImporter& shipped() {
  static MetaDataImporter importer(ImporterRoots{"", "", NORVANE_BINARY_DIR "/lib/norvane/importers"}, "");
  return importer;
}

std::vector<std::u16string> strings(const Value* value) {
  std::vector<std::u16string> out;
  if (value && value->array()) {
    for (const Value& item : *value->array()) out.push_back(item.asString().toU16());
  }
  return out;
}

TEST(HtmlImporterTest, TextTitleLanguagesAndKeywords) {
  TemporaryFolder folder;
  std::string path = folder / "page.html";
  writeFile(path,
            "<!DOCTYPE html><html lang=\"de\"><head>"
            "<meta charset=\"iso-8859-1\">"
            "<title> Gr\xFC\xDF"
            "e &amp; mehr </title>"
            "<meta name=\"keywords\" content=\"alpha, beta; gamma,alpha\">"
            "<meta http-equiv=\"Content-Language\" content=\"de, en\">"
            "<script>var hidden = 1;</script></head>"
            "<body><h1>\xDC"
            "berschrift</h1><p>Erster Absatz.</p></body></html>");
  std::optional<Dictionary> attributes = shipped().metaDataOfFileAtPath(String::fromUtf8(path));
  ASSERT_TRUE(attributes.has_value());
  ASSERT_TRUE(attributes->find(u"kMDItemTextContent"));
  EXPECT_EQ(attributes->find(u"kMDItemTextContent")->asString(), u"\u00DCberschrift\n\nErster Absatz.\n\n");
  ASSERT_TRUE(attributes->find(u"kMDItemTitle"));
  EXPECT_EQ(attributes->find(u"kMDItemTitle")->asString(), u"Gr\u00FC\u00DFe & mehr");
  EXPECT_EQ(strings(attributes->find(u"kMDItemLanguages")), (std::vector<std::u16string>{u"de", u"en"}));
  EXPECT_EQ(strings(attributes->find(u"kMDItemKeywords")), (std::vector<std::u16string>{u"alpha", u"beta", u"gamma"}));
}

TEST(HtmlImporterTest, PageWithoutHeadOrBody) {
  TemporaryFolder folder;
  std::string path = folder / "bare.htm";
  writeFile(path, "Just <b>some</b> text");
  std::optional<Dictionary> attributes = shipped().metaDataOfFileAtPath(String::fromUtf8(path));
  ASSERT_TRUE(attributes.has_value());
  EXPECT_EQ(attributes->find(u"kMDItemTextContent")->asString(), u"Just some text");
  EXPECT_FALSE(attributes->contains(u"kMDItemTitle"));
  EXPECT_FALSE(attributes->contains(u"kMDItemKeywords"));
  EXPECT_TRUE(shipped().supportsFileAtPath(String::fromUtf8(path)));
}

}  // namespace
}  // namespace norvane::importers
