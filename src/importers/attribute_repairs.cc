#include "importers/attribute_repairs.h"

#include <algorithm>

#include "norvane/core/unicode.h"
#include "norvane/markup/plain_text.h"
#include "norvane/text/chars.h"

namespace norvane::importers {
namespace {

constexpr char16_t kTextContent[] = u"kMDItemTextContent";
constexpr char16_t kHtmlContent[] = u"kMDItemHTMLContent";
constexpr char16_t kHtmlContentData[] = u"kMDItemHTMLContentData";
constexpr char16_t kScappleNotes[] = u"com_literatureandlatte_scapple_noteText";

String plainTextOf(const String& html) {
  return markup::stringByConvertingHtml2PlainTextNonUmlauted(html, false, false, true, true);
}

bool hasEnding(const std::string& path, std::string_view ending) {
  if (path.size() < ending.size()) return false;
  return std::equal(ending.begin(), ending.end(), path.end() - static_cast<ptrdiff_t>(ending.size()),
                    [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
}

// "<word>": starts with '<', ends with '>', no white space.
bool isBareTag(const Value& value) {
  const Value* candidate = &value;
  if (const Array* array = value.array(); array && array->size() == 1) candidate = &(*array)[0];
  String s = candidate->asString();
  return !s.isEmpty() && text::firstCharacter(s) == u'<' && text::lastCharacter(s) == u'>' &&
         !text::containsWhiteCharacter(s);
}

}  // namespace

void repairAttributes(const std::string& path, Dictionary& attributes) {
  if (attributes.empty()) return;
  if (hasEnding(path, ".mellel")) {
    std::erase_if(attributes.mutableEntries(), [](const Dictionary::Entry& e) { return isBareTag(e.second); });
    return;
  }
  if (hasEnding(path, ".mht")) {
    if (Value* text = attributes.find(kTextContent)) *text = Value(plainTextOf(text->asString()));
    return;
  }
  if (hasEnding(path, ".scap") && !attributes.contains(kTextContent)) {
    if (const Value* notes = attributes.find(kScappleNotes); notes && notes->isArray()) {
      std::u16string joined;
      for (size_t i = 0; i < notes->array()->size(); ++i) {
        if (i > 0) joined += u'\n';
        joined += (*notes->array())[i].asString().view();
      }
      attributes.set(String(kTextContent), Value(String(joined)));
      return;
    }
  }
  if (attributes.contains(kTextContent)) return;
  String html;
  if (const Value* content = attributes.find(kHtmlContent)) html = content->asString();
  if (html.isNull()) {
    const Value* data = attributes.find(kHtmlContentData);
    if (!data || !data->data()) return;
    html = String(
        utf8ToUtf16(std::string_view(reinterpret_cast<const char*>(data->data()->data()), data->data()->size())));
    attributes.set(String(kHtmlContent), Value(html));
  }
  attributes.set(String(kTextContent), Value(plainTextOf(html)));
}

}  // namespace norvane::importers
