// The shipped plain-text importer, loaded from the build tree like the
// helper loads it.
#include <gtest/gtest.h>

#include "bundle_fixture.h"
#include "importers/metadata_importer.h"

namespace norvane::importers {
namespace {

using testing_support::TemporaryFolder;
using testing_support::writeFile;

struct TextCase {
  const char* name;
  std::string bytes;
  std::u16string text;
  std::u16string title;  // empty: no title
};

class TextImporterTest : public testing::TestWithParam<TextCase> {
 protected:
  static MetaDataImporter& shipped() {
    static MetaDataImporter importer(ImporterRoots{"", "", NORVANE_BINARY_DIR "/lib/norvane/importers"}, "");
    return importer;
  }
  TemporaryFolder folder_;
};

TEST_P(TextImporterTest, DecodesAndTitles) {
  const TextCase& c = GetParam();
  std::string path = folder_ / (std::string(c.name) + ".txt");
  writeFile(path, c.bytes);
  std::optional<Dictionary> attributes = shipped().metaDataOfFileAtPath(String::fromUtf8(path));
  ASSERT_TRUE(attributes.has_value());
  const Value* text = attributes->find(u"kMDItemTextContent");
  ASSERT_TRUE(text && text->isString());
  EXPECT_EQ(text->asString().view(), c.text);
  const Value* title = attributes->find(u"kMDItemTitle");
  if (c.title.empty()) {
    EXPECT_EQ(title, nullptr);
  } else {
    ASSERT_NE(title, nullptr);
    EXPECT_EQ(title->asString().view(), c.title);
  }
}

std::string bytes(std::initializer_list<unsigned char> list) {
  return std::string(list.begin(), list.end());
}

std::u16string repeated(char16_t u, size_t n) {
  return std::u16string(n, u);
}

INSTANTIATE_TEST_SUITE_P(
    Encodings, TextImporterTest,
    testing::Values(TextCase{"ascii", "Hello\nworld\n", u"Hello\nworld\n", u"Hello"},
                    TextCase{"utf8",
                             "Gr\xC3\xBC\xC3\x9F"
                             "e \xE2\x82\xAC\n",
                             u"Grüße €\n", u"Grüße €"},
                    TextCase{"utf8bom", "\xEF\xBB\xBFTitle\n", u"Title\n", u"Title"},
                    TextCase{"utf16le", bytes({0xFF, 0xFE, 'H', 0, 'i', 0, 0xAC, 0x20}), u"Hi€", u"Hi€"},
                    TextCase{"utf16be", bytes({0xFE, 0xFF, 0, 'H', 0, 'i', 0xD8, 0x3D, 0xDE, 0x00}), u"Hi\U0001F600",
                             u"Hi\U0001F600"},
                    TextCase{"utf32le", bytes({0xFF, 0xFE, 0, 0, 'A', 0, 0, 0}), u"A", u"A"},
                    // Not valid UTF-8: the whole file is read as Windows-1252.
                    TextCase{"cp1252", "caf\xE9 \x93quoted\x94 \x80", u"café “quoted” €", u"café “quoted” €"},
                    TextCase{"overlong", "\xC0\xAF ok", u"\u00C0\u00AF ok", u"\u00C0\u00AF ok"},
                    TextCase{"titleskipsblanklines", "\n  \t\r\n   First real line  \nsecond",
                             u"\n  \t\r\n   First real line  \nsecond", u"First real line"},
                    TextCase{"crlf", "one\r\ntwo", u"one\r\ntwo", u"one"},
                    TextCase{"whiteonly", " \n\t\n", u" \n\t\n", u""}, TextCase{"empty", "", u"", u""},
                    TextCase{"longtitle", std::string(300, 'x') + "\n", repeated(u'x', 300) + u"\n",
                             repeated(u'x', 256)},
                    // The cut never splits a surrogate pair.
                    TextCase{"surrogatecut",
                             std::string(255, 'a') + "\xF0\x9F\x98\x80"
                                                     "b",
                             repeated(u'a', 255) + u"\U0001F600b", repeated(u'a', 255)}),
    [](const testing::TestParamInfo<TextCase>& info) { return std::string(info.param.name); });

TEST(TextImporter, TakesTextTypesByConformance) {
  MetaDataImporter importer(ImporterRoots{"", "", NORVANE_BINARY_DIR "/lib/norvane/importers"}, "");
  TemporaryFolder folder;
  writeFile(folder / "program.c", "int main(void) { return 0; }\n");
  writeFile(folder / "blob.bin", std::string("\x00\x01\x02\x03\xff", 5));
  EXPECT_EQ(importer.textContentOfFileAtPath(String::fromUtf8(folder / "program.c")).toUtf8(),
            "int main(void) { return 0; }\n");
  EXPECT_FALSE(importer.supportsFileAtPath(String::fromUtf8(folder / "blob.bin")));
}

TEST(TextImporter, ReadsRealDocumentation) {
  const char* path = "/usr/share/common-licenses/GPL-3";
  if (::access(path, R_OK) != 0) GTEST_SKIP() << path << " is absent";
  MetaDataImporter importer(ImporterRoots{"", "", NORVANE_BINARY_DIR "/lib/norvane/importers"}, "");
  std::optional<Dictionary> attributes = importer.metaDataOfFileAtPath(String::fromUtf8(path));
  ASSERT_TRUE(attributes.has_value());
  EXPECT_EQ(attributes->find(u"kMDItemTitle")->asString().toUtf8(), "GNU GENERAL PUBLIC LICENSE");
  EXPECT_GT(attributes->find(u"kMDItemTextContent")->asString().length(), 30000u);
}

}  // namespace
}  // namespace norvane::importers
