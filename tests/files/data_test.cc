#include "norvane/files/data.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "norvane/core/log.h"

namespace norvane::files {
namespace {

Data bytesOf(std::string_view s) {
  return Data(s.begin(), s.end());
}
std::string textOf(const Data& d) {
  return std::string(d.begin(), d.end());
}

Data randomData(size_t size, uint32_t seed, int alphabet = 256) {
  std::mt19937 random(seed);
  Data data(size);
  for (auto& byte : data) byte = static_cast<uint8_t>(random() % alphabet);
  return data;
}

TEST(CompressionTest, RoundTripsInBothFormats) {
  for (size_t size : {1u, 100u, 16384u, 16385u, 200000u}) {
    for (int alphabet : {4, 256}) {
      Data original = randomData(size, static_cast<uint32_t>(size), alphabet);
      SCOPED_TRACE(testing::Message() << size << " bytes over " << alphabet << " values");
      auto gz = dataByGzippingData(original);
      auto zl = dataByDeflatingData(original);
      ASSERT_TRUE(gz && zl);
      EXPECT_EQ((*gz)[0], 0x1F);  // gzip magic
      EXPECT_EQ((*gz)[1], 0x8B);
      EXPECT_EQ((*zl)[0] & 0x0F, 8);  // zlib header: deflate method
      EXPECT_EQ(dataByInflatingData(*gz), original);
      EXPECT_EQ(dataByInflatingData(*zl), original);
      auto raw = dataByRawDeflatingData(original);
      ASSERT_TRUE(raw);
      EXPECT_EQ(dataByRawInflatingData(*raw), original);
    }
  }
}

TEST(CompressionTest, RefusesNothingAndBadArguments) {
  EXPECT_FALSE(dataByGzippingData(Data()));
  EXPECT_FALSE(dataByDeflatingBytes(nullptr, 10));
  uint8_t byte = 1;
  EXPECT_FALSE(dataByCompressingBytes(&byte, -1, -1, true));
  EXPECT_FALSE(dataByCompressingBytes(&byte, int64_t{0x100000000}, -1, true));
  EXPECT_FALSE(dataByInflatingData(Data()));
}

TEST(CompressionTest, LevelsAreForcedIntoRange) {
  Data original = randomData(50000, 7, 8);
  // Level 0 would store; it is taken as level 1, so the output is smaller
  // than the input and equal to level 1's.
  auto zero = dataByDeflatingData(original, 0);
  auto one = dataByDeflatingData(original, 1);
  auto big = dataByDeflatingData(original, 42);
  auto nine = dataByDeflatingData(original, 9);
  ASSERT_TRUE(zero && one && big && nine);
  EXPECT_EQ(*zero, *one);
  EXPECT_EQ(*big, *nine);
  EXPECT_LT(zero->size(), original.size());
}

TEST(CompressionTest, CorruptTruncatedAndTrailingStreams) {
  Data original = randomData(40000, 3, 16);
  Data stream = *dataByGzippingData(original);

  Data trailing = stream;
  trailing.push_back(0);
  EXPECT_FALSE(dataByInflatingData(trailing));

  Data truncated(stream.begin(), stream.begin() + static_cast<ptrdiff_t>(stream.size() / 2));
  Data partial;
  EXPECT_FALSE(setDataByInflating(partial, truncated));
  EXPECT_FALSE(partial.empty());  // what was inflated so far stays
  EXPECT_TRUE(std::equal(partial.begin(), partial.end(), original.begin()));

  Data corrupt = stream;
  for (size_t i = 20; i < 60; ++i) corrupt[i] ^= 0x5A;
  EXPECT_FALSE(dataByInflatingData(corrupt));

  EXPECT_FALSE(dataByInflatingData(bytesOf("plain text, not a stream")));

  Data untouched = bytesOf("keep");
  EXPECT_FALSE(setDataByInflatingBytes(untouched, nullptr, 3));
  EXPECT_EQ(textOf(untouched), "keep");
}

TEST(FormDataTest, FieldsAndFiles) {
  std::string body =
      "--XyZ\r\n"
      "Content-Disposition: form-data; name=\"title\"\r\n\r\n"
      "Hello\r\n"
      "--XyZ\r\n"
      "Content-Disposition: form-data; name=\"upload\"; filename=\"a.txt\"\r\n"
      "Content-Type: text/plain\r\n\r\n"
      "line one\r\nline two\r\n"
      "--XyZ\r\n"
      "Content-Type: text/plain\r\n"
      "Content-Disposition: form-data; name=\"skipped\"\r\n\r\n"
      "not read\r\n"
      "--XyZ\r\n"
      "Content-Disposition: form-data; name=\"empty\"\r\n\r\n"
      "\r\n"
      "--XyZ--\r\n";
  auto fields = formDataUsingBoundary(bytesOf(body), String(u"XyZ"));
  ASSERT_TRUE(fields);
  ASSERT_TRUE(fields->find(u"title"));
  EXPECT_EQ(textOf(*fields->find(u"title")->data()), "Hello");
  ASSERT_TRUE(fields->find(u"upload"));
  EXPECT_EQ(textOf(*fields->find(u"upload")->data()), "line one\r\nline two");
  ASSERT_TRUE(fields->find(u"upload_filename"));
  EXPECT_EQ(fields->find(u"upload_filename")->asString(), u"a.txt");
  EXPECT_FALSE(fields->find(u"skipped"));  // first header line is not the disposition
  EXPECT_FALSE(fields->find(u"empty"));    // nothing behind the blank line
  EXPECT_EQ(fields->size(), 3u);
}

TEST(FormDataTest, RefusedBodies) {
  std::string sound = "--b\r\nContent-Disposition: form-data; name=\"x\"\r\n\r\nvalue\r\n--b--\r\n";
  EXPECT_TRUE(formDataUsingBoundary(bytesOf(sound), String(u"b")));
  EXPECT_FALSE(formDataUsingBoundary(bytesOf(sound.substr(0, sound.size() - 2)), String(u"b")));
  EXPECT_FALSE(formDataUsingBoundary(bytesOf(sound), String()));
  EXPECT_FALSE(formDataUsingBoundary(Data(), String(u"b")));
  EXPECT_FALSE(formDataUsingBoundary(bytesOf("--b--\r\n"), String(u"b")));  // not longer than marker + 4
  // A missing closing marker ends the walk with what was found.
  auto none = formDataUsingBoundary(bytesOf("garbage without markers--\r\n"), String(u"b"));
  ASSERT_TRUE(none);
  EXPECT_TRUE(none->empty());
}

TEST(URLEncodedFormTest, Rules) {
  struct Case {
    std::string body;
    std::u16string key;
    std::optional<std::string> value;
  };
  const Case cases[] = {
      {"a=1&b=2", u"b", "2"},
      {"q=caf%C3%A9", u"q", "caf\xC3\xA9"},
      {"q=a+b", u"q", "a+b"},  // plus stays
      {"q=50%", u"q", "50%"},  // too few units behind %
      {"q=5%4", u"q", "5%4"},
      {"q=%zz", u"q", std::string(1, '\0')},  // non-hex counts as 0
      {"k%20ey=v", u"k%20ey", "v"},           // keys are not decoded
      {"flag&x=1", u"flag", std::nullopt},    // no "=": left out
      {"x=1&x=2", u"x", "2"},                 // later wins
      {"x=", u"x", ""},
      {"x=\xC3\xA9", u"x", "\xE9"},  // a unit adds its low byte
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.body);
    Dictionary fields = URLEncodedFormData(bytesOf(c.body));
    const Value* value = fields.find(c.key);
    if (!c.value) {
      EXPECT_EQ(value, nullptr);
    } else {
      ASSERT_NE(value, nullptr);
      EXPECT_EQ(textOf(*value->data()), *c.value);
    }
  }
}

TEST(DataTest, AsciiTextAndStrings) {
  EXPECT_FALSE(isAsciiData(Data()));
  EXPECT_TRUE(isAsciiData(bytesOf("text\twith\r\nline ends\x0c\x03\x08")));
  EXPECT_FALSE(isAsciiData(bytesOf(std::string_view("nul\0", 4))));
  EXPECT_FALSE(isAsciiData(bytesOf("caf\xC3\xA9")));
  EXPECT_EQ(stringUsingUTF8Encoding(bytesOf("caf\xC3\xA9")), u"caf\u00E9");
  EXPECT_TRUE(stringUsingUTF8Encoding(bytesOf("caf\xE9")).isNull());
  EXPECT_EQ(stringUsingEncoding(bytesOf("caf\xE9"), 5), u"caf\u00E9");
  Data appended = bytesOf("a");
  appendString(appended, String(u"\u00E9"));
  appendString(appended, String());
  EXPECT_EQ(textOf(appended), "a\xC3\xA9");
}

TEST(DataTest, UncachedRead) {
  std::string path = testing::TempDir() + "/uncached.bin";
  Data original = randomData(200000, 11);
  FILE* f = std::fopen(path.c_str(), "wb");
  ASSERT_TRUE(f);
  std::fwrite(original.data(), 1, original.size(), f);
  std::fclose(f);
  EXPECT_EQ(dataWithUncachedContentsOfFile(path), original);
  std::remove(path.c_str());
  EXPECT_FALSE(dataWithUncachedContentsOfFile(path));
}

TEST(DataTest, Dumps) {
  LogCapture log;
  dump(bytesOf("AB\x01"));
  dumpAsArray(Data(17, 0xAB));
  dump(Data());
  auto messages = log.messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0], "AB              : 41 42 01 \n");
  EXPECT_NE(messages[1].find("const unsigned char data[] = {\n\t0xab, "), std::string::npos);
  EXPECT_NE(messages[1].find("0xab,\n\t0xab\n};\n "), std::string::npos);
}

}  // namespace
}  // namespace norvane::files
