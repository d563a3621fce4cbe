// The HTML importer: decodes a page by its byte-order mark, its declared
// charset or UTF-8, and reports the text of its body (kMDItemTextContent),
// its title (kMDItemTitle), the languages it declares (kMDItemLanguages:
// <html lang>, <meta http-equiv="content-language">, <meta name="language">
// or "dc.language") and its keywords (kMDItemKeywords: the comma- or
// semicolon-separated <meta name="keywords">).
#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "importer_object.h"
#include "norvane/importer.h"
#include "norvane/markup/decoding.h"
#include "norvane/markup/entities.h"
#include "norvane/markup/plain_text.h"
#include "norvane/markup/tag_scanner.h"

namespace {

using norvane::Range;
using norvane::String;
using norvane::unichar;

// Larger files are read up to this size; the rest is left out.
constexpr size_t kMaxBytes = 64u << 20;

struct PageFacts {
  String title;
  std::vector<std::string> languages;
  std::vector<std::string> keywords;
};

bool nameIs(const unichar* name, size_t length, const char* literal) {
  if (std::strlen(literal) != length) return false;
  for (size_t i = 0; i < length; ++i) {
    if ((name[i] | 32) != literal[i]) return false;
  }
  return true;
}

std::string trimmed(std::string s) {
  size_t start = s.find_first_not_of(" \t\r\n");
  if (start == std::string::npos) return {};
  size_t end = s.find_last_not_of(" \t\r\n");
  return s.substr(start, end - start + 1);
}

void addUnique(std::vector<std::string>& list, const std::string& item) {
  if (!item.empty() && std::find(list.begin(), list.end(), item) == list.end()) list.push_back(item);
}

// Splits a list at commas and semicolons.
void addListItems(std::vector<std::string>& list, const String& value) {
  std::string text = norvane::markup::stringByConvertingEntitiesToCharacters(value).toUtf8();
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find_first_of(",;", start);
    if (end == std::string::npos) end = text.size();
    addUnique(list, trimmed(text.substr(start, end - start)));
    start = end + 1;
  }
}

PageFacts readFacts(const String& html) {
  PageFacts facts;
  size_t titleEnd = norvane::NotFound;
  norvane::markup::GetTagsOfString(html, [&](unichar* characters, size_t nameLocation, size_t nameLength,
                                             size_t tagLocation, size_t tagLength, size_t previousTagEnd, unsigned) {
    if (nameLocation == norvane::NotFound) return false;
    const unichar* name = characters + nameLocation;
    Range tag{tagLocation, tagLength};
    bool closing = characters[tagLocation + 1] == u'/';
    if (nameIs(name, nameLength, "title")) {
      if (!closing) {
        titleEnd = tagLocation + tagLength;
      } else if (titleEnd != norvane::NotFound && facts.title.isNull() && previousTagEnd == titleEnd) {
        String raw(characters + titleEnd, tagLocation - titleEnd);
        facts.title = String::fromUtf8(trimmed(norvane::markup::stringByConvertingEntitiesToCharacters(raw).toUtf8()));
      }
    } else if (nameIs(name, nameLength, "html") && !closing) {
      String lang = norvane::markup::attributeOfTagCharacters(characters, tag, "LANG");
      if (lang.isNull()) lang = norvane::markup::attributeOfTagCharacters(characters, tag, "XML:LANG");
      if (!lang.isNull()) addUnique(facts.languages, trimmed(lang.toUtf8()));
    } else if (nameIs(name, nameLength, "meta")) {
      String metaName = norvane::markup::attributeOfTagCharacters(characters, tag, "NAME");
      String httpEquiv = norvane::markup::attributeOfTagCharacters(characters, tag, "HTTP-EQUIV");
      String content = norvane::markup::attributeOfTagCharacters(characters, tag, "CONTENT");
      if (content.isNull()) return false;
      std::string key = (metaName.isNull() ? httpEquiv : metaName).toUtf8();
      for (auto& c : key) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      if (key == "keywords") {
        addListItems(facts.keywords, content);
      } else if (key == "content-language" || key == "language" || key == "dc.language") {
        addListItems(facts.languages, content);
      }
    } else if (nameIs(name, nameLength, "body") && !closing) {
      // The head is over; what matters stands in it.
      return facts.title.isNull() ? false : true;
    }
    return false;
  });
  return facts;
}

void setStringArray(NorvaneAttributes* attributes, const char* key, const std::vector<std::string>& items) {
  if (items.empty()) return;
  NorvaneValue* array = attributes->host->makeArray();
  for (const auto& item : items) {
    attributes->host->arrayAppend(array, attributes->host->makeString(item.data(), item.size()));
  }
  norvane_set(attributes, key, array);
}

int32_t importFile(void*, NorvaneAttributes* attributes, const char*, const char* path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return 0;
  std::string bytes;
  bytes.resize(kMaxBytes);
  in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<size_t>(in.gcount()));

  String html = norvane::markup::stringWithMarkupData(bytes, norvane::text::NSUTF8StringEncoding);
  if (html.isNull()) return 0;
  String text = norvane::markup::stringByConvertingHtml2PlainTextNonUmlauted(html, false, false, true, true);
  std::string utf8 = text.toUtf8();
  norvane_set_string(attributes, "kMDItemTextContent", utf8.data(), utf8.size());

  PageFacts facts = readFacts(html);
  if (!facts.title.isEmpty()) {
    std::string title = facts.title.toUtf8();
    norvane_set_string(attributes, "kMDItemTitle", title.data(), title.size());
  }
  setStringArray(attributes, "kMDItemLanguages", facts.languages);
  setStringArray(attributes, "kMDItemKeywords", facts.keywords);
  return 1;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void* NorvaneHtmlImporterFactory(const char* typeID) {
  return norvane::importers::PathImporter<importFile>::create(typeID);
}
