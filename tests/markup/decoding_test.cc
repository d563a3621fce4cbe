#include "norvane/markup/decoding.h"

#include <gtest/gtest.h>
#include <plist/plist.h>
#include <unicode/ucnv.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "norvane/core/log.h"
#include "norvane/core/unicode.h"

namespace norvane::markup {
namespace {

using namespace text;
namespace fs = std::filesystem;

String s(const char* utf8) {
  return String::fromUtf8(utf8);
}
String s(const std::string& utf8) {
  return String::fromUtf8(utf8);
}

// Bytes of UTF-8 text in an ICU converter's encoding, made independently of
// the code under test.
std::string icuEncode(const char* converter, std::string_view utf8) {
  std::u16string units = utf8ToUtf16(utf8);
  UErrorCode status = U_ZERO_ERROR;
  UConverter* cnv = ucnv_open(converter, &status);
  std::string out(units.size() * 4 + 16, '\0');
  int32_t length = ucnv_fromUChars(cnv, out.data(), static_cast<int32_t>(out.size()), units.data(),
                                   static_cast<int32_t>(units.size()), &status);
  ucnv_close(cnv);
  EXPECT_TRUE(U_SUCCESS(status)) << converter;
  out.resize(static_cast<size_t>(length));
  return out;
}

class TempDir {
 public:
  TempDir() {
    path_ = fs::temp_directory_path() / ("norvane-decoding-" + std::to_string(::getpid()));
    fs::create_directories(path_);
  }
  ~TempDir() { fs::remove_all(path_); }
  std::string write(const std::string& name, std::string_view bytes) const {
    std::string file = (path_ / name).string();
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file;
  }

 private:
  fs::path path_;
};

// ---- charset discovery ----------------------------------------------------

TEST(MarkupCharset, FindsTheThreeForms) {
  struct Case {
    const char* markup;
    const char* charset;
  } cases[] = {
      {"<html><head><meta charset=\"utf-8\"></head>", "utf-8"},
      {"<html><head><META CHARSET=windows-1251></head>", "windows-1251"},
      {"<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">", "utf-8"},
      {"<meta http-equiv='content-type' content='text/html;charset=ISO-8859-2'>", "ISO-8859-2"},
      {"<meta http-equiv=\"Content-Type\" content=\"text/html; charset='koi8-r'\">", "koi8-r"},
      {"<?xml version=\"1.0\" encoding=\"utf-8\"?><rss/>", "utf-8"},
      {"<?xml version='1.0' encoding='Shift_JIS'?>", "Shift_JIS"},
      {"<meta charset=\"utf&#45;8\">", "utf-8"},
      {"<meta name=\"viewport\" content=\"width=device-width\"><meta charset=\"big5\">", "big5"},
      {"<head><title>x</title></head><body><meta charset=\"utf-8\"></body>", ""},
      {"<BODY><meta charset=\"utf-8\">", ""},
      {"</meta charset=\"utf-8\"><p>", ""},
      {"<p>no declaration at all</p>", ""},
      {"<?xml version=\"1.0\"?><meta charset=\"utf-8\">", ""},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(markupCharset(s(c.markup)), s(c.charset)) << c.markup;
  EXPECT_FALSE(markupCharset(String()).isNull());
}

TEST(MarkupCharset, RangeOfTheTag) {
  std::string page = "<html><head><meta charset=\"utf-8\"><title>t</title>";
  Range range = markupCharsetRange(s(page));
  EXPECT_EQ(range.location, page.find("<meta"));
  EXPECT_EQ(range.length, std::string("<meta charset=\"utf-8\">").size());
  EXPECT_EQ(markupCharsetRange(s("<body><meta charset=utf-8>")), NotFoundRange);
  std::string declaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";
  EXPECT_EQ(markupCharsetRange(s(declaration + "<rss/>")), (Range{0, declaration.size()}));
}

TEST(MarkupCharset, Encodings) {
  EXPECT_EQ(markupEncoding(s("<meta charset=\"utf-8\">")), NSUTF8StringEncoding);
  EXPECT_EQ(markupEncoding(s("<meta charset=\"windows-1251\">")), NSWindowsCP1251StringEncoding);
  EXPECT_EQ(markupEncoding(s("<p>")), kInvalidEncoding);
  EXPECT_EQ(headerEncoding(s("text/html; charset=ISO-8859-1")), NSISOLatin1StringEncoding);
  EXPECT_EQ(headerEncoding(s("text/html; charset= \"utf-8\"")), NSUTF8StringEncoding);
  EXPECT_EQ(headerEncoding(s("text/html")), kInvalidEncoding);
  EXPECT_EQ(defaultURLEncoding(s("<meta charset=\"latin1\">")), NSISOLatin1StringEncoding);
  EXPECT_EQ(defaultURLEncoding(s("<meta charset=\"windows-1252\">")), NSUTF8StringEncoding);
  EXPECT_EQ(defaultURLEncoding(s("<p>")), NSUTF8StringEncoding);
}

TEST(MarkupData, BytesInTheDeclaredEncoding) {
  std::string page = "<meta charset=\"windows-1251\"><p>Привет, мир</p>";
  NSStringEncoding encoding = 0;
  std::vector<uint8_t> data = markupData(s(page), &encoding);
  EXPECT_EQ(encoding, NSWindowsCP1251StringEncoding);
  EXPECT_EQ(std::string(data.begin(), data.end()), icuEncode("windows-1251", page));

  // No declaration: ASCII with entities.
  data = markupData(s("<p>café</p>"), &encoding);
  EXPECT_EQ(encoding, NSASCIIStringEncoding);
  EXPECT_EQ(std::string(data.begin(), data.end()), "<p>caf&eacute;</p>");

  // A character the declared encoding lacks: entities as well.
  data = markupData(s("<meta charset=\"iso-8859-1\"><p>€</p>"), &encoding);
  EXPECT_EQ(encoding, NSASCIIStringEncoding);
  EXPECT_EQ(std::string(data.begin(), data.end()), "<meta charset=\"iso-8859-1\"><p>&euro;</p>");

  EXPECT_TRUE(markupData(String(), &encoding).empty());
  EXPECT_EQ(encoding, NSASCIIStringEncoding);
  EXPECT_TRUE(markupData(s("")).empty());
}

// ---- two-pass decoding of real text in many encodings ---------------------

struct Sample {
  const char* converter;  // ICU converter that makes the bytes
  const char* charset;    // what the page declares
  NSStringEncoding encoding;
  const char* text;
};

const Sample kSamples[] = {
    {"ISO-8859-1", "iso-8859-1", NSISOLatin1StringEncoding, "Größe, café, naïve façade"},
    {"windows-1250", "windows-1250", NSWindowsCP1250StringEncoding, "Příliš žluťoučký kůň úpěl ďábelské ódy"},
    {"windows-1251", "windows-1251", NSWindowsCP1251StringEncoding, "Съешь же ещё этих мягких булок"},
    {"windows-1252", "windows-1252", NSWindowsCP1252StringEncoding, "“Smart quotes” – and the € sign"},
    {"KOI8-R", "koi8-r", 0x80000A02, "Широкая электрификация южных губерний"},
    {"Shift_JIS", "shift_jis", NSShiftJISStringEncoding, "いろはにほへと 日本語のテキスト"},
    {"EUC-JP", "euc-jp", NSJapaneseEUCStringEncoding, "いろはにほへと 日本語のテキスト"},
    {"GB2312", "gb2312", 0x80000930, "中文文本，简体字的网页"},
    {"GBK", "gbk", 0x80000631, "中文文本，简体字的网页"},
    {"Big5", "big5", 0x80000A03, "中文文本，繁體字的網頁"},
    {"EUC-KR", "euc-kr", 0x80000940, "한국어 텍스트 웹 페이지"},
    {"ISO-8859-7", "iso-8859-7", 0x80000207, "Ελληνικό κείμενο"},
};

std::string page(const char* head, const char* text) {
  return std::string("<!DOCTYPE html>\n<html><head>") + head + "<title>t</title></head>\n<body><p>" + text +
         "</p></body></html>\n";
}

TEST(StringWithMarkupData, DeclaredCharsetSettlesTheEncoding) {
  for (const Sample& sample : kSamples) {
    SCOPED_TRACE(sample.converter);
    for (const std::string head :
         {std::string("<meta charset=\"") + sample.charset + "\">",
          std::string("<meta http-equiv=\"Content-Type\" content=\"text/html; charset=") + sample.charset + "\">"}) {
      std::string utf8 = page(head.c_str(), sample.text);
      std::string bytes = icuEncode(sample.converter, utf8);
      // The first pass with UTF-8 is wrong; the declaration corrects it.
      NSStringEncoding used = 0;
      EXPECT_EQ(stringWithMarkupData(bytes, String(), NSUTF8StringEncoding, String(), &used), s(utf8));
      EXPECT_EQ(used, sample.encoding);
      // A first pass in the right encoding stands.
      EXPECT_EQ(stringWithMarkupData(bytes, sample.encoding), s(utf8));
    }
  }
}

TEST(StringWithMarkupData, UndeclaredTextNeedsTheRightDefaultOrName) {
  for (const Sample& sample : kSamples) {
    SCOPED_TRACE(sample.converter);
    std::string utf8 = page("", sample.text);
    std::string bytes = icuEncode(sample.converter, utf8);
    EXPECT_EQ(stringWithMarkupData(bytes, sample.encoding), s(utf8));
    EXPECT_EQ(stringWithMarkupData(bytes, s(sample.charset), NSUTF8StringEncoding, String()), s(utf8));
    EXPECT_EQ(stringWithMarkupDataAndContentType(bytes, s(std::string("text/html; charset=") + sample.charset),
                                                 NSUTF8StringEncoding),
              s(utf8));
    String wrong = stringWithMarkupData(bytes, NSUTF8StringEncoding);
    EXPECT_NE(wrong, s(utf8));
  }
}

TEST(StringWithMarkupData, ByteOrderMarks) {
  std::string utf8 = page("", "Ünïcödé 😀 and 日本語");
  for (const char* converter : {"UTF-16LE", "UTF-16BE"}) {
    SCOPED_TRACE(converter);
    std::string bom = converter == std::string("UTF-16LE") ? "\xFF\xFE" : "\xFE\xFF";
    std::string bytes = bom + icuEncode(converter, utf8);
    // The mark decides over the default and is not part of the text.
    EXPECT_EQ(stringWithMarkupData(bytes, NSISOLatin1StringEncoding), s(utf8));
    // A name decides over the mark.
    String named = stringWithMarkupData(bytes, s("iso-8859-1"), NSUTF8StringEncoding, String());
    EXPECT_EQ(named.length(), bytes.size());
  }
  // With a declaration of UTF-16 behind a mark, the second pass reads the
  // mark again.
  std::string declared = page("<meta charset=\"utf-16\">", "Ünïcödé");
  std::string bytes = "\xFF\xFE" + icuEncode("UTF-16LE", declared);
  EXPECT_EQ(stringWithMarkupData(bytes, NSUTF8StringEncoding), s(declared));
  // A UTF-8 mark decides nothing but is no text either.
  std::string utf8Bytes = "\xEF\xBB\xBF" + utf8;
  EXPECT_EQ(stringWithMarkupData(utf8Bytes, NSUTF8StringEncoding), s(utf8));
  EXPECT_EQ(stringWithMarkupData(utf8Bytes, NSISOLatin1StringEncoding).length(), utf8Bytes.size());
}

TEST(StringWithMarkupData, Utf8PageDeclaringLatin1) {
  std::string utf8 = page("<meta charset=\"iso-8859-1\">", "Größe und Maß");
  String latin1Reading = stringWithBytes(utf8, NSISOLatin1StringEncoding);
  NSStringEncoding used = 0;
  // Without a name the declared reading is taken.
  EXPECT_EQ(stringWithMarkupData(utf8, String(), NSUTF8StringEncoding, String(), &used), latin1Reading);
  EXPECT_EQ(used, NSISOLatin1StringEncoding);
  // With UTF-8 by name both readings are clean and the shorter one stands.
  EXPECT_EQ(stringWithMarkupData(utf8, s("utf-8"), NSUTF8StringEncoding, String(), &used), s(utf8));
  EXPECT_EQ(used, NSUTF8StringEncoding);
}

TEST(StringWithMarkupData, NamedFirstPassAgainstDeclaredEncoding) {
  // Windows-1251 bytes named UTF-8 but declaring Windows-1251: the first
  // pass shows replacements, the second none, so the second stands.
  std::string utf8 = page("<meta charset=\"windows-1251\">", "Съешь же ещё этих булок");
  std::string bytes = icuEncode("windows-1251", utf8);
  EXPECT_EQ(stringWithMarkupData(bytes, s("utf-8"), NSUTF8StringEncoding, String()), s(utf8));
  // A name that makes fewer replacements than the declaration wins.
  std::string latin2 = page("<meta charset=\"utf-8\">", "Příliš žluťoučký kůň úpěl ďábelské ódy");
  std::string latin2Bytes = icuEncode("ISO-8859-2", latin2);
  EXPECT_EQ(stringWithMarkupData(latin2Bytes, s("iso-8859-2"), NSUTF8StringEncoding, String()), s(latin2));
}

TEST(StringWithMarkupData, EqualCountsFavourTheDeclaration) {
  std::string ascii = page("<meta charset=\"windows-1252\">", "only ASCII here");
  NSStringEncoding used = 0;
  EXPECT_EQ(stringWithMarkupData(ascii, s("iso-8859-2"), NSUTF8StringEncoding, String(), &used), s(ascii));
  EXPECT_EQ(used, NSWindowsCP1252StringEncoding);
  // Declared ASCII ends the decoding after the first pass.
  std::string declaredAscii = page("<meta charset=\"us-ascii\">", "only ASCII here");
  EXPECT_EQ(stringWithMarkupData(declaredAscii, s("iso-8859-2"), NSUTF8StringEncoding, String(), &used),
            s(declaredAscii));
  EXPECT_EQ(used, NSISOLatin2StringEncoding);
}

TEST(StringWithMarkupData, CzechEncodingsOfOurOwn) {
  std::string text = "Příliš žluťoučký kůň úpěl ďábelské ódy";
  for (const char* charset : {"x-kam-cs", "koi8-cs2"}) {
    SCOPED_TRACE(charset);
    std::string utf8 = page((std::string("<meta charset=\"") + charset + "\">").c_str(), text.c_str());
    NSStringEncoding encoding = charset2NSStringEncoding(s(charset));
    std::optional<std::string> bytes = encodeString(s(utf8).view(), encoding);
    ASSERT_TRUE(bytes.has_value());
    EXPECT_EQ(stringWithMarkupData(*bytes, NSUTF8StringEncoding), s(utf8));
  }
}

TEST(StringWithMarkupData, EmptyAndUndecodable) {
  EXPECT_EQ(stringWithMarkupData("", NSUTF8StringEncoding), s(""));
  EXPECT_FALSE(stringWithMarkupData("", NSUTF8StringEncoding).isNull());
  EXPECT_EQ(stringWithMarkupData(std::string_view(), NSUTF8StringEncoding), s(""));
  // Two bytes are too few for a byte-order mark: they are UTF-8 here.
  EXPECT_EQ(stringWithMarkupData("\xFF\xFE", NSUTF8StringEncoding), s("\xEF\xBF\xBD\xEF\xBF\xBD"));
  // An unavailable default yields nothing at all.
  NSStringEncoding used = 0;
  EXPECT_TRUE(
      stringWithMarkupData("abc", String(), nsEncodingFromCFEncoding(kCFStringEncodingMacArabic), String(), &used)
          .isNull());
  EXPECT_EQ(used, kInvalidEncoding);
  // Malformed bytes become U+FFFD.
  EXPECT_EQ(stringWithMarkupData("a\xFF"
                                 "b",
                                 NSUTF8StringEncoding),
            u"a\uFFFDb");
}

TEST(StringWithMarkupData, ConcurrentDecodingOnManyThreads) {
  // Passes use buffers of their thread; pages of different encodings and
  // sizes decoded at once must not see each other's units.
  std::vector<std::string> pages, expected;
  for (const Sample& sample : kSamples) {
    std::string utf8 = page((std::string("<meta charset=\"") + sample.charset + "\">").c_str(), sample.text);
    for (int i = 0; i < 50; ++i) utf8 += "<p>" + std::string(sample.text) + "</p>";
    pages.push_back(icuEncode(sample.converter, utf8));
    expected.push_back(utf8);
  }
  std::vector<std::thread> threads;
  std::vector<int> failures(4, 0);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 30; ++round) {
        size_t k = (t * 7 + round) % pages.size();
        if (stringWithMarkupData(pages[k], NSUTF8StringEncoding).toUtf8() != expected[k]) ++failures[t];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < 4; ++t) EXPECT_EQ(failures[t], 0) << t;
}

TEST(StringWithMarkupData, UnknownNameFallsBackToMarkAndDefault) {
  std::string utf8 = page("", "Größe");
  LogCapture log;
  // A name that maps to nothing leaves the default in charge.
  EXPECT_EQ(stringWithMarkupData(utf8, s("no-such-charset"), NSUTF8StringEncoding, String()), s(utf8));
  EXPECT_TRUE(log.contains("Unknown/Unsupported encoding: no-such-charset"));
  // A Content-Type without a charset names nothing.
  EXPECT_EQ(stringWithMarkupDataAndContentType(utf8, s("text/html"), NSUTF8StringEncoding), s(utf8));
  std::string latin1 = icuEncode("ISO-8859-1", utf8);
  EXPECT_EQ(stringWithMarkupDataAndContentType(latin1, s("text/html; charset=latin1"), NSUTF8StringEncoding), s(utf8));
}

// ---- files -----------------------------------------------------------------

TEST(StringWithMarkupContentsOfFile, ReportsTheSettledEncoding) {
  TempDir dir;
  NSStringEncoding used = 0;
  std::string declared = page("<meta charset=\"windows-1251\">", "Съешь же ещё этих булок");
  std::string file = dir.write("cyrillic.html", icuEncode("windows-1251", declared));
  EXPECT_EQ(stringWithMarkupContentsOfFile(file, NSUTF8StringEncoding, &used), s(declared));
  EXPECT_EQ(used, NSWindowsCP1251StringEncoding);

  std::string plain = page("", "plain ASCII page");
  file = dir.write("plain.html", plain);
  EXPECT_EQ(stringWithMarkupContentsOfFile(file, NSUTF8StringEncoding, &used), s(plain));
  EXPECT_EQ(used, NSUTF8StringEncoding);

  // A UTF-8 page declaring Latin-1 keeps its UTF-8 reading.
  std::string mislabelled = page("<meta charset=\"iso-8859-1\">", "Größe und Maß");
  file = dir.write("mislabelled.html", mislabelled);
  EXPECT_EQ(stringWithMarkupContentsOfFile(file, NSUTF8StringEncoding, &used), s(mislabelled));
  EXPECT_EQ(used, NSUTF8StringEncoding);

  // A second pass with more replacements than the first leaves the first.
  std::string japanese = page("<meta charset=\"iso-2022-jp\">", "Größe und Maß, ☃☃☃");
  file = dir.write("not-japanese.html", japanese);
  EXPECT_EQ(stringWithMarkupContentsOfFile(file, NSUTF8StringEncoding, &used), s(japanese));
  EXPECT_EQ(used, NSUTF8StringEncoding);

  EXPECT_EQ(stringWithMarkupContentsOfFile(file, NSUTF8StringEncoding), s(japanese));
}

TEST(StringWithMarkupContentsOfFile, MissingFilesAndEmptyData) {
  TempDir dir;
  NSStringEncoding used = 0;
  EXPECT_TRUE(stringWithMarkupContentsOfFile("", NSUTF8StringEncoding, &used).isNull());
  EXPECT_EQ(used, kInvalidEncoding);
  EXPECT_TRUE(stringWithMarkupContentsOfFile("/nonexistent/file.html", NSUTF8StringEncoding, &used).isNull());
  EXPECT_EQ(used, kInvalidEncoding);
  std::string empty = dir.write("empty.html", "");
  EXPECT_TRUE(stringWithMarkupContentsOfFile(empty, NSUTF8StringEncoding, &used).isNull());
  EXPECT_EQ(used, NSUTF8StringEncoding);
}

std::string binaryPropertyList() {
  plist_t dict = plist_new_dict();
  plist_dict_set_item(dict, "Title", plist_new_string("Größe"));
  plist_dict_set_item(dict, "Count", plist_new_uint(42));
  char* bin = nullptr;
  uint32_t length = 0;
  plist_to_bin(dict, &bin, &length);
  plist_free(dict);
  std::string bytes(bin, length);
  plist_to_bin_free(bin);
  return bytes;
}

TEST(StringWithMarkupContentsOfFile, PropertyListsComeBackAsXml) {
  TempDir dir;
  std::string bytes = binaryPropertyList();
  ASSERT_EQ(bytes.compare(0, 6, "bplist"), 0);
  for (const char* name : {"settings.bin", "Info.plist"}) {
    NSStringEncoding used = 0;
    String text = stringWithMarkupContentsOfFile(dir.write(name, bytes), NSISOLatin1StringEncoding, &used);
    std::string utf8 = text.toUtf8();
    EXPECT_NE(utf8.find("<plist"), std::string::npos) << name;
    EXPECT_NE(utf8.find("<key>Title</key>"), std::string::npos);
    EXPECT_NE(utf8.find("<string>Größe</string>"), std::string::npos);
    EXPECT_NE(utf8.find("<integer>42</integer>"), std::string::npos);
    EXPECT_EQ(used, kInvalidEncoding);
  }
  // A .plist that is no property list is read as markup.
  NSStringEncoding used = 0;
  std::string notPlist = "<p>not a property list</p>";
  EXPECT_EQ(stringWithMarkupContentsOfFile(dir.write("broken.plist", notPlist), NSUTF8StringEncoding, &used),
            s(notPlist));
  EXPECT_EQ(used, NSUTF8StringEncoding);
}

TEST(StringWithMarkupContentsOfFile, RealPagesReadAsUtf8) {
  const fs::path root = "/usr/share/doc/python3.11/html";
  if (!fs::is_directory(root)) GTEST_SKIP() << "python3.11-doc is not installed";
  int checked = 0;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (entry.path().extension() != ".html" || checked >= 40) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::optional<std::u16string> strict = utf8ToUtf16Strict(bytes);
    ASSERT_TRUE(strict.has_value()) << entry.path();
    NSStringEncoding used = 0;
    String text = stringWithMarkupContentsOfFile(entry.path().string(), NSISOLatin1StringEncoding, &used);
    EXPECT_EQ(text, String(*strict)) << entry.path();
    EXPECT_EQ(used, NSUTF8StringEncoding) << entry.path();
    ++checked;
  }
  EXPECT_GT(checked, 0);
}

}  // namespace
}  // namespace norvane::markup
