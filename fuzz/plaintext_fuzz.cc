// Fuzzes HTML to plain text with arbitrary code units.
//
// The first byte chooses the eight switches of the conversion (entities,
// standard entities, diacritic folding, reformatting, body only, junk
// removal, crawl comments, image texts), so every combination is reached;
// the rest are UTF-16 units in machine order. Invariants on every input: no
// crash or sanitizer report, a non-null result for a non-empty input and the
// receiver itself for an empty one, at most 8 output units per input unit
// (the size of the buffer written through a raw cursor), the input left as
// it was although entities are converted in place, the same answer from a
// second run, and, with no entity conversion, no visible unit in the output
// that the input did not hold. The simplified conversion and stripTags run on the same
// text with their own bounds.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "norvane/markup/plain_text.h"
#include "norvane/text/chars.h"

using norvane::String;
using norvane::unichar;
namespace markup = norvane::markup;

namespace {

void check(bool condition) {
  if (!condition) std::abort();
}

void checkResult(const String& html, const String& result, size_t maxUnitsPerInputUnit) {
  if (html.isEmpty()) {
    check(result.isSameObject(html));
    return;
  }
  check(!result.isNull());
  check(result.length() <= maxUnitsPerInputUnit * html.length());
}

// The units of `s` that are not white space, sorted.
std::vector<unichar> sortedVisibleUnits(const String& s) {
  const norvane::text::CharacterSetRep white = norvane::text::whiteCharacterSetRep();
  std::vector<unichar> units;
  for (size_t i = 0; i < s.length(); ++i) {
    if (!norvane::text::isInRep(white, s[i])) units.push_back(s[i]);
  }
  std::sort(units.begin(), units.end());
  return units;
}

// Without entity conversion the converter only copies text and adds spaces
// and line feeds: every other unit of the output is a unit of the input,
// used at most as often.
bool visibleUnitsDrawnFrom(const String& output, const String& input) {
  const std::vector<unichar> out = sortedVisibleUnits(output), in = sortedVisibleUnits(input);
  return std::includes(in.begin(), in.end(), out.begin(), out.end());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const uint8_t flags = data[0];
  const bool entities = flags & 1, stdEntities = flags & 2, nonUmlauted = flags & 4, reformat = flags & 8;
  const bool onlyBody = flags & 16, removeJunk = flags & 32, googleTags = flags & 64, imageAlts = flags & 128;

  std::vector<unichar> units((size - 1) / 2);
  if (!units.empty()) std::memcpy(units.data(), data + 1, units.size() * sizeof(unichar));
  const String html(units.data(), units.size());

  bool didRemoveJunk = true;
  const String result = markup::stringByConvertingHtml2PlainTextEntities(
      html, entities, stdEntities, nonUmlauted, reformat, onlyBody, removeJunk, &didRemoveJunk, googleTags, imageAlts);
  checkResult(html, result, 8);
  check(html.view() == std::u16string_view(units.data(), units.size()));
  // An empty input or a page whose scan reached no content reports nothing.
  if (result.isSameObject(html)) check(!didRemoveJunk);
  if (!entities && !stdEntities) check(visibleUnitsDrawnFrom(result, html));

  bool againRemovedJunk = false;
  const String again =
      markup::stringByConvertingHtml2PlainTextEntities(html, entities, stdEntities, nonUmlauted, reformat, onlyBody,
                                                       removeJunk, &againRemovedJunk, googleTags, imageAlts);
  check(again == result);
  check(againRemovedJunk == didRemoveJunk);

  // One space per text run, and a text run is at least one unit.
  checkResult(html, markup::stringByConvertingHtml2SimplifiedPlainText(html), 2);
  checkResult(html, markup::stripTags(html), 2);
  return 0;
}
