#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "norvane/text/strings.h"

namespace norvane::text {
namespace {

String S(std::string_view utf8) {
  return String::fromUtf8(utf8);
}

class StringFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "strings-test-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    dir_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  std::string path(const char* name) const { return (dir_ / name).string(); }
  void writeBytes(const char* name, std::string_view bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
  }
  std::string readBytes(const char* name) const {
    std::ifstream in(path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  std::filesystem::path dir_;
};

TEST_F(StringFiles, DetectsTheEncoding) {
  using namespace std::string_view_literals;
  struct Case {
    std::string_view bytes;
    const char16_t* text;
    NSStringEncoding detected;
  } cases[] = {
      {"plain ascii"sv, u"plain ascii", NSUTF8StringEncoding},
      {"gr\xC3\xBC\xC3\x9F"sv, u"grüß", NSUTF8StringEncoding},
      {"\xEF\xBB\xBFmark"sv, u"mark", NSUTF8StringEncoding},
      {"\xFE\xFF\x00h\x00i"sv, u"hi", NSUnicodeStringEncoding},
      {"\xFF\xFEh\x00i\x00"sv, u"hi", NSUnicodeStringEncoding},
      {"\xFF\xFE\x00\x00h\x00\x00\x00"sv, u"h", NSUTF32StringEncoding},
      {"caf\xE9"sv, u"caf\uFFFD", NSASCIIStringEncoding},
      {""sv, u"", NSUTF8StringEncoding},
  };
  for (NSStringEncoding ask : {0u, 0xFFFFFFF0u, 0xFFFFFFFFu}) {
    for (const Case& c : cases) {
      writeBytes("in.txt", c.bytes);
      NSStringEncoding used = 12345;
      String s = stringWithContentsOfFile(path("in.txt"), ask, &used);
      ASSERT_FALSE(s.isNull()) << c.bytes;
      EXPECT_EQ(s, c.text) << c.bytes;
      EXPECT_EQ(used, c.detected) << c.bytes;
    }
  }
}

TEST_F(StringFiles, GivenEncodingIsUsedAsIs) {
  writeBytes("latin.txt", "caf\xE9");
  NSStringEncoding used = 0;
  EXPECT_EQ(stringWithContentsOfFile(path("latin.txt"), NSISOLatin1StringEncoding, &used), u"café");
  EXPECT_EQ(used, NSISOLatin1StringEncoding);
  EXPECT_TRUE(stringWithContentsOfFile(path("latin.txt"), NSUTF8StringEncoding, &used).isNull());
  EXPECT_EQ(used, NSUTF8StringEncoding);
  EXPECT_TRUE(stringWithContentsOfFile(path("missing.txt"), 0, &used).isNull());
  EXPECT_TRUE(stringWithContentsOfFile(path("missing.txt"), NSUTF8StringEncoding).isNull());
}

TEST_F(StringFiles, WritesAndReadsBack) {
  String text = S("Grüße, мир\n");
  for (bool atomically : {false, true}) {
    for (NSStringEncoding encoding :
         {NSUTF8StringEncoding, NSUnicodeStringEncoding, NSUTF16LittleEndianStringEncoding}) {
      ASSERT_TRUE(writeToFile(text, path("out.txt"), atomically, encoding));
      EXPECT_EQ(stringWithContentsOfFile(path("out.txt"), encoding), text);
    }
  }
  EXPECT_EQ(readBytes("out.txt").size(), 2 * text.length());
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_), {}), 1) << "no temporary file is left";
  EXPECT_FALSE(writeToFile(text, path("ascii.txt"), true, NSASCIIStringEncoding));
  EXPECT_FALSE(std::filesystem::exists(path("ascii.txt")));
  EXPECT_FALSE(writeToFile(String(), path("null.txt"), false, NSUTF8StringEncoding));
  EXPECT_FALSE(writeToFile(text, path("no/such/dir.txt"), true, NSUTF8StringEncoding));
}

TEST_F(StringFiles, WritesInTheChosenEncodings) {
  NSStringEncoding used = 0;
  ASSERT_TRUE(writeToFileUsingDefaultEncoding(S("é"), path("default.txt"), false, &used));
  EXPECT_EQ(used, NSUTF8StringEncoding);
  EXPECT_EQ(readBytes("default.txt"), "\xC3\xA9");

  ASSERT_TRUE(writeToFileUsingSmallestEncoding(S("é"), path("small.txt"), false, &used));
  EXPECT_EQ(used, NSISOLatin1StringEncoding);
  EXPECT_EQ(readBytes("small.txt"), "\xE9");

  ASSERT_TRUE(writeToFileUsingFastestEncoding(S("é"), path("fast.txt"), true, &used));
  EXPECT_EQ(used, NSUTF8StringEncoding);

  struct Case {
    const char* text;
    NSStringEncoding smallest;
  } cases[] = {{"", NSASCIIStringEncoding},         {"abc", NSASCIIStringEncoding},
               {"ÿ", NSISOLatin1StringEncoding},    {"a€", NSUTF8StringEncoding},
               {"日本語", NSUnicodeStringEncoding}, {"日本語 is Japanese", NSUTF8StringEncoding}};
  for (const Case& c : cases) EXPECT_EQ(smallestEncoding(S(c.text)), c.smallest) << c.text;
}

TEST_F(StringFiles, AtomicWriteGivesNormalPermissions) {
  ASSERT_TRUE(writeToFile(S("x"), path("perm.txt"), true, NSUTF8StringEncoding));
  struct stat info {};
  ASSERT_EQ(::stat(path("perm.txt").c_str(), &info), 0);
  mode_t mask = ::umask(0);
  ::umask(mask);
  EXPECT_EQ(info.st_mode & 0777, 0666 & ~mask);
}

TEST(StringsFromBytes, DetectingTheEncodingOfBytes) {
  using namespace std::string_view_literals;
  NSStringEncoding used = 0;
  EXPECT_EQ(stringByDetectingEncoding("\xEF\xBB\xBFok", &used), u"ok");
  EXPECT_EQ(used, NSUTF8StringEncoding);
  EXPECT_EQ(stringByDetectingEncoding("\xFE\xFF\x00"
                                      "A"sv,
                                      &used),
            u"A");
  EXPECT_EQ(used, NSUnicodeStringEncoding);
  // A mark that is not followed by valid text falls through to the next guess.
  EXPECT_EQ(stringByDetectingEncoding("\xFE\xFF\x00"sv, &used), std::u16string_view(u"\uFFFD\uFFFD\0", 3));
  EXPECT_EQ(used, NSASCIIStringEncoding);
  EXPECT_EQ(stringByDetectingEncoding("x\xC3", &used), u"x\uFFFD");
  EXPECT_EQ(used, NSASCIIStringEncoding);
}

TEST(StringsFromBytes, StrictDecoding) {
  EXPECT_EQ(stringWithData(Data{'h', 0xC3, 0xA9}, NSUTF8StringEncoding), u"hé");
  EXPECT_TRUE(stringWithData(Data{'h', 0xE9}, NSUTF8StringEncoding).isNull());
  EXPECT_EQ(stringWithData(Data{'h', 0xE9}, NSISOLatin1StringEncoding), u"hé");
  EXPECT_EQ(stringWithCString("abc\0def", 7, NSASCIIStringEncoding), u"abc");
  EXPECT_EQ(stringWithCString("abcdef", 2, NSASCIIStringEncoding), u"ab");
  EXPECT_EQ(stringWithNullTerminatedCString("xyz", NSUTF8StringEncoding), u"xyz");
  EXPECT_TRUE(stringWithNullTerminatedCString(nullptr, NSUTF8StringEncoding).isNull());
  EXPECT_TRUE(stringWithCString(nullptr, 3, NSUTF8StringEncoding).isNull());
}

}  // namespace
}  // namespace norvane::text
