#include "norvane/wire/codec.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace norvane::wire {
namespace {

Value roundTrip(const Value& value) {
  Bytes bytes = encodeValue(value);
  Value back;
  EXPECT_TRUE(decodeValue(bytes, back)) << "decoding failed";
  return back;
}

Dictionary dictionaryOf(std::initializer_list<std::pair<const char*, Value>> entries) {
  Dictionary d;
  for (const auto& [key, value] : entries) d.set(String::fromLatin1(key), value);
  return d;
}

TEST(Codec, ScalarsRoundTripWithTheirType) {
  const Value cases[] = {
      Value(),
      Value(true),
      Value(false),
      Value(int64_t{0}),
      Value(int64_t{127}),
      Value(int64_t{128}),
      Value(int64_t{-1}),
      Value(int64_t{-32}),
      Value(int64_t{-33}),
      Value(int64_t{-129}),
      Value(int64_t{65535}),
      Value(int64_t{65536}),
      Value(int64_t{-40000}),
      Value(int64_t{4294967296}),
      Value(std::numeric_limits<int64_t>::max()),
      Value(std::numeric_limits<int64_t>::min()),
      Value(1.5f),
      Value(0.1),
      Value(-0.0),
      Value(std::numeric_limits<double>::infinity()),
      Value(String::fromUtf8("")),
      Value(String::fromUtf8("plain")),
      Value(String::fromUtf8("Grüße, 世界 🎉")),
      Value(String::fromUtf8(std::string(40, 'x'))),
      Value(String::fromUtf8(std::string(300, 'y'))),
      Value(String::fromUtf8(std::string(70000, 'z'))),
      Value(Data{}),
      Value(Data{0, 1, 2, 255}),
      Value(Data(70000, 7)),
      Value(Date{0}),
      Value(Date{Date::kReferenceDate + 0.25}),
      Value(Date{-1e9}),
      Value(Url{String::fromUtf8("https://example.org/ä?q=1")}),
  };
  for (const Value& value : cases) {
    Value back = roundTrip(value);
    EXPECT_EQ(back.type(), value.type()) << Value::typeName(value.type());
    EXPECT_EQ(back, value) << Value::typeName(value.type());
  }
}

TEST(Codec, RealsKeepTheirWidth) {
  Bytes single = encodeValue(Value(2.5f));
  Bytes dbl = encodeValue(Value(2.5));
  ASSERT_EQ(single.size(), 5u);
  EXPECT_EQ(single[0], 0xca);
  ASSERT_EQ(dbl.size(), 9u);
  EXPECT_EQ(dbl[0], 0xcb);
  EXPECT_EQ(roundTrip(Value(2.5f)).type(), Value::Type::Real32);
  EXPECT_EQ(roundTrip(Value(2.5)).type(), Value::Type::Real64);
  // A NaN survives as a NaN.
  EXPECT_TRUE(std::isnan(roundTrip(Value(std::nan(""))).asReal()));
}

TEST(Codec, IntegersUseTheSmallestForm) {
  struct Case {
    int64_t value;
    size_t size;
    uint8_t marker;
  };
  const Case cases[] = {{5, 1, 0x05},         {-5, 1, 0xfb},          {200, 2, 0xcc},    {-100, 2, 0xd0},
                        {1000, 3, 0xcd},      {-1000, 3, 0xd1},       {100000, 5, 0xce}, {-100000, 5, 0xd2},
                        {1LL << 40, 9, 0xcf}, {-(1LL << 40), 9, 0xd3}};
  for (const Case& c : cases) {
    Bytes bytes = encodeValue(Value(c.value));
    ASSERT_EQ(bytes.size(), c.size) << c.value;
    EXPECT_EQ(bytes[0], c.marker) << c.value;
  }
}

TEST(Codec, NestedContainersRoundTrip) {
  ValueSet tags;
  tags.insert(Value(String::fromUtf8("a")));
  tags.insert(Value(int64_t{3}));
  tags.insert(Value(Array{Value(true)}));
  Array items;
  for (int i = 0; i < 20; ++i) items.push_back(Value(int64_t{i}));
  Dictionary inner =
      dictionaryOf({{"when", Value(Date{12345.5})}, {"link", Value(Url{String::fromUtf8("file:///x")})}});
  Dictionary outer = dictionaryOf({{"kMDItemTextContent", Value(String::fromUtf8("hello"))},
                                   {"Duration", Value(3.0f)},
                                   {"tags", Value(tags)},
                                   {"items", Value(items)},
                                   {"inner", Value(inner)},
                                   {"empty", Value(Dictionary{})},
                                   {"nothing", Value()}});
  Value back = roundTrip(Value(outer));
  ASSERT_TRUE(back.isDictionary());
  EXPECT_EQ(back, Value(outer));
  // Order of keys is kept.
  std::vector<std::string> keys;
  for (const auto& [key, value] : *back.dictionary()) keys.push_back(key.toUtf8());
  EXPECT_EQ(keys,
            (std::vector<std::string>{"kMDItemTextContent", "Duration", "tags", "items", "inner", "empty", "nothing"}));
  EXPECT_EQ(back.dictionary()->find(u"Duration")->type(), Value::Type::Real32);
  EXPECT_EQ(back.dictionary()->find(u"tags")->type(), Value::Type::Set);
}

TEST(Codec, LargeDictionaryAndArrayHeaders) {
  Dictionary big;
  for (int i = 0; i < 70000; ++i) big.mutableEntries().emplace_back(String::fromUtf8(std::to_string(i)), Value(i));
  Value back = roundTrip(Value(big));
  ASSERT_TRUE(back.isDictionary());
  EXPECT_EQ(back.dictionary()->size(), 70000u);
  EXPECT_EQ(back.dictionary()->find(u"69999")->asInteger(), 69999);
}

TEST(Codec, ScriptDescriptorsTravelAsTheirOwnExtension) {
  ScriptDescriptor descriptor{0x75747874, Data{'h', 'i'}};
  Bytes bytes;
  Encoder(bytes).descriptor(descriptor);
  Decoder decoder(bytes);
  EXPECT_TRUE(decoder.atDescriptor());
  ScriptDescriptor back;
  ASSERT_TRUE(decoder.descriptor(back));
  EXPECT_EQ(back, descriptor);
  EXPECT_TRUE(decoder.atEnd());
  // A descriptor is not a Value.
  Value value;
  EXPECT_FALSE(decodeValue(bytes, value));
  // And a value is not a descriptor.
  Bytes plain = encodeValue(Value(Date{1}));
  Decoder other(plain);
  EXPECT_FALSE(other.atDescriptor());
  EXPECT_FALSE(other.descriptor(back));
}

TEST(Codec, EmptyDescriptorDataRoundTrips) {
  ScriptDescriptor descriptor{0x6e756c6c, {}};
  Bytes bytes;
  Encoder(bytes).descriptor(descriptor);
  Decoder decoder(bytes);
  ScriptDescriptor back;
  ASSERT_TRUE(decoder.descriptor(back));
  EXPECT_EQ(back, descriptor);
}

TEST(Codec, DecodesFormsOtherEncodersUse) {
  // str8 holding a short string, bin32, array16 and map16 with few entries:
  // legal though not what this encoder writes.
  const Bytes str8 = {0xd9, 0x02, 'o', 'k'};
  const Bytes bin32 = {0xc6, 0, 0, 0, 1, 0x42};
  const Bytes array16 = {0xdc, 0, 2, 0x01, 0xc0};
  const Bytes map16 = {0xde, 0, 1, 0xa1, 'k', 0xc3};
  const Bytes uint8Small = {0xcc, 0x05};
  const Bytes int64Positive = {0xd3, 0, 0, 0, 0, 0, 0, 0, 9};
  Value v;
  ASSERT_TRUE(decodeValue(str8, v));
  EXPECT_EQ(v, Value(String::fromUtf8("ok")));
  ASSERT_TRUE(decodeValue(bin32, v));
  EXPECT_EQ(v, Value(Data{0x42}));
  ASSERT_TRUE(decodeValue(array16, v));
  EXPECT_EQ(v, Value(Array{Value(int64_t{1}), Value()}));
  ASSERT_TRUE(decodeValue(map16, v));
  EXPECT_EQ(v, Value(dictionaryOf({{"k", Value(true)}})));
  ASSERT_TRUE(decodeValue(uint8Small, v));
  EXPECT_EQ(v, Value(int64_t{5}));
  ASSERT_TRUE(decodeValue(int64Positive, v));
  EXPECT_EQ(v, Value(int64_t{9}));
}

TEST(Codec, RefusesMalformedInput) {
  struct Case {
    const char* what;
    Bytes bytes;
  };
  const Case cases[] = {
      {"empty", {}},
      {"reserved marker", {0xc1}},
      {"truncated str", {0xa5, 'a', 'b'}},
      {"truncated uint32", {0xce, 0, 0}},
      {"truncated float64", {0xcb, 0, 0, 0, 0}},
      {"array count beyond input", {0xdd, 0xff, 0xff, 0xff, 0xff}},
      {"map count beyond input", {0xdf, 0x7f, 0xff, 0xff, 0xff, 0xa1, 'k'}},
      {"integer map key", {0x81, 0x01, 0x02}},
      {"uint64 above int64", {0xcf, 0x80, 0, 0, 0, 0, 0, 0, 0}},
      {"unknown extension", {0xd4, 0x63, 0x00}},
      {"negative extension type", {0xd6, 0xff, 0, 0, 0, 0}},
      {"date of wrong size", {0xd6, 0x01, 0, 0, 0, 0}},
      {"set that is no array", {0xd4, 0x03, 0x01}},
      {"set with trailing bytes", {0xd5, 0x03, 0x90, 0x01}},
      {"trailing bytes", {0x01, 0x02}},
      {"truncated bin16", {0xc5, 0x00}},
  };
  for (const Case& c : cases) {
    Value v;
    EXPECT_FALSE(decodeValue(c.bytes, v)) << c.what;
  }
}

TEST(Codec, RefusesNestingBeyondTheLimit) {
  Bytes deep(kMaxDepth + 2, 0x91);  // arrays of one element, nested
  deep.push_back(0xc0);
  Value v;
  EXPECT_FALSE(decodeValue(deep, v));

  Bytes shallow(kMaxDepth, 0x91);
  shallow.push_back(0xc0);
  EXPECT_TRUE(decodeValue(shallow, v));
}

TEST(Codec, InvalidUtf8BecomesReplacementCharacters) {
  const Bytes bytes = {0xa3, 'a', 0xff, 'b'};
  Value v;
  ASSERT_TRUE(decodeValue(bytes, v));
  EXPECT_EQ(v.asString(), String(u"a\uFFFDb"));
}

TEST(Codec, UnpairedSurrogateIsEncodedAsReplacementCharacter) {
  const char16_t units[] = {u'x', 0xD800, u'y'};
  Value back = roundTrip(Value(String(units, 3)));
  EXPECT_EQ(back.asString(), String(u"x\uFFFDy"));
}

TEST(Codec, RepeatedKeysInALargeMapCollapse) {
  Bytes bytes;
  Encoder e(bytes);
  e.mapHeader(40);
  for (int i = 0; i < 40; ++i) {
    e.string(std::string_view(i % 2 ? "odd" : "even"));
    e.integer(i);
  }
  Value v;
  ASSERT_TRUE(decodeValue(bytes, v));
  ASSERT_EQ(v.dictionary()->size(), 2u);
  EXPECT_EQ(v.dictionary()->entries()[0].first, String(u"even"));
  EXPECT_EQ(v.dictionary()->find(u"even")->asInteger(), 38);
  EXPECT_EQ(v.dictionary()->find(u"odd")->asInteger(), 39);
}

TEST(Codec, RepeatedKeysAndMembersCollapse) {
  const Bytes map = {0x82, 0xa1, 'k', 0x01, 0xa1, 'k', 0x02};
  Value v;
  ASSERT_TRUE(decodeValue(map, v));
  ASSERT_EQ(v.dictionary()->size(), 1u);
  EXPECT_EQ(v.dictionary()->find(u"k")->asInteger(), 2);

  const Bytes set = {0xd6, 0x03, 0x93, 0x01, 0x01, 0x02};
  ASSERT_TRUE(decodeValue(set, v));
  EXPECT_EQ(v.set()->size(), 2u);
}

TEST(Codec, SkipPassesOverEveryKind) {
  Dictionary d = dictionaryOf(
      {{"a", Value(Array{Value(1.5), Value(Data{1})})}, {"s", Value(String::fromUtf8("x"))}, {"d", Value(Date{3})}});
  Bytes bytes = encodeValue(Value(d));
  Encoder(bytes).integer(-7);
  Decoder decoder(bytes);
  ASSERT_TRUE(decoder.skip());
  Value last;
  ASSERT_TRUE(decoder.value(last));
  EXPECT_EQ(last.asInteger(), -7);
  EXPECT_TRUE(decoder.atEnd());
}

}  // namespace
}  // namespace norvane::wire
