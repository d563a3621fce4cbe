#include <gtest/gtest.h>

#include <thread>

#include "norvane/core/log.h"
#include "norvane/core/string.h"
#include "norvane/core/unicode.h"
#include "norvane/core/value.h"

namespace norvane {
namespace {

TEST(StringTest, NullAndEmptyAreDistinct) {
  String null;
  String empty = String::empty();
  EXPECT_TRUE(null.isNull());
  EXPECT_FALSE(empty.isNull());
  EXPECT_TRUE(null.isEmpty());
  EXPECT_TRUE(empty.isEmpty());
  EXPECT_EQ(null.length(), 0u);
  EXPECT_FALSE(null == empty);
  EXPECT_TRUE(null == String());
  EXPECT_EQ(null.data()[0], 0);  // readable even when null
}

TEST(StringTest, CopiesShareAndIdentityIsObservable) {
  String a(u"hello");
  String b = a;
  String c(u"hello");
  EXPECT_TRUE(a.isSameObject(b));
  EXPECT_FALSE(a.isSameObject(c));
  EXPECT_TRUE(a == c);
  EXPECT_EQ(a.data()[5], 0);  // terminated for ICU
  String moved = std::move(b);
  EXPECT_TRUE(moved.isSameObject(a));
  EXPECT_TRUE(b.isNull());
}

TEST(StringTest, SubstringClampsAndReturnsReceiverWhenWhole) {
  String s(u"abcdef");
  EXPECT_TRUE(s.substring(Range{0, 6}).isSameObject(s));
  EXPECT_TRUE(s.substring(Range{0, NotFound}).isSameObject(s));
  EXPECT_EQ(s.substring(Range{2, 2}), u"cd");
  EXPECT_EQ(s.substring(4), u"ef");
  EXPECT_EQ(s.substring(Range{4, 100}), u"ef");
  EXPECT_TRUE(s.substring(Range{10, 1}).isEmpty());
  EXPECT_FALSE(s.substring(Range{10, 1}).isNull());
  EXPECT_TRUE(String().substring(Range{0, 1}).isNull());
}

TEST(StringTest, Conversions) {
  EXPECT_EQ(String::fromUtf8("gr\xC3\xBC\xC3\x9F"), u"gr\u00FC\u00DF");
  EXPECT_EQ(String::fromLatin1("\xE9t\xE9"), u"\u00E9t\u00E9");
  EXPECT_EQ(String(u"\u00E9\U0001F600").toUtf8(), "\xC3\xA9\xF0\x9F\x98\x80");
}

struct Utf8Case {
  const char* name;
  std::string utf8;
  bool valid;
  std::u16string lossy;
};

TEST(UnicodeTest, Utf8ToUtf16StrictAndLossy) {
  const Utf8Case cases[] = {
      {"ascii", "abc", true, u"abc"},
      {"two byte", "\xC3\xA4", true, u"\u00E4"},
      {"three byte", "\xE2\x82\xAC", true, u"\u20AC"},
      {"four byte", "\xF0\x9F\x98\x80", true, u"\U0001F600"},
      {"lone continuation", "a\x80z", false, u"a\uFFFDz"},
      {"overlong slash", "\xC0\xAF", false, u"\uFFFD\uFFFD"},
      {"overlong three byte", "\xE0\x80\xAF", false, u"\uFFFD\uFFFD\uFFFD"},
      {"surrogate code point", "\xED\xA0\x80", false, u"\uFFFD\uFFFD\uFFFD"},
      {"truncated at end", "ab\xE2\x82", false, u"ab\uFFFD"},
      {"truncated before ascii", "\xE2\x82x", false, u"\uFFFDx"},
      {"above U+10FFFF", "\xF4\x90\x80\x80", false, u"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"invalid lead", "\xFF", false, u"\uFFFD"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(utf8ToUtf16Strict(c.utf8).has_value(), c.valid);
    EXPECT_EQ(utf8ToUtf16(c.utf8), c.lossy);
  }
}

TEST(UnicodeTest, Utf16ToUtf8) {
  EXPECT_EQ(utf16ToUtf8(u"a\u00E4\u20AC\U0001F600"), "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
  std::u16string loneHigh = u"x";
  loneHigh.push_back(0xD800);
  loneHigh.push_back(u'y');
  EXPECT_FALSE(utf16ToUtf8Strict(loneHigh).has_value());
  EXPECT_EQ(utf16ToUtf8(loneHigh), "x\xEF\xBF\xBDy");
  std::u16string loneLow(1, 0xDC00);
  EXPECT_EQ(utf16ToUtf8(loneLow), "\xEF\xBF\xBD");
  // Round trip of every BMP scalar value.
  std::u16string all;
  for (uint32_t c = 1; c < 0x10000; ++c) {
    if (c < 0xD800 || c > 0xDFFF) all.push_back(static_cast<char16_t>(c));
  }
  auto utf8 = utf16ToUtf8Strict(all);
  ASSERT_TRUE(utf8);
  EXPECT_EQ(utf8ToUtf16Strict(*utf8), all);
}

TEST(ValueTest, TypesAndTypedReads) {
  EXPECT_TRUE(Value().isNull());
  EXPECT_TRUE(Value(String()).isNull());  // a null string is no value
  EXPECT_EQ(Value(true).asInteger(), 1);
  EXPECT_EQ(Value(int64_t{42}).asReal(), 42.0);
  EXPECT_EQ(Value(2.5).asInteger(), 2);
  EXPECT_EQ(Value(u"x").asInteger(7), 7);
  EXPECT_TRUE(Value(u"x").asString() == u"x");
  EXPECT_TRUE(Value(3).asString().isNull());
  EXPECT_EQ(Value(1.5f).type(), Value::Type::Real32);
  EXPECT_EQ(Value(1.5).type(), Value::Type::Real64);
  EXPECT_TRUE(Value(1.5f) == Value(1.5));
  EXPECT_FALSE(Value(1) == Value(true));
  EXPECT_EQ(Value::typeName(Value(Dictionary()).type()), "dictionary");
}

TEST(ValueTest, DictionaryKeepsOrderAndReplacesInPlace) {
  Dictionary d;
  d.set(String(u"b"), 1);
  d.set(String(u"a"), 2);
  d.set(String(u"b"), 3);
  ASSERT_EQ(d.size(), 2u);
  EXPECT_EQ(d.entries()[0].first, u"b");
  EXPECT_EQ(d.entries()[0].second.asInteger(), 3);
  EXPECT_EQ(d.find(u"a")->asInteger(), 2);
  EXPECT_EQ(d.find(u"c"), nullptr);
  EXPECT_TRUE(d.erase(u"b"));
  EXPECT_FALSE(d.erase(u"b"));
  Dictionary e;
  e.set(String(u"a"), 2);
  EXPECT_TRUE(Value(d) == Value(e));
}

TEST(ValueTest, CopyOnWrite) {
  Value original(Array{Value(1), Value(u"two")});
  Value copy = original;
  copy.mutableArray()->push_back(Value(3));
  EXPECT_EQ(original.array()->size(), 2u);
  EXPECT_EQ(copy.array()->size(), 3u);

  Dictionary inner;
  inner.set(String(u"k"), Value(Data{1, 2, 3}));
  Value dict(inner);
  Value dictCopy = dict;
  dictCopy.mutableDictionary()->set(String(u"k"), 0);
  EXPECT_TRUE(dict.dictionary()->find(u"k")->isData());
  EXPECT_FALSE(dict == dictCopy);
}

TEST(ValueTest, SetMembersAreUnique) {
  ValueSet s;
  EXPECT_TRUE(s.insert(Value(u"a")));
  EXPECT_FALSE(s.insert(Value(u"a")));
  EXPECT_TRUE(s.insert(Value(1)));
  ValueSet t;
  t.insert(Value(1));
  t.insert(Value(u"a"));
  EXPECT_TRUE(Value(s) == Value(t));
  EXPECT_TRUE(Value(Url{String(u"http://x/")}) == Value(Url{String(u"http://x/")}));
  EXPECT_FALSE(Value(Date{1}) == Value(Date{2}));
}

TEST(LogTest, CaptureNestsAndCollectsFromThreads) {
  LogCapture outer;
  logMessage("outer one");
  {
    LogCapture inner;
    std::thread t([] { logFormat("from {} {}", "thread", 7); });
    t.join();
    EXPECT_TRUE(inner.contains("from thread 7"));
    EXPECT_FALSE(outer.contains("from thread"));
  }
  logMessage("outer two");
  EXPECT_EQ(outer.messages(), (std::vector<std::string>{"outer one", "outer two"}));
}

TEST(LogTest, ExceptionFormats) {
  EXPECT_EQ(
      formatException("metaDataForFile:", "NorvaneHelper", "NSRangeException", "index 3 beyond bounds", "0 a\n1 b"),
      "metaDataForFile: (NorvaneHelper): NSRangeException:\nindex 3 beyond bounds\n0 a\n1 b");
  EXPECT_EQ(formatException("ping", "NorvaneHelper", "E", "why"), "ping (NorvaneHelper): E:\nwhy");
}

}  // namespace
}  // namespace norvane
