#include "importers/attribute_repairs.h"

#include <gtest/gtest.h>

namespace norvane::importers {
namespace {

Dictionary withEntries(std::initializer_list<std::pair<const char16_t*, Value>> entries) {
  Dictionary d;
  for (const auto& [key, value] : entries) d.set(String(key), value);
  return d;
}

TEST(AttributeRepairsTest, MellelDropsBareTags) {
  Dictionary d = withEntries({{u"kMDItemTitle", Value(u"<title>")},
                              {u"kMDItemAuthors", Value(Array{Value(u"<author>")})},
                              {u"kMDItemComment", Value(u"<two words>")},
                              {u"kMDItemKeywords", Value(Array{Value(u"<a>"), Value(u"<b>")})},
                              {u"kMDItemHTMLContent", Value(u"<p>x</p>")}});
  repairAttributes("/docs/Letter.MELLEL", d);
  EXPECT_FALSE(d.contains(u"kMDItemTitle"));
  EXPECT_FALSE(d.contains(u"kMDItemAuthors"));
  EXPECT_TRUE(d.contains(u"kMDItemComment"));
  EXPECT_TRUE(d.contains(u"kMDItemKeywords"));
  EXPECT_FALSE(d.contains(u"kMDItemHTMLContent"));  // only the ends and white space count
  EXPECT_FALSE(d.contains(u"kMDItemTextContent"));  // no other rule runs
}

TEST(AttributeRepairsTest, MhtTextIsAlwaysConverted) {
  Dictionary mht = withEntries({{u"kMDItemTextContent", Value(u"<html><body><p>Hello</p></body></html>")}});
  repairAttributes("/a/page.mht", mht);
  EXPECT_EQ(mht.find(u"kMDItemTextContent")->asString(), u"Hello\n\n");

  Dictionary other = withEntries({{u"kMDItemTextContent", Value(u"<p>kept</p>")}});
  repairAttributes("/a/page.doc", other);
  EXPECT_EQ(other.find(u"kMDItemTextContent")->asString(), u"<p>kept</p>");
}

TEST(AttributeRepairsTest, ScappleNotesAreJoined) {
  Dictionary d =
      withEntries({{u"com_literatureandlatte_scapple_noteText", Value(Array{Value(u"one"), Value(u"two")})}});
  repairAttributes("/a/board.scap", d);
  EXPECT_EQ(d.find(u"kMDItemTextContent")->asString(), u"one\ntwo");
}

TEST(AttributeRepairsTest, HtmlContentBecomesText) {
  Dictionary fromString = withEntries({{u"kMDItemHTMLContent", Value(u"<body>a <b>b</b></body>")}});
  repairAttributes("/a/x.webarchive", fromString);
  EXPECT_EQ(fromString.find(u"kMDItemTextContent")->asString(), u"a b");

  std::string bytes = "<body>caf\xC3\xA9</body>";
  Dictionary fromData = withEntries({{u"kMDItemHTMLContentData", Value(Data(bytes.begin(), bytes.end()))}});
  repairAttributes("", fromData);  // an empty path takes the last rule
  EXPECT_EQ(fromData.find(u"kMDItemTextContent")->asString(), u"caf\u00E9");
  EXPECT_EQ(fromData.find(u"kMDItemHTMLContent")->asString(), u"<body>caf\u00E9</body>");

  Dictionary nothing = withEntries({{u"kMDItemTitle", Value(u"t")}});
  repairAttributes("/a/x.y", nothing);
  EXPECT_FALSE(nothing.contains(u"kMDItemTextContent"));
}

}  // namespace
}  // namespace norvane::importers
