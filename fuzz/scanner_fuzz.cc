// Fuzzes the tag scanner and the attribute readers with arbitrary code units.
//
// Invariants checked on every input: each reported range lies in the buffer
// and in its tag, previousTagEnd is the end of the previous tag and never
// decreases, a scan ends with exactly one closing call (none once a handler
// stopped it), and a mutable scan may convert entities in place between
// tags without disturbing the scan.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "norvane/markup/entities.h"
#include "norvane/markup/tag_scanner.h"

using norvane::NotFound;
using norvane::Range;
using norvane::String;
using norvane::unichar;
namespace markup = norvane::markup;

namespace {

void check(bool condition) {
  if (!condition) std::abort();
}

void checkValueInTag(Range value, Range tag) {
  if (!value.found()) return;
  check(value.length > 0 && value.location >= tag.location && value.end() <= tag.end());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const size_t stopAfter = data[0] == 0 ? SIZE_MAX : data[0];
  std::vector<unichar> units((size - 1) / 2);
  if (!units.empty()) std::memcpy(units.data(), data + 1, units.size() * sizeof(unichar));
  const size_t n = units.size();
  const String text(units.data(), n);

  for (const bool mutableBuffer : {false, true}) {
    size_t calls = 0, closing = 0, lastEnd = 0;
    unsigned lastKind = 0;
    bool stopped = false;
    markup::GetTagsOfString(
        text,
        [&](unichar* c, size_t nameLocation, size_t nameLength, size_t tagLocation, size_t tagLength,
            size_t previousTagEnd, unsigned kind) {
          // After a stop, only the closing call behind an unterminated
          // comment or section can come: calls at the end of the text are
          // made whatever the handler answers.
          if (stopped) check(kind == 0 && (lastKind == 2 || lastKind == 3) && lastEnd == n);
          check(closing == 0 && kind <= 3);
          check(tagLocation <= n && tagLength <= n - tagLocation);
          check(previousTagEnd == lastEnd && previousTagEnd <= tagLocation);
          if (kind == 0) {
            check(tagLocation == n && tagLength == 0 && nameLocation == NotFound);
            ++closing;
          } else {
            check(tagLength >= 2 && c[tagLocation] == '<');
          }
          if (nameLocation != NotFound) {
            check(kind == 1 && nameLength > 0 && nameLocation > tagLocation &&
                  nameLocation + nameLength <= tagLocation + tagLength);
          } else {
            check(nameLength == 0);
          }
          const Range tag{tagLocation, tagLength};
          if (kind == 1) {
            checkValueInTag(markup::rangeOfAttributeOfTagCharacters(c, tag, "HREF"), tag);
            checkValueInTag(markup::rangeOfAttributeOfTagCharacters(c, tag, "a"), tag);
            const String content = markup::contentAttributeOfTagCharacters(c, tag);
            check(content.isNull() || (content.length() > 0 && content.length() < tagLength));
            int width = 0, height = 0;
            markup::getTagWidth(&width, &height, c, tag);
            markup::backgroundStyleURLOfTagCharacters(c, tag);
            markup::tagDepthChange(c, tag);
          }
          if (mutableBuffer) {
            // Text before the tag may be rewritten in place.
            const size_t length = tagLocation - previousTagEnd;
            const size_t written =
                markup::convertEntities2Characters(c, c + previousTagEnd, previousTagEnd, length, true, false, false);
            check(written <= length);
          }
          lastEnd = tagLocation + tagLength;
          lastKind = kind;
          ++calls;
          if (kind != 0 && calls >= stopAfter) stopped = true;
          return stopped;
        },
        mutableBuffer);
    if (n > 0) check(closing == 1 || (stopped && closing == 0));
    if (n == 0) check(calls == 0);
  }

  markup::headerCharset(text);
  markup::headerRefresh(text);
  markup::refreshInterval(text);
  markup::attributeOfStyleWithName(text, String(u"width"));
  markup::attributeOfTagWithName(text, String(u"href"));
  markup::fixedXml(text);
  return 0;
}
